#include "intake/pdf_image.h"

#include <algorithm>
#include <bit>
#include <string>
#include <utility>
#include <vector>

#include "foundation/Failure.h"
#include "foundation/text_encoding.h"
#include "imaging/raster/Raster.h"
#include "imaging/raster/icc_profile.h"
#include "intake/jpeg_page.h"
#include "intake/page_file.h"
#include "intake/pdf_streams.h"

namespace orvane {
namespace {

constexpr std::uint64_t kMostProfileBytes = std::uint64_t{4} << 20;

/// What the samples of an image mean (ISO 32000-1 clause 8.6).
struct PdfColours {
  unsigned components = 0;  ///< of a pixel, 1 for an index
  bool isIndexed = false;
  std::vector<std::uint16_t> palette;  ///< as in TIFF 6.0, for an index
  QPDFObjectHandle profile;            ///< a stream, or null
};

/// An image without its data.
struct PdfImage {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint16_t bits = 8;
  bool isInverted = false;  ///< by its Decode array
  PdfColours colours;
  PdfFilters filters;
};

std::uint32_t positiveNumber(QPDFObjectHandle number, const wchar_t* name) {
  constexpr long long kMost = 1'000'000;
  const long long value = number.isInteger() ? number.getIntValue() : 0;
  if (value < 1 || value > kMost) throw Failure(std::wstring(L"的图像没有有效的") + name);
  return static_cast<std::uint32_t>(value);
}

[[noreturn]] void refuseColours(const std::string& name) {
  throw Failure(L"的图像的颜色空间不能登记：" + fromUtf8(name));
}

// Spaces that are not indexed.
PdfColours directColours(QPDFObjectHandle space) {
  QPDFObjectHandle family =
      space.isArray() && space.getArrayNItems() > 0 ? space.getArrayItem(0) : space;
  PdfColours colours;
  colours.profile = QPDFObjectHandle::newNull();
  const std::string name = family.isName() ? family.getName() : "?";
  if (name == "/DeviceGray" || name == "/CalGray") {
    colours.components = 1;
  } else if (name == "/DeviceRGB" || name == "/CalRGB") {
    colours.components = 3;
  } else if (name == "/DeviceCMYK") {
    colours.components = 4;
  } else if (name == "/ICCBased" && space.isArray() && space.getArrayNItems() == 2 &&
             space.getArrayItem(1).isStream()) {
    colours.profile = space.getArrayItem(1);
    QPDFObjectHandle count = colours.profile.getDict().getKey("/N");
    const long long components = count.isInteger() ? count.getIntValue() : 0;
    if (components != 1 && components != 3 && components != 4) refuseColours(name);
    colours.components = static_cast<unsigned>(components);
  } else {
    refuseColours(name);
  }
  return colours;
}

// The table of an indexed space, of gray or RGB values of 8 bits.
std::vector<std::uint16_t> paletteOf(QPDFObjectHandle table, unsigned components, unsigned bits) {
  constexpr std::uint16_t kSpread = 257;
  constexpr std::uint64_t kMostTableBytes = 3 * 256 + 64;  // and a line end
  std::string bytes;
  if (table.isString()) bytes = table.getStringValue();
  if (table.isStream()) bytes = pdfData(table, kMostTableBytes);
  const std::size_t entries = std::size_t{1} << bits;
  std::vector<std::uint16_t> palette(3 * entries);
  for (std::size_t i = 0; i < entries && (i + 1) * components <= bytes.size(); ++i) {
    for (std::size_t part = 0; part < 3; ++part) {
      const auto value =
          static_cast<std::uint8_t>(bytes[i * components + (components == 3 ? part : 0)]);
      palette[part * entries + i] = static_cast<std::uint16_t>(kSpread * value);
    }
  }
  return palette;
}

PdfColours coloursOf(QPDFObjectHandle space, unsigned bits) {
  const bool isIndexed = space.isArray() && space.getArrayNItems() == 4 &&
                         space.getArrayItem(0).isNameAndEquals("/Indexed");
  if (!isIndexed) return directColours(space);
  PdfColours colours = directColours(space.getArrayItem(1));
  if (colours.components == 4 || bits > 8) refuseColours("/Indexed");
  colours.palette = paletteOf(space.getArrayItem(3), colours.components, bits);
  colours.components = 1;
  colours.isIndexed = true;
  return colours;
}

// True for an array that inverts all samples. Throws Failure for one that does anything else.
bool inverts(QPDFObjectHandle decode, const PdfImage& image) {
  if (decode.isNull()) return false;
  const double most = image.colours.isIndexed ? (1 << image.bits) - 1 : 1;
  bool isPlain = true, isInverted = !image.colours.isIndexed || image.bits == 1;
  const int count = decode.isArray() ? decode.getArrayNItems() : 0;
  if (count != static_cast<int>(2 * image.colours.components)) isPlain = isInverted = false;
  for (int i = 0; i < count; ++i) {
    QPDFObjectHandle item = decode.getArrayItem(i);
    const double value = item.isNumber() ? item.getNumericValue() : -1;
    isPlain = isPlain && value == (i % 2 == 0 ? 0 : most);
    isInverted = isInverted && value == (i % 2 == 0 ? most : 0);
  }
  if (!isPlain && !isInverted) throw Failure(L"的图像有特别的 Decode 数组，不能登记");
  return isInverted;
}

std::uint16_t bitsOf(QPDFObjectHandle dictionary, PdfCodec codec) {
  if (codec == PdfCodec::Jpeg) return 8;
  if (codec == PdfCodec::Fax) return 1;
  const std::uint32_t bits = positiveNumber(dictionary.getKey("/BitsPerComponent"), L"位深");
  if (bits > 16 || !std::has_single_bit(bits)) throw Failure(L"的图像没有有效的位深");
  return static_cast<std::uint16_t>(bits);
}

RasterForm formOf(const PdfImage& image) {
  RasterForm form;
  form.bitsPerSample = image.bits;
  form.samplesPerPixel = static_cast<std::uint16_t>(image.colours.components);
  form.palette = image.colours.palette;
  form.model = image.colours.isIndexed         ? ColourModel::Palette
               : image.colours.components == 1 ? ColourModel::MinIsBlack
               : image.colours.components == 3 ? ColourModel::Rgb
                                               : ColourModel::Cmyk;
  return form;
}

QPDFObjectHandle parameter(const PdfImage& image, const char* key) {
  QPDFObjectHandle parameters = image.filters.codecParameters;
  return parameters.isDictionary() ? parameters.getKey(key) : QPDFObjectHandle::newNull();
}

long long integerOr(QPDFObjectHandle number, long long otherwise) {
  return number.isInteger() ? number.getIntValue() : otherwise;
}

bool isTrue(QPDFObjectHandle flag) {
  return flag.isBool() && flag.getBoolValue();
}

// Black and white is all that fax data can be. True when black and white change places.
bool faxIsNegative(const PdfImage& image) {
  const std::vector<std::uint16_t>& palette = image.colours.palette;
  if (image.colours.components != 1) throw Failure(L"的传真图像不是黑白的");
  if (!image.colours.isIndexed) return image.isInverted;
  const std::vector<std::uint16_t> blackFirst{0, 0xFFFF, 0, 0xFFFF, 0, 0xFFFF};
  const std::vector<std::uint16_t> whiteFirst{0xFFFF, 0, 0xFFFF, 0, 0xFFFF, 0};
  if (palette != blackFirst && palette != whiteFirst) throw Failure(L"的传真图像不是黑白的");
  return image.isInverted != (palette == whiteFirst);
}

// Throws Failure for fax data that TIFF cannot describe, as far as the parameters tell.
void requireFaxForm(const PdfImage& image) {
  constexpr long long kDefaultColumns = 1728;
  if (integerOr(parameter(image, "/Columns"), kDefaultColumns) != image.width) {
    throw Failure(L"的图像与它的传真数据不符");
  }
  if (integerOr(parameter(image, "/K"), 0) < 0 && isTrue(parameter(image, "/EncodedByteAlign"))) {
    throw Failure(L"的传真图像按字节对齐，不能登记");
  }
  faxIsNegative(image);
}

PdfImage readPdfImage(QPDFObjectHandle stream) {
  QPDFObjectHandle dictionary = stream.getDict();
  QPDFObjectHandle isMask = dictionary.getKey("/ImageMask");
  if (isMask.isBool() && isMask.getBoolValue()) throw Failure(L"的图像只是蒙版");
  if (dictionary.hasKey("/SMask") || dictionary.hasKey("/Mask")) throw Failure(L"的图像有蒙版");
  PdfImage image;
  image.filters = readPdfFilters(stream);
  image.width = positiveNumber(dictionary.getKey("/Width"), L"宽度");
  image.height = positiveNumber(dictionary.getKey("/Height"), L"高度");
  image.bits = bitsOf(dictionary, image.filters.codec);
  image.colours = coloursOf(dictionary.getKey("/ColorSpace"), image.bits);
  image.isInverted = inverts(dictionary.getKey("/Decode"), image);
  requireRoom(std::uint64_t{formOf(image).rowBytes(image.width)} * image.height);
  if (image.filters.codec == PdfCodec::Fax) requireFaxForm(image);
  if (image.filters.codec == PdfCodec::Jpeg && image.colours.isIndexed) refuseColours("/Indexed");
  return image;
}

EncodedImage plainPage(QPDF& pdf, const QPDFObjectHandle& stream, const PdfImage& image) {
  Raster raster{formOf(image), image.width, image.height, {}};
  const std::uint64_t size = std::uint64_t{raster.rowBytes()} * raster.height;
  raster.pixels = pdfImageData(pdf, stream, image.filters, size);
  if (raster.pixels.size() != size) throw Failure(L"的图像数据不完整");
  if (image.isInverted) {
    for (std::uint8_t& byte : raster.pixels) byte = static_cast<std::uint8_t>(~byte);
  }
  if (raster.bitsPerSample == 16 && std::endian::native == std::endian::little) {
    for (std::size_t i = 0; i < raster.pixels.size(); i += 2) {
      std::swap(raster.pixels[i], raster.pixels[i + 1]);
    }
  }
  clearPadding(raster);
  return encodeWithoutLoss(std::move(raster));
}

EncodedImage jpegImagePage(QPDF& pdf, const QPDFObjectHandle& stream, const PdfImage& image) {
  const Bytes data = pdfImageData(pdf, stream, image.filters, kMaxPageBytes);
  const JpegSummary jpeg = readJpegSummary(data);
  if (jpeg.width != image.width || jpeg.height != image.height ||
      jpeg.components != image.colours.components) {
    throw Failure(L"的图像与它的 JPEG 数据不符");
  }
  JpegMeaning meaning;
  meaning.isInverted = image.isInverted;
  meaning.isPlainRgb = integerOr(parameter(image, "/ColorTransform"), 1) == 0;
  return jpegPage(data, meaning);
}

// An end-of-line code: eleven zeros or more, then a one.
bool beginsWithEndOfLine(ByteView data) {
  return data.size() > 2 && data[0] == 0 && data[1] < 0x20;
}

void setFaxForm(EncodedImage& page, const PdfImage& image, ByteView data) {
  const long long k = integerOr(parameter(image, "/K"), 0);
  const bool isAligned = isTrue(parameter(image, "/EncodedByteAlign"));
  const bool hasEndOfLines = beginsWithEndOfLine(data);
  if (k < 0) {
    page.compression = Compression::Group4;
  } else if (hasEndOfLines) {
    page.compression = Compression::Group3;
    page.twoDimensional = k > 0;
  } else if (k == 0 && isAligned) {
    page.compression = Compression::ModifiedHuffman;
  } else {
    throw Failure(L"的传真图像没有行结束码，不能登记");
  }
}

EncodedImage faxPage(QPDF& pdf, const QPDFObjectHandle& stream, const PdfImage& image) {
  EncodedImage page;
  page.width = image.width;
  page.height = page.rowsPerStrip = image.height;
  // A black run is 0 bits, unless the filter says otherwise.
  const bool blackIsWhite = isTrue(parameter(image, "/BlackIs1")) != faxIsNegative(image);
  page.photometric = blackIsWhite ? Photometric::MinIsBlack : Photometric::MinIsWhite;
  page.strips.push_back(pdfImageData(pdf, stream, image.filters, kMaxPageBytes));
  setFaxForm(page, image, page.strips.front());
  return page;
}

Bytes profileOf(const PdfImage& image, Photometric photometric) {
  QPDFObjectHandle stream = image.colours.profile;
  if (!stream.isStream()) return {};
  const std::string data = pdfData(stream, kMostProfileBytes);
  Bytes profile(data.begin(), data.end());
  return iccMisfit(profile, photometric).empty() ? std::move(profile) : Bytes();
}

}  // namespace

void requirePdfImage(const QPDFObjectHandle& image) {
  readPdfImage(image);
}

EncodedImage pdfImagePage(QPDF& pdf, const QPDFObjectHandle& stream) {
  const PdfImage image = readPdfImage(stream);
  const auto make = image.filters.codec == PdfCodec::Jpeg  ? jpegImagePage
                    : image.filters.codec == PdfCodec::Fax ? faxPage
                                                           : plainPage;
  EncodedImage page = make(pdf, stream, image);
  Bytes profile = profileOf(image, page.photometric);
  if (!profile.empty()) page.iccProfile = std::move(profile);
  return page;
}

}  // namespace orvane
