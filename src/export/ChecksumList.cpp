#include "export/ChecksumList.h"

#include <algorithm>
#include <fcntl.h>
#include <fstream>
#include <utility>

#include "export/sync_beside_window.h"
#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
#include "foundation/durable_file.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/paths.h"
#include "foundation/program.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

// A name with a line end or a backslash is escaped, and a backslash begins its line.
std::string lineOf(const std::string& digest, const std::string& path) {
  std::string name;
  for (const char c : path) {
    if (c == '\\') {
      name += "\\\\";
    } else if (c == '\n') {
      name += "\\n";
    } else if (c == '\r') {
      name += "\\r";
    } else {
      name += c;
    }
  }
  return (name == path ? "" : "\\") + digest + "  " + name + "\n";
}

}  // namespace

void ChecksumList::beginBatch(const std::wstring& outputFolder, Number first) {
  const fs::path folder = fs::path(nativePath(outputFolder)).lexically_normal();
  const auto entry = std::find_if(lists_.begin(), lists_.end(),
                                  [&](const List& list) { return list.outputFolder == folder; });
  current_ = static_cast<std::size_t>(entry - lists_.begin());
  if (entry == lists_.end()) lists_.push_back({folder});
  digests_.beginBatch(folder.native());
  first_ = first;
}

void ChecksumList::add(const std::wstring& file, std::uint64_t bytes) {
  const fs::path path = fs::path(nativePath(file)).lexically_normal();
  digests_.add(path.lexically_relative(list().outputFolder).native(), bytes);
}

void ChecksumList::takeOut(Number number) {
  if (number >= first_) digests_.drop(number - first_);
  for (List& list : lists_) {
    if (list.has(number)) list.takenOut.insert(number);
  }
}

bool ChecksumList::List::has(Number number) const {
  const auto after =
      std::upper_bound(lines.begin(), lines.end(), number,
                       [](Number n, const Lines& following) { return n < following.first; });
  return after != lines.begin() && number < std::prev(after)->end;
}

std::wstring ChecksumList::deliverBatch(const std::wstring& report) {
  try {
    return writeBatch(report);
  } catch (const std::exception& failure) {
    std::error_code ignored;  // what was written of the lines must not stay
    if (!list().file.empty()) fs::resize_file(nativePath(list().file), list().size, ignored);
    return description(failure);
  }
}

std::wstring ChecksumList::listBeside(const std::wstring& report) const {
  if (report.empty()) throw Failure(L"没有导出清单");
  const std::wstring number = current_ == 0 ? L"" : L"." + std::to_wstring(current_ + 1);
  return report.substr(0, report.rfind(L'.')) + number + L".sha256";
}

std::wstring ChecksumList::writeBatch(const std::wstring& report) {
  std::vector<Lines> lines = list().lines;
  std::string text;
  std::wstring problem;
  Number number = first_;
  for (const FileDigests::File& file : digests_.files()) {
    if (!file.problem.empty() && problem.empty()) problem = file.problem;
    if (!file.digest.empty() && !file.isDropped) {
      text += lineOf(file.digest, file.path);
      if (lines.empty() || lines.back().end != number) lines.push_back({number, number});
      ++lines.back().end;
    }
    ++number;
  }
  if (text.empty()) return problem;
  FileSystemObject& files = mdlFolderAndFile::fileSystem();
  if (list().file.empty()) {
    const std::wstring path = listBeside(report);
    files.CreateFile(path);
    list().file = path;
  }
  files.AppendFile(list().file, text);
  list().size += text.size();
  list().lines = std::move(lines);
  return problem;
}

void ChecksumList::endRun() {
  for (const List& list : lists_) {
    if (list.takenOut.empty()) continue;
    try {
      syncBesideWindow([&] { list.rewrite(); });
    } catch (const std::exception& failure) {
      mdlFolderAndFile::LogWrite(L"RunOutPutBatch-校验清单写不出来：" + description(failure),
                                 kApplicationTitle);
    }
  }
}

void ChecksumList::List::rewrite() const {
  constexpr std::size_t kPiece = 1 << 20;
  Number count = 0;
  for (const auto& [first, end] : lines) count += end - first;
  if (takenOut.size() == count) return mdlFolderAndFile::fileSystem().DeleteFile(file);

  std::ifstream old(nativePath(file), std::ios::binary);
  FileReplacement replacement(file);
  FileDescriptor kept(replacement.temporaryPath(), O_WRONLY | O_TRUNC);
  std::string line, text;
  for (const auto& [first, end] : lines) {
    for (Number number = first; number < end; ++number) {
      if (!std::getline(old, line)) throw fileFailure(file, "the file ends too early");
      if (!takenOut.contains(number)) text += line + '\n';
      if (text.size() < kPiece) continue;
      kept.writeAll(text);
      text.clear();
    }
  }
  kept.writeAll(text);
  kept.close();
  replacement.commit();
}

}  // namespace orvane
