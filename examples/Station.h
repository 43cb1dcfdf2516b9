#pragma once

#include <cstdlib>
#include <filesystem>
#include <iostream>
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
    const auto batch = firstFolder(folder_ / "Batchs");
    orvane::gBatchFolder = orvane::pathText(batch);
    document_ = firstFolder(batch).filename();
  }

  /// The name of the batch's first document.
  std::wstring document() const { return orvane::pathText(document_); }

  /// The path text of a file in a folder of the example's own.
  std::wstring output(const std::string& name) const {
    std::filesystem::create_directories(folder_ / "examples");
    return orvane::pathText(folder_ / "examples" / name);
  }

 private:
  static std::filesystem::path firstFolder(const std::filesystem::path& parent) {
    std::filesystem::path first;
    for (const auto& entry : std::filesystem::directory_iterator(parent)) {
      if (!std::filesystem::exists(entry.path() / "Doc.dat") && parent.filename() != "Batchs")
        continue;
      if (first.empty() || entry.path() < first) first = entry.path();
    }
    return first;
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
