// Runs a target over the files of folders, in place of libFuzzer.
#include <filesystem>
#include <iostream>

#include "support/TempStation.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
  int files = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      const std::string bytes = orvane::test::readBytes(entry.path());
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
      ++files;
    }
  }
  std::cout << files << " files\n";
  return files > 0 ? 0 : 1;
}
