#include "end_to_end/judges.h"

#include <regex>

#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

std::vector<std::smatch> matchesIn(const std::string& text, const std::regex& pattern) {
  return {std::sregex_iterator(text.begin(), text.end(), pattern), std::sregex_iterator()};
}

std::string sizeText(const std::string& width, const std::string& height, const std::string& dpi) {
  return width + "x" + height + " at " + dpi + " dpi";
}

std::vector<PageLook> tiffPages(const fs::path& file) {
  static const std::regex directory(
      "Image Width: (\\d+) Image Length: (\\d+)[^]*?Resolution: (\\d+), \\3 pixels/inch[^]*?"
      "Compression Scheme: ([^\\n]*)");
  const std::string info = outputOf("tiffinfo -D " + quoted(file));
  std::vector<PageLook> pages;
  for (const std::smatch& m : matchesIn(info, directory)) {
    pages.push_back({"TIFF " + m.str(4), sizeText(m[1], m[2], m[3])});
  }
  return pages;
}

std::vector<PageLook> jpegPages(const fs::path& file) {
  const std::string warnings = outputOf("djpeg -outfile /dev/null " + quoted(file));
  if (!warnings.empty()) throw std::runtime_error(warnings);
  const std::string info =
      outputOf("identify -units PixelsPerInch -format '%w %h %x' " + quoted(file));
  std::smatch m;
  std::regex_match(info, m, std::regex("(\\d+) (\\d+) (\\d+)\\D*"));
  return {{"JPEG file", sizeText(m[1], m[2], m[3])}};
}

std::vector<PageLook> pdfPages(const fs::path& file) {
  // page, number, type, width, height, colour, components, bits, encoding, interpolation, object,
  // generation, resolution across and down
  static const std::regex image(
      "\\s+(\\d+)\\s+\\d+ "
      "image\\s+(\\d+)\\s+(\\d+)\\s+\\w+\\s+\\d+\\s+\\d+\\s+(\\w+)\\s+\\w+\\s+\\d+"
      "\\s+\\d+\\s+(\\d+)\\s+(\\d+)");
  outputOf("qpdf --check " + quoted(file));
  const std::string images = outputOf("pdfimages -list " + quoted(file));
  const std::string info = outputOf("pdfinfo " + quoted(file));
  std::vector<PageLook> pages;
  for (const std::smatch& m : matchesIn(images, image)) {
    if (m.str(1) != std::to_string(pages.size() + 1)) throw std::runtime_error(images);
    if (m.str(5) != m.str(6)) throw std::runtime_error(images);
    pages.push_back({"PDF " + m.str(4), sizeText(m[2], m[3], m[5])});
  }
  const std::regex count("Pages:\\s+" + std::to_string(pages.size()) + "\\n");
  if (!std::regex_search(info, count)) throw std::runtime_error(info);
  return pages;
}

}  // namespace

void PrintTo(const PageLook& page, std::ostream* stream) {
  *stream << page.coding << " " << page.size;
}

std::vector<PageLook> pagesOf(const fs::path& file) {
  const std::string bytes = readBytes(file);
  if (bytes.rfind("%PDF", 0) == 0) return pdfPages(file);
  if (bytes.rfind("\xFF\xD8", 0) == 0) return jpegPages(file);
  return tiffPages(file);
}

bool isBilevel(const fs::path& file) {
  return outputOf("identify -format %z " + quoted(file)) == "1";
}

bool hasPixelsOf(const fs::path& source, const fs::path& file, std::size_t index) {
  const std::string page = file.string() + "[" + std::to_string(index) + "]";
  return runCommand("compare -metric AE " + quoted(source) + " " + test::quoted(page) + " null:")
             .output == "0";
}

}  // namespace orvane::test
