#pragma once

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

#include "foundation/path_text.h"
#include "imaging/ImagingControl.h"
#include "imaging/mdlImageProcess.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"

namespace orvane::fuzz {

/// A program folder for the inputs of one target.
struct Workshop {
  Workshop() { test::writeBytes(station.native("Log"), "in the way, so that no log grows"); }

  /// Makes an input the content of a file of the folder.
  void put(const std::string& name, const std::uint8_t* data, std::size_t size) const {
    test::writeBytes(station.native(name), {reinterpret_cast<const char*>(data), size});
  }
  std::string bytesOf(const std::string& name) const {
    return test::readBytes(station.native(name));
  }

  test::TempStation station;
  test::RecordingWindow window;
};

/// Ends the process, which is how a target tells that the program was wrong.
inline void require(bool holds, const char* what) {
  if (holds) return;
  std::cerr << what << std::endl;
  std::abort();
}

/// The number of pages of a file; 0 for one that cannot be read.
inline int pagesOf(const std::wstring& path) {
  try {
    return ImagingControl().FilePageCount(path);
  } catch (const std::exception&) {
    return 0;
  }
}

/// True when the work ends without a failure.
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
