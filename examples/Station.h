#pragma once

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <set>
#include <string>

#include "docstore/ScanTree.h"
#include "foundation/path_text.h"
#include "foundation/program.h"
#include "foundation/utf8_text.h"

namespace example {

/// The program folder named on the command line, with its first batch as the current one.
class Station {
 public:
  Station(int argc, char** argv) {
    if (argc != 2) {
      std::cerr << "usage: " << argv[0] << " PROGRAM-FOLDER\n";
      std::exit(2);
    }
    folder_ = std::filesystem::absolute(argv[1]);
    orvane::setProgramFolder(orvane::pathText(folder_));
    const std::filesystem::path batch = firstBatch();
    orvane::gBatchFolder = orvane::pathText(batch);
    document_ = longestDocument(batch);
  }

  /// The name of the batch's longest document.
  std::wstring document() const { return orvane::pathText(document_); }

  /// The path text of a file in a folder of the example's own.
  std::wstring output(const std::string& name) const {
    std::filesystem::create_directories(folder_ / "examples");
    return orvane::pathText(folder_ / "examples" / name);
  }

 private:
  std::filesystem::path firstBatch() const {
    std::set<std::filesystem::path> batches;
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / "Batchs")) {
      batches.insert(entry.path());
    }
    return *batches.begin();
  }

  static std::filesystem::path longestDocument(const std::filesystem::path& batch) {
    std::filesystem::path longest;
    std::uintmax_t size = 0;
    for (const auto& entry : std::filesystem::directory_iterator(batch)) {
      std::error_code none;
      const std::uintmax_t listSize = std::filesystem::file_size(entry.path() / "Doc.dat", none);
      if (none || listSize <= size) continue;
      longest = entry.path().filename();
      size = listSize;
    }
    return longest;
  }

  std::filesystem::path folder_;
  std::filesystem::path document_;
};

/// Prints what was done and how it went; the program's exit code comes from the failures.
class Report {
 public:
  void operator()(const std::wstring& what, bool succeeded) {
    std::cout << (succeeded ? "ok      " : "FAILED  ") << orvane::toUtf8(what) << '\n';
    if (!succeeded) exitCode_ = 1;
  }
  int exitCode() const { return exitCode_; }

 private:
  int exitCode_ = 0;
};

}  // namespace example
