#pragma once

#include <QImage>
#include <filesystem>
#include <optional>
#include <string_view>

namespace orvane::sample {

// The ways in which the scanners of the sample station store a page.
enum class PageKind {
  G4,          // 1 bit, Group 4
  Lzw1,        // 1 bit, LZW
  PackBits1,   // 1 bit, PackBits
  Gray,        // 8 bit, uncompressed
  GrayJpeg,    // 8 bit, JPEG
  ColourJpeg,  // 24 bit, JPEG (YCbCr, chrominance halved both ways)
  ColourRaw,   // 24 bit, uncompressed
};

// The kind of a name as it is given on the command line, such as "colour-jpeg".
std::optional<PageKind> pageKindNamed(std::string_view name);

bool isBlackAndWhite(PageKind kind);
bool isColour(PageKind kind);

// Writes a scanned page as a TIFF 6.0 file. The image's format must fit the kind: Format_Mono,
// Format_Grayscale8 or Format_RGB888. `jpegQuality` (1 to 100) counts for the JPEG kinds alone.
void writeTiff(const std::filesystem::path& file, const QImage& scan, PageKind kind, int dpi,
               int jpegQuality);

}  // namespace orvane::sample
