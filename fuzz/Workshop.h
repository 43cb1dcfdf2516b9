#pragma once

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

#include "foundation/paths.h"
#include "imaging/ImagingControl.h"
#include "imaging/mdlImageProcess.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"

namespace orvane::fuzz {

/// A program folder for the inputs of one target.
struct Workshop {
  Workshop() { test::writeBytes(station.native("Log"), "a file, so that no log is written"); }

  /// Writes an input to a file of the folder.
  void put(const std::string& name, const std::uint8_t* data, std::size_t size) const {
    test::writeBytes(station.native(name), {reinterpret_cast<const char*>(data), size});
  }
  std::string bytesOf(const std::string& name) const {
    return test::readBytes(station.native(name));
  }

  test::TempStation station;
  test::RecordingWindow window;
};

/// Aborts the process unless `holds`, which libFuzzer reports as a finding.
inline void require(bool holds, const char* what) {
  if (holds) return;
  std::cerr << what << std::endl;
  std::abort();
}

/// The number of pages of a file; 0 if it cannot be read.
inline int pagesOf(const std::wstring& path) {
  try {
    return ImagingControl().FilePageCount(path);
  } catch (const std::exception&) {
    return 0;
  }
}

/// Returns true if `work` throws nothing.
template <typename Work>
bool succeeds(Work work) {
  try {
    work();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace orvane::fuzz
