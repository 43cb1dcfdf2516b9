#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "page_drawing.h"
#include "tiff_writing.h"

namespace orvane::sample {

// A page of a document: its name (UTF-8, without ".tif"), its content and its storage form.
struct PagePlan {
  std::string name;
  Design design = Design::Notice;
  PageKind kind = PageKind::G4;
  int jpegQuality = 85;
};

// Draws, scans and writes pages at one resolution. Each distinct sheet is drawn once.
class PageFactory {
 public:
  explicit PageFactory(int dpi) : dpi_(dpi) {}

  // `seed` selects the words. Pages with the same seed and design show the same sheet.
  void writePage(const std::filesystem::path& file, const PagePlan& plan, std::uint64_t seed);

 private:
  const QImage& sheet(Design design, std::uint64_t seed);

  int dpi_;
  std::map<std::pair<Design, std::uint64_t>, QImage> sheets_;
};

// Writes the page list of a document: each name followed by "$", in code page 936.
void writePageList(const std::filesystem::path& folder, const std::vector<std::string>& names);

}  // namespace orvane::sample
