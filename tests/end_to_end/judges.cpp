#include "end_to_end/judges.h"

#include <cstdio>
#include <sstream>
#include <stdexcept>

#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> linesOf(const std::string& command) {
  std::istringstream stream(outputOf(command));
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string sizeText(int width, int height, int dpi) {
  return std::to_string(width) + "x" + std::to_string(height) + " at " + std::to_string(dpi) +
         " dpi";
}

void require(bool condition, const std::string& what, const fs::path& file) {
  if (!condition) throw std::runtime_error(file.string() + ": " + what);
}

std::vector<PageLook> tiffPages(const fs::path& file) {
  const std::string scheme = "  Compression Scheme: ";
  std::vector<PageLook> pages;
  int width = 0, height = 0, across = 0, down = 0;
  for (const std::string& line : linesOf("tiffinfo -D " + quoted(file))) {
    std::sscanf(line.c_str(), " Image Width: %d Image Length: %d", &width, &height);
    std::sscanf(line.c_str(), " Resolution: %d, %d pixels/inch", &across, &down);
    if (line.rfind(scheme, 0) != 0) continue;  // it comes behind the others
    require(across == down, "resolutions differ", file);
    pages.push_back({"TIFF " + line.substr(scheme.size()), sizeText(width, height, across)});
  }
  return pages;
}

std::vector<PageLook> jpegPages(const fs::path& file) {
  require(outputOf("djpeg -outfile /dev/null " + quoted(file)).empty(), "djpeg warns", file);
  int width = 0, height = 0, dpi = 0;
  const std::string info =
      outputOf("identify -units PixelsPerInch -format '%w %h %x' " + quoted(file));
  require(std::sscanf(info.c_str(), "%d %d %d", &width, &height, &dpi) == 3, info, file);
  return {{"JPEG file", sizeText(width, height, dpi)}};
}

std::vector<PageLook> pdfPages(const fs::path& file) {
  outputOf("qpdf --check " + quoted(file));
  std::vector<PageLook> pages;
  for (const std::string& line : linesOf("pdfimages -list " + quoted(file))) {
    int page = 0, width = 0, height = 0, across = 0, down = 0;
    char coding[16] = "";
    // page, number, type, size, colour, components, bits, coding, interpolation, object, resolution
    if (std::sscanf(line.c_str(), "%d %*d image %d %d %*s %*d %*d %15s %*s %*d %*d %d %d", &page,
                    &width, &height, coding, &across, &down) != 6) {
      continue;
    }
    require(page == static_cast<int>(pages.size()) + 1 && across == down, line, file);
    pages.push_back({std::string("PDF ") + coding, sizeText(width, height, across)});
  }
  int count = 0;
  for (const std::string& line : linesOf("pdfinfo " + quoted(file))) {
    std::sscanf(line.c_str(), "Pages: %d", &count);
  }
  require(count == static_cast<int>(pages.size()), "a page without its image", file);
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
