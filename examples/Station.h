#pragma once

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

#include "docstore/ScanTree.h"
#include "foundation/paths.h"
#include "foundation/program.h"
#include "foundation/text_encoding.h"

namespace example {

/// The program folder of the command line. The batch of its longest document becomes the current
/// batch.
class Station {
 public:
  Station(int argc, char** argv) {
    if (argc != 2) {
      std::cerr << "usage: " << argv[0] << " PROGRAM-FOLDER\n";
      std::exit(2);
    }
    folder_ = std::filesystem::absolute(argv[1]);
    orvane::setProgramFolder(orvane::pathText(folder_));
    document_ = longestDocument();
    orvane::gBatchFolder = orvane::pathText(document_.parent_path());
  }

  /// The name of the station's longest document.
  std::wstring document() const { return orvane::pathText(document_.filename()); }

  /// The path text of a file in the folder `examples` of the station, which is created.
  std::wstring output(const std::string& name) const {
    std::filesystem::create_directories(folder_ / "examples");
    return orvane::pathText(folder_ / "examples" / name);
  }

 private:
  std::filesystem::path longestDocument() const {
    std::filesystem::path longest;
    std::uintmax_t size = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_ / "Batchs")) {
      if (entry.path().filename() != "Doc.dat" || entry.file_size() <= size) continue;
      longest = entry.path().parent_path();
      size = entry.file_size();
    }
    return longest;
  }

  std::filesystem::path folder_;
  std::filesystem::path document_;
};

/// Prints each operation and its result. The exit code is 1 after a failure.
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
