#include "imaging/pdf/pdf_objects.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>

#include "foundation/OutputFile.h"
#include "imaging/pdf/pdf_limits.h"
#include "imaging/raster/icc_profile.h"

namespace orvane {
namespace {

// The second line marks the file as binary for transfer programs.
constexpr std::string_view kHeader = "%PDF-1.4\n%\xE2\xE3\xCF\xD3\n";

constexpr std::string_view kMetadata =
    "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
    "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
    "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
    "<rdf:Description rdf:about=\"\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\">"
    "<dc:format>application/pdf</dc:format></rdf:Description>\n"
    "<rdf:Description rdf:about=\"\" xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\">"
    "<xmp:CreatorTool>Orvane</xmp:CreatorTool></rdf:Description>\n"
    "<rdf:Description rdf:about=\"\" xmlns:pdf=\"http://ns.adobe.com/pdf/1.3/\">"
    "<pdf:Producer>Orvane</pdf:Producer></rdf:Description>\n"
    "<rdf:Description rdf:about=\"\" xmlns:pdfaid=\"http://www.aiim.org/pdfa/ns/id/\">"
    "<pdfaid:part>1</pdfaid:part><pdfaid:conformance>B</pdfaid:conformance></rdf:Description>\n"
    "</rdf:RDF>\n"
    "</x:xmpmeta>\n"
    "<?xpacket end=\"w\"?>";

std::string catalog() {
  return "<< /Type /Catalog /Pages " + pdfReference(kPdfRootPages) + "\n/Metadata " +
         pdfReference(kPdfMetadata) +
         "\n/OutputIntents [ << /Type /OutputIntent /S /GTS_PDFA1\n"
         "/OutputConditionIdentifier (sRGB IEC61966-2.1) /Info (sRGB IEC61966-2.1)\n"
         "/RegistryName (http://www.color.org) /DestOutputProfile " +
         pdfReference(kPdfProfile) + " >> ] >>";
}

std::string stream(std::string_view entries, std::string_view content) {
  return "<< " + std::string(entries) + "/Length " + std::to_string(content.size()) + " >>" +
         kBeginPdfStream + std::string(content) + kEndPdfStream;
}

PdfHead makeHead() {
  PdfHead head{std::string(kHeader), {}};
  const auto add = [&](std::uint32_t number, const std::string& content) {
    head.offsets.push_back(head.text.size());
    head.text += beginPdfObject(number) + content + kEndPdfObject;
  };
  add(kPdfCatalog, catalog());
  add(kPdfMetadata, stream("/Type /Metadata /Subtype /XML ", kMetadata));
  add(kPdfProfile, stream("/N 3 ", srgbProfile()));
  return head;
}

constexpr double kPointsPerInch = 72;
constexpr int kDecimals = 4;
constexpr unsigned kColoursPerLine = 16;

// Independent of the locale.
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
  if (points > kMostPdfPoints) {
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
    // A break right after the opening bracket is legal, but JHOVE refuses it.
    if (i > 0 && i % kColoursPerLine == 0) table += '\n';
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
      return image.photometric != Photometric::Palette ? nullptr : "a palette with JPEG samples";
    case Compression::Lzw:
      return "LZW compression";
    case Compression::ModifiedHuffman:
    case Compression::Group3:
      break;
  }
  return "Group 3 compression";
}

// The filter decodes black runs to 0 by default. In our strips a black run is bits of value 1,
// which mean white in a MinIsBlack image.
std::string group4Filter(const EncodedImage& image) {
  std::string parameters =
      "/K -1 /Columns " + std::to_string(image.width) + " /Rows " + std::to_string(image.height);
  if (image.photometric != Photometric::MinIsWhite) parameters += " /BlackIs1 true";
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

// Odd multipliers with well-spread bits.
constexpr std::uint64_t kFirstFactor = 0x9E3779B97F4A7C15;
constexpr std::uint64_t kSecondFactor = 0xC2B2AE3D27D4EB4F;

std::uint64_t spread(std::uint64_t value) {
  value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9;
  value = (value ^ value >> 27) * 0x94D049BB133111EB;
  return value ^ value >> 31;
}

std::uint64_t littleEndianWord(ByteView bytes) {
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) word |= std::uint64_t{bytes[i]} << 8 * i;
  return word;
}

}  // namespace

std::string beginPdfObject(std::uint32_t number) {
  return std::to_string(number) + " 0 obj\n";
}

std::string pdfReference(std::uint32_t number) {
  return std::to_string(number) + " 0 R";
}

const PdfHead& pdfHead() {
  static const PdfHead head = makeHead();
  return head;
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

std::string pdfPageContent(const PdfPageSize& size) {
  return stream("", "q " + size.width + " 0 0 " + size.height + " 0 0 cm /Im Do Q");
}

std::string pdfPageDictionary(std::uint32_t leaf, std::uint32_t page, const PdfPageSize& size) {
  return "<< /Type /Page /Parent " + pdfReference(leaf) + " /MediaBox [ 0 0 " + size.width + " " +
         size.height + " ]\n/Resources << /XObject << /Im " + pdfReference(page - 2) +
         " >> >> /Contents " + pdfReference(page - 1) + " >>";
}

int pdfColours(const EncodedImage& image) {
  return image.photometric == Photometric::Palette || image.samplesPerPixel == 3 ? 3 : 1;
}

std::string pdfProfileDictionary(int colours, std::uint64_t length) {
  return "<< /N " + std::to_string(colours) + " /Alternate " +
         (colours == 3 ? "/DeviceRGB" : "/DeviceGray") + " /Length " + std::to_string(length) +
         " >>";
}

void PdfFingerprint::mix(std::uint64_t word) {
  first_ = std::rotl(first_ ^ word * kFirstFactor, 29) * kSecondFactor;
  second_ = (std::rotl(second_, 31) + word) * kFirstFactor;
}

PdfFingerprint& PdfFingerprint::add(ByteView bytes) {
  const std::uint64_t length = bytes.size();
  while (!bytes.empty()) {
    const std::size_t size = std::min<std::size_t>(bytes.size(), 8);
    mix(littleEndianWord(bytes.first(size)));
    bytes = bytes.subspan(size);
  }
  mix(length);
  return *this;
}

std::string PdfFingerprint::hex() const {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string digits;
  for (std::uint64_t half : {spread(first_ + second_), spread(second_ ^ std::rotl(first_, 17))}) {
    for (int shift = 60; shift >= 0; shift -= 4) digits += kDigits[half >> shift & 15];
  }
  return digits;
}

}  // namespace orvane
