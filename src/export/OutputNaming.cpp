#include "export/OutputNaming.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>

#include "foundation/mdlFolderAndFile.h"
#include "foundation/plain_text.h"
#include "settings/ExportSettings.h"

namespace orvane {
namespace {

// A second separator after the root folder would make `name` the name of a server.
std::wstring folderBelow(const std::wstring& folder, const std::wstring& name) {
  return folder == L"\\" ? folder + name : folder + L"\\" + name;
}

// In the order of their display.
enum class CollisionCause { NoDocumentName, NoBatchName, PageNumberRunsOn, BatchNameRunsOn };
constexpr std::size_t kCauses = 4;

constexpr std::array<const wchar_t*, kCauses> kRemedies{
    L"请勾选第二层文件夹，或选带“档案（件）名称”的命名。",
    L"请勾选第一层文件夹，或选带“档案名称”的命名。",
    L"请加大页码位数，或选带“+ 页码”的命名并填页码前的分割符。",
    L"请勾选第一层文件夹，或填档案名称后面的分割符。"};

CollisionCause causeOf(const NameCollision& collision) {
  const PageToName& a = collision.first;
  const PageToName& b = collision.second;
  const bool samePage = a.page == b.page;
  if (a.batch == b.batch) {
    return samePage ? CollisionCause::NoDocumentName : CollisionCause::PageNumberRunsOn;
  }
  return samePage && a.document == b.document ? CollisionCause::NoBatchName
                                              : CollisionCause::BatchNameRunsOn;
}

// Names as stations give them, then numbers, which can run into the text next to them.
std::vector<PageToName> samplePages(bool IsMutiPage) {
  constexpr std::int16_t kPages[] = {1, 11, 101};
  std::vector<PageToName> pages;
  for (const wchar_t* batch : {L"2024-0001", L"2024-0002", L"1", L"11"}) {
    for (const wchar_t* document : {L"0001", L"0002", L"1", L"11", L"101"}) {
      for (const std::int16_t page : kPages) {
        if (page == 1 || !IsMutiPage) pages.push_back({batch, document, page});
      }
    }
  }
  return pages;
}

std::wstring pageText(const PageToName& page, bool IsMutiPage) {
  const std::wstring document = L"档案 " + page.batch + L" 第 " + page.document + L" 件";
  return IsMutiPage ? document : document + L"第 " + std::to_wstring(page.page) + L" 页";
}

// A path below the output folder, with the separators of the file system.
std::wstring shownFile(std::wstring file) {
  constexpr std::size_t kLongest = 60;
  std::replace(file.begin(), file.end(), L'\\', L'/');
  file.erase(0, file.find_first_not_of(L'/'));
  return file.size() <= kLongest ? file : L"……" + file.substr(file.size() - kLongest);
}

}  // namespace

std::wstring documentStem(const std::wstring& sPattern, const std::wstring& sBatchName,
                          const std::wstring& sDocName, const std::wstring& ReNameSp1,
                          const std::wstring& ReNameSp2) {
  if (sPattern == kNameOfDocument) return sDocName;
  if (sPattern == kNameOfDocumentAndPage) return sDocName + ReNameSp2;
  if (sPattern == kNameOfBatchAndDocument) return sBatchName + ReNameSp1 + sDocName;
  if (sPattern == kNameOfBatchDocumentAndPage) {
    return sBatchName + ReNameSp1 + sDocName + ReNameSp2;
  }
  return {};
}

std::wstring pageNumberMask(const std::wstring& txtLiuShui) {
  const int digits = toInt16(numericPrefix(txtLiuShui));
  return std::wstring(static_cast<std::size_t>(std::max(digits, 0)), L'0');
}

std::wstring pageNumberText(std::int16_t pageIndex, const std::wstring& mask) {
  return zeroFilled(pageIndex, mask.size());
}

std::wstring outputExtension(std::int16_t SaveFileType) {
  if (SaveFileType == 0) return L".tif";
  if (SaveFileType == 1) return L".jpg";
  return L".pdf";
}

std::wstring batchOutputFolder(const std::wstring& SavePath, bool IsCreateBatchFolder,
                               const std::wstring& BatchID) {
  return IsCreateBatchFolder ? folderBelow(SavePath, BatchID) : SavePath;
}

std::wstring docOutputFolder(const std::wstring& BatchOutputFolder, bool IsCreateDocFolder,
                             const std::wstring& sDocName) {
  return IsCreateDocFolder ? folderBelow(BatchOutputFolder, sDocName) : BatchOutputFolder;
}

std::wstring pageFilePath(const std::wstring& folder, const std::wstring& stem,
                          std::int16_t pageIndex, const std::wstring& mask,
                          std::int16_t SaveFileType) {
  return mdlFolderAndFile::AppendBackslash(folder) + stem + pageNumberText(pageIndex, mask) +
         outputExtension(SaveFileType);
}

std::wstring multiPageFilePath(const std::wstring& folder, const std::wstring& stem,
                               std::int16_t SaveFileType) {
  return mdlFolderAndFile::AppendBackslash(folder) + stem + outputExtension(SaveFileType);
}

std::wstring outputFile(const ExportSettings& settings, const std::wstring& sPattern,
                        const std::wstring& mask, const PageToName& page) {
  const std::wstring folder = docOutputFolder(
      batchOutputFolder(settings.SavePath, settings.IsCreateBatchFolder, page.batch),
      settings.IsCreateDocFolder, page.document);
  const std::wstring stem =
      documentStem(sPattern, page.batch, page.document, settings.ReNameSp1, settings.ReNameSp2);
  return settings.IsMutiPage ? multiPageFilePath(folder, stem, settings.SaveFileType)
                             : pageFilePath(folder, stem, page.page, mask, settings.SaveFileType);
}

std::vector<NameCollision> nameCollisions(const ExportSettings& settings,
                                          const std::wstring& sPattern, const std::wstring& mask) {
  std::array<std::optional<NameCollision>, kCauses> found;
  std::map<std::wstring, PageToName> pageOfFile;
  for (const PageToName& page : samplePages(settings.IsMutiPage)) {
    const auto [known, isNew] =
        pageOfFile.try_emplace(outputFile(settings, sPattern, mask, page), page);
    if (isNew) continue;
    const NameCollision collision{known->second, page};
    auto& example = found[static_cast<std::size_t>(causeOf(collision))];
    if (!example) example = collision;
  }
  // If file names do not contain the batch name, it cannot run into the document name either.
  if (found[static_cast<std::size_t>(CollisionCause::NoBatchName)]) {
    found[static_cast<std::size_t>(CollisionCause::BatchNameRunsOn)].reset();
  }
  std::vector<NameCollision> collisions;
  for (const auto& example : found) {
    if (example) collisions.push_back(*example);
  }
  return collisions;
}

std::wstring collisionWarning(const ExportSettings& settings, const std::wstring& sPattern,
                              const std::wstring& mask) {
  ExportSettings belowOutputFolder = settings;
  belowOutputFolder.SavePath.clear();
  std::wstring lines;
  for (const NameCollision& c : nameCollisions(settings, sPattern, mask)) {
    lines += L"⚠ 会互相覆盖，都存为 " +
             shownFile(outputFile(belowOutputFolder, sPattern, mask, c.first)) + L"：\n    " +
             pageText(c.first, settings.IsMutiPage) + L"\n    " +
             pageText(c.second, settings.IsMutiPage) + L"\n    " +
             kRemedies[static_cast<std::size_t>(causeOf(c))] + L"\n";
  }
  return lines;
}

}  // namespace orvane
