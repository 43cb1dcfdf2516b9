#pragma once

#include <QImage>
#include <filesystem>
#include <optional>
#include <string_view>

namespace orvane::sample {

// The storage forms of the pages in a sample station.
enum class PageKind {
  G4,          // 1 bit, Group 4
  Lzw1,        // 1 bit, LZW
  PackBits1,   // 1 bit, PackBits
  Gray,        // 8 bit, uncompressed
  GrayJpeg,    // 8 bit, JPEG
  ColourJpeg,  // 24 bit, JPEG (YCbCr, 2 x 2 chroma subsampling)
  ColourRaw,   // 24 bit, uncompressed
};

// The kind with a name of the command line, such as "colour-jpeg".
std::optional<PageKind> pageKindNamed(std::string_view name);

bool isBlackAndWhite(PageKind kind);
bool isColour(PageKind kind);

// Writes a scanned page as a TIFF 6.0 file. The format of the image must match the kind:
// Format_Mono, Format_Grayscale8 or Format_RGB888. `jpegQuality` (1 to 100) is used for JPEG kinds.
void writeTiff(const std::filesystem::path& file, const QImage& scan, PageKind kind, int dpi,
               int jpegQuality);

}  // namespace orvane::sample
