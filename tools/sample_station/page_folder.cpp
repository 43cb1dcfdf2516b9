#include "page_folder.h"

#include <fstream>
#include <iconv.h>
#include <stdexcept>

#include "scanner.h"

namespace orvane::sample {
namespace {

std::string inCodePage936(std::string text) {
  std::string converted(text.size() * 2, '\0');
  char* from = text.data();
  char* to = converted.data();
  std::size_t left = text.size();
  std::size_t room = converted.size();
  const iconv_t converter = iconv_open("CP936", "UTF-8");
  const std::size_t result = iconv(converter, &from, &left, &to, &room);
  iconv_close(converter);
  if (result != 0) throw std::runtime_error("no code page 936 text: " + text);
  converted.resize(converted.size() - room);
  return converted;
}

QImage scanned(const QImage& sheet, PageKind kind, std::uint64_t seed) {
  if (isBlackAndWhite(kind)) return scanBlackAndWhite(sheet, seed);
  return isColour(kind) ? scanColour(sheet, seed) : scanGray(sheet, seed);
}

}  // namespace

const QImage& PageFactory::sheet(Design design, std::uint64_t seed) {
  const auto [entry, isNew] = sheets_.try_emplace({design, seed});
  if (isNew) entry->second = drawPage(design, dpi_, seed);
  return entry->second;
}

void PageFactory::writePage(const std::filesystem::path& file, const PagePlan& plan,
                            std::uint64_t seed) {
  const QImage scan = scanned(sheet(plan.design, seed), plan.kind, seed);
  writeTiff(file, scan, plan.kind, dpi_, plan.jpegQuality);
}

void writePageList(const std::filesystem::path& folder, const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += name + "$";
  std::ofstream file(folder / "Doc.dat", std::ios::binary);
  file << inCodePage936(text);
  file.close();
  if (!file) throw std::runtime_error("cannot write " + (folder / "Doc.dat").string());
}

}  // namespace orvane::sample
