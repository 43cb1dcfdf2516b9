#include "export/ScanTreeGuard.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

#include "docstore/ScanTree.h"
#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/paths.h"
#include "foundation/program.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

// Batches and documents may be links to another disk, so the tree can have several roots.
std::vector<std::wstring> scanTreeOfBatch() {
  return {programFolder() + L"\\Batchs", gBatchFolder};
}

std::vector<Place> scanTreeOfDocuments(const std::vector<std::wstring>& subFolders) {
  std::vector<std::wstring> roots = scanTreeOfBatch();
  for (const std::wstring& name : subFolders) {
    // A broken link has no scans.
    std::wstring document = GetDocumentPath(name);
    if (mdlFolderAndFile::fileSystem().FolderExists(document)) roots.push_back(std::move(document));
  }
  return resolvedPlaces(roots);
}

bool isWithinAny(const Place& place, const std::vector<Place>& folders) {
  return std::any_of(folders.begin(), folders.end(),
                     [&](const Place& folder) { return place.isWithin(folder); });
}

bool containsAny(const Place& folder, const std::vector<Place>& places) {
  return std::any_of(places.begin(), places.end(),
                     [&](const Place& place) { return place.isWithin(folder); });
}

}  // namespace

HeldFolder::HeldFolder(const std::wstring& path)
    : folder_(path, O_PATH | O_DIRECTORY), identity_(identityOf(folder_.status())) {}

void HeldFolder::requireAt(const std::wstring& path) const {
  struct stat status {};
  if (stat(nativePath(path).c_str(), &status) != 0) {
    throw Failure(L"输出文件夹无法访问：" + description(systemFailure(errno, path)));
  }
  if (identityOf(status) != identity_) {
    throw Failure(L"输出文件夹已不是原来的那一个，不能导出：" + path);
  }
}

bool HeldFolder::isAt(const std::wstring& path) const {
  try {
    requireAt(path);
    return true;
  } catch (const Failure&) {
    return false;
  }
}

OutputGuard::OutputGuard(const std::wstring& outputFolder, const std::wstring& documentName)
    : folderText_(mdlFolderAndFile::AppendBackslash(outputFolder)) {
  std::vector<std::wstring> paths = scanTreeOfBatch();
  paths.push_back(GetDocumentPath(documentName));
  paths.push_back(folderText_);
  scanTree_ = resolvedPlaces(paths);
  outputFolder_ = std::move(scanTree_.back());
  scanTree_.pop_back();
  requireOutsideScanTree(outputFolder_, outputFolder);
}

void OutputGuard::enterFolder() {
  held_.emplace(folderText_);
  held_->requireAt(pathText(outputFolder_.path()));
}

std::optional<FileIdentity> OutputGuard::check(const std::wstring& file) const {
  requireFolder();
  struct stat status {};
  const bool isThere = lstat(nativePath(file).c_str(), &status) == 0;
  if (!isThere && errno != ENOENT && errno != ENOTDIR) throw systemFailure(errno, file);
  if (!isDirectlyInFolder(file) || (isThere && S_ISLNK(status.st_mode))) checkPlace(file);
  if (!isThere) return std::nullopt;
  return identityOf(status);
}

bool OutputGuard::isDirectlyInFolder(const std::wstring& file) const {
  return file.starts_with(folderText_) &&
         file.find_first_of(L"\\/", folderText_.size()) == std::wstring::npos;
}

void OutputGuard::checkPlace(const std::wstring& file) const {
  requireOutsideScanTree(resolvedPlace(file), file);
  const fs::path native = nativePath(file);
  const Place folder = resolvedPlace(pathText(native.parent_path()));
  requireOutsideScanTree(folder, file);
  if (!folder.isWithin(outputFolder_)) throw Failure(L"输出文件不在输出文件夹内：" + file);
}

void OutputGuard::requireOutsideScanTree(const Place& place, const std::wstring& path) const {
  if (isWithinAny(place, scanTree_)) throw Failure(L"输出位置在扫描件文件夹内，不能导出：" + path);
}

ScansOfBatch::ScansOfBatch(const std::vector<std::wstring>& subFolders) {
  try {
    roots_ = scanTreeOfDocuments(subFolders);
  } catch (const Failure& failure) {
    unknown_ = description(failure);
  }
}

void ScansOfBatch::requireDeletable(const std::wstring& folder) const {
  if (!unknown_.empty()) throw Failure(unknown_);
  const Place place = resolvedPlace(folder);
  if (isWithinAny(place, roots_) || containsAny(place, roots_) ||
      resolvedPlace(programFolder()).isWithin(place)) {
    throw Failure(L"输出文件夹含有程序或扫描件，不删除：" + folder);
  }
}

}  // namespace orvane
