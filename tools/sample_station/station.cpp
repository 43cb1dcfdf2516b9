#include "station.h"

#include <array>
#include <fstream>
#include <vector>

#include "batch_database.h"
#include "page_folder.h"

namespace orvane::sample {
namespace {

namespace fs = std::filesystem;

struct DocumentPlan {
  std::string name;
  std::vector<PagePlan> pages;
};

struct BatchPlan {
  BatchRow row;
  std::vector<DocumentPlan> documents;
};

constexpr const char* kScanned = "完成扫描";
constexpr const char* kStillScanning = "正在扫描";

std::vector<BatchPlan> batchPlans() {
  using enum Design;
  using enum PageKind;
  return {
      // Older than the others, but not ready: the export must skip it.
      {{"2024-0000", kStillScanning, "2024-02-29 16:05:12", 1, "周敏", "SCAN-02"},
       {{"0001", {{"0001", Notice, G4}}}}},
      {{"2024-0001", kScanned, "2024-03-01 08:30:00", 6, "周敏", "SCAN-01"},
       {{"0001", {{"0001", Notice, G4}, {"0002", Dense, G4}, {"0003", Signed, G4}}},
        {"0002", {{"0001", Notice, ColourJpeg, 90}, {"0002", Signed, ColourJpeg, 75}}},
        {"0003", {{"0001", Register, Gray}, {"0002", Report, GrayJpeg, 80}}}}},
      {{"文书档案2024年第2批", kScanned, "2024-03-01 10:12:45", 3, "陈立新", "SCAN-02"},
       {{"关于加强档案管理的通知", {{"第1页", Notice, ColourRaw}, {"第2页", Signed, G4}}},
        {"卷内目录", {{"001", Register, G4}, {"002", Register, Lzw1}}}}},
      {{"2024-0003", kScanned, "2024-03-04 09:00:31", 4, "周敏", "SCAN-01"},
       {{"A01", {{"P1", Report, ColourJpeg, 92}, {"P2", Dense, PackBits1}, {"P3", Register, G4}}},
        {"A02", {{"P1", Report, ColourJpeg, 40}}}}},
  };
}

void writeDocument(const fs::path& folder, const DocumentPlan& plan, PageFactory& factory) {
  fs::create_directories(folder);
  std::vector<std::string> names;
  for (const PagePlan& page : plan.pages) {
    factory.writePage(folder / (page.name + ".tif"), page, names.size() % 2 + 1);
    names.push_back(page.name);
  }
  writePageList(folder, names);
}

// A leftover folder of a scanning station: pages without a page list.
void writeLeftovers(const fs::path& folder, PageFactory& factory) {
  fs::create_directories(folder);
  factory.writePage(folder / "0001.tif", {"0001", Design::Notice, PageKind::G4}, 1);
}

}  // namespace

void makeStation(const fs::path& folder, int dpi) {
  const fs::path batches = folder / "Batchs";
  fs::remove_all(batches);
  fs::create_directories(batches);
  PageFactory factory(dpi);
  std::vector<BatchRow> rows;
  for (const BatchPlan& batch : batchPlans()) {
    rows.push_back(batch.row);
    for (const DocumentPlan& document : batch.documents) {
      writeDocument(batches / batch.row.batchId / document.name, document, factory);
    }
  }
  writeLeftovers(batches / "2024-0001" / "tmp", factory);
  createBatchDatabase(folder / "Orvane.dll", rows);
}

void makeDocument(const fs::path& folder, PageKind kind, int count, int dpi, int jpegQuality) {
  constexpr std::array kSheets{Design::Dense, Design::Notice, Design::Register, Design::Report};
  fs::create_directories(folder);
  PageFactory factory(dpi);
  std::vector<std::string> names;
  for (int number = 1; number <= count; ++number) {
    const std::string digits = std::to_string(number);
    names.push_back(std::string(6 - std::min<std::size_t>(6, digits.size()), '0') + digits);
    const fs::path page = folder / (names.back() + ".tif");
    const auto turn = static_cast<std::size_t>(number - 1) % kSheets.size();
    if (names.size() <= kSheets.size()) {
      factory.writePage(page, {names.back(), kSheets[turn], kind, jpegQuality}, 1);
    } else {
      fs::copy_file(folder / (names[turn] + ".tif"), page, fs::copy_options::overwrite_existing);
    }
  }
  writePageList(folder, names);
}

}  // namespace orvane::sample
