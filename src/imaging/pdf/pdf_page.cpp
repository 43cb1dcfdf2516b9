#include "imaging/pdf/pdf_page.h"

#include <array>
#include <charconv>
#include <cmath>

#include "foundation/OutputFile.h"
#include "imaging/pdf/Fingerprint.h"
#include "imaging/pdf/pdf_head.h"

namespace orvane {
namespace {

constexpr double kPointsPerInch = 72;
constexpr double kMostPoints = 14400;
constexpr int kDecimals = 4;
constexpr unsigned kColoursPerLine = 16;

// The same in every locale.
std::string number(double value) {
  std::array<char, 32> digits{};
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                          std::chars_format::fixed, kDecimals);
  std::string text(digits.data(), end);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text;
}

std::string pageSide(const std::wstring& path, std::uint32_t pixels, double dotsPerInch) {
  const double points = pixels / dotsPerInch * kPointsPerInch;
  if (points > kMostPoints) {
    throw fileFailure(path, "the page would be " + number(points) +
                                " points long; a PDF page has at most 14400 (200 inches)");
  }
  std::string text = number(points);
  if (text == "0") throw fileFailure(path, "the page would have no size in points");
  return text;
}

std::string baseColourSpace(const EncodedImage& image, std::uint32_t profile) {
  if (profile != 0) return "[ /ICCBased " + pdfReference(profile) + " ]";
  return pdfColours(image) == 3 ? "/DeviceRGB" : "/DeviceGray";
}

// Two hexadecimal digits a sample; a TIFF palette holds 16 bits, a PDF one 8.
std::string palette(const EncodedImage& image, const std::string& base) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  const std::size_t colours = image.palette.size() / 3;
  std::string table;
  for (std::size_t i = 0; i < colours; ++i) {
    if (i % kColoursPerLine == 0) table += '\n';
    for (const std::size_t plane : {std::size_t{0}, colours, 2 * colours}) {
      const unsigned value = image.palette[plane + i] >> 8;
      table += kDigits[value >> 4];
      table += kDigits[value & 15];
    }
  }
  return "[ /Indexed " + base + " " + std::to_string(colours - 1) + " <" + table + "> ]";
}

std::string colourSpace(const EncodedImage& image, std::uint32_t profile) {
  const std::string base = baseColourSpace(image, profile);
  return image.photometric == Photometric::Palette ? palette(image, base) : base;
}

const char* findMisfit(const EncodedImage& image) {
  if (image.extraSample) return "alpha samples";
  if (image.bitsPerSample > 8) return "16-bit samples";
  const bool isColour =
      image.photometric == Photometric::Rgb || image.photometric == Photometric::YCbCr;
  if (image.photometric == Photometric::Cmyk) return "CMYK samples";
  if (image.samplesPerPixel != (isColour ? 3 : 1)) return "a strange number of samples";
  switch (image.compression) {
    case Compression::None:
      return image.photometric == Photometric::YCbCr ? "plain YCbCr samples" : nullptr;
    case Compression::Group4:
      if (image.strips.size() != 1) return "more than one Group 4 stream";
      return image.bitsPerSample == 1 && !isColour ? nullptr : "Group 4 of more than one bit";
    case Compression::Jpeg:
      if (image.strips.size() != 1) return "more than one JPEG stream";
      return image.photometric != Photometric::Palette ? nullptr : "a palette behind JPEG samples";
    case Compression::Lzw:
      break;
  }
  return "LZW compression";
}

// True when the stream ends in the end-of-block (ITU-T T.6: two end-of-line codes), with nothing
// but padding bits behind it.
bool endsInEndOfBlock(const Bytes& stream) {
  constexpr std::uint64_t kEndOfBlock = 0x001001;
  std::size_t size = stream.size();
  while (size > 0 && stream[size - 1] == 0) --size;
  std::uint64_t last = 0;
  for (std::size_t i = size - std::min<std::size_t>(size, 4); i < size; ++i) {
    last = last << 8 | stream[i];
  }
  if (size < 3) return false;
  while ((last & 1) == 0) last >>= 1;
  return (last & 0xFFFFFF) == kEndOfBlock;
}

// The filter gives 0 for black runs unless told otherwise. Black runs are bits of value 1, which
// under MinIsBlack mean white.
std::string group4Filter(const EncodedImage& image) {
  std::string parameters =
      "/K -1 /Columns " + std::to_string(image.width) + " /Rows " + std::to_string(image.height);
  if (image.photometric != Photometric::MinIsWhite) parameters += " /BlackIs1 true";
  if (!endsInEndOfBlock(image.strips.front())) parameters += " /EndOfBlock false";
  return "\n/Filter /CCITTFaxDecode /DecodeParms << " + parameters + " >>";
}

std::string filter(const EncodedImage& image) {
  const char* inverted = image.photometric == Photometric::MinIsWhite ? "\n/Decode [ 1 0 ]" : "";
  switch (image.compression) {
    case Compression::Group4:
      return group4Filter(image);
    case Compression::Jpeg:
      return std::string("\n/Filter /DCTDecode") + inverted;
    default:
      return inverted;
  }
}

}  // namespace

int pdfColours(const EncodedImage& image) {
  return image.photometric == Photometric::Palette || image.samplesPerPixel == 3 ? 3 : 1;
}

PdfPageSize pdfPageSize(const std::wstring& path, const EncodedImage& image) {
  return {pageSide(path, image.width, image.resolution.x),
          pageSide(path, image.height, image.resolution.y)};
}

std::string pdfImageDictionary(const std::wstring& path, const EncodedImage& image,
                               std::uint32_t profile) {
  if (const char* misfit = findMisfit(image)) {
    throw fileFailure(path, std::string("a PDF/A file cannot hold ") + misfit);
  }
  std::uint64_t length = 0;
  for (const Bytes& strip : image.strips) length += strip.size();
  return "<< /Type /XObject /Subtype /Image /Width " + std::to_string(image.width) + " /Height " +
         std::to_string(image.height) + "\n/BitsPerComponent " +
         std::to_string(image.bitsPerSample) + " /ColorSpace " + colourSpace(image, profile) +
         filter(image) + "\n/Length " + std::to_string(length) + " >>";
}

std::string pdfProfileDictionary(int colours, std::uint64_t length) {
  return "<< /N " + std::to_string(colours) + " /Alternate " +
         (colours == 3 ? "/DeviceRGB" : "/DeviceGray") + " /Length " + std::to_string(length) +
         " >>";
}

std::string pdfProfileFingerprint(const std::string& dictionary, ByteView profile) {
  Fingerprint fingerprint;
  fingerprint.add(dictionary);
  fingerprint.add(profile);
  return fingerprint.hex();
}

std::string pdfPageContent(const PdfPageSize& size) {
  return "q " + size.width + " 0 0 " + size.height + " 0 0 cm /Im Do Q";
}

std::string pdfPageDictionary(const PdfPageNumbers& numbers, const PdfPageSize& size) {
  return "<< /Type /Page /Parent " + pdfReference(numbers.leaf) + " /MediaBox [ 0 0 " + size.width +
         " " + size.height + " ]\n/Resources << /XObject << /Im " + pdfReference(numbers.image) +
         " >> >> /Contents " + pdfReference(numbers.content) + " >>";
}

}  // namespace orvane
