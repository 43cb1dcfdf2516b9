// Prints the cost of each step of a page: the medians over the pages of a document folder, in
// milliseconds.
//
//   page-cost FOLDER-OF-G4 FOLDER-OF-LZW1 FOLDER-OF-JPEG OUTPUT-FOLDER

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "foundation/paths.h"
#include "imaging/group4/group4.h"
#include "imaging/jpeg/jpeg_transcode.h"
#include "imaging/lzw/lossless.h"
#include "imaging/pdf/PdfFile.h"
#include "imaging/raster/conversion.h"
#include "imaging/tiff/TiffFile.h"
#include "imaging/tiff/TiffPage.h"

namespace {

using namespace orvane;

/// The times of the steps of a page, over many pages.
class Steps {
 public:
  template <typename Work>
  auto time(std::size_t step, Work work) {
    const auto begin = std::chrono::steady_clock::now();
    if constexpr (std::is_void_v<decltype(work())>) {
      work();
      note(step, begin);
    } else {
      auto result = work();
      note(step, begin);
      return result;
    }
  }

  double median(std::size_t step) {
    std::vector<double>& times = times_.at(step);
    std::nth_element(times.begin(), times.begin() + static_cast<long>(times.size() / 2),
                     times.end());
    return times[times.size() / 2];
  }

 private:
  void note(std::size_t step, std::chrono::steady_clock::time_point begin) {
    const std::chrono::duration<double, std::milli> elapsed =
        std::chrono::steady_clock::now() - begin;
    times_.at(step).push_back(elapsed.count());
  }

  std::array<std::vector<double>, 4> times_;  // read, verify or decode, encode, write
};

std::vector<std::wstring> pagesIn(const char* folder) {
  std::vector<std::wstring> pages;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".tif") pages.push_back(pathText(entry.path()));
  }
  std::sort(pages.begin(), pages.end());
  pages.resize(std::min<std::size_t>(pages.size(), 40));
  return pages;
}

using Course = std::function<void(const std::wstring& page, Steps& steps)>;

void printRow(const char* title, const char* folder, const Course& course) {
  Steps steps;
  for (const std::wstring& page : pagesIn(folder)) course(page, steps);
  std::printf("| %s | %.2f | %.2f | %.2f | %.2f |\n", title, steps.median(0), steps.median(1),
              steps.median(2), steps.median(3));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fprintf(stderr, "usage: page-cost G4-FOLDER LZW1-FOLDER JPEG-FOLDER OUTPUT-FOLDER\n");
    return 2;
  }
  std::filesystem::create_directories(argv[4]);
  const std::wstring output = pathText(std::filesystem::absolute(argv[4]));
  TiffFile tiff;
  PdfFile pdf;
  const auto open = [](const std::wstring& page) { return TiffPage(page, 1); };

  const auto appendTiff = [&](Steps& steps, const wchar_t* name, const EncodedImage& image) {
    EncodedImage page = image;
    steps.time(3,
               [&] { tiff.append(output + name, [&](SampleOrder) { return std::move(page); }); });
  };

  std::printf("| One page | read | verify or decode | encode | write |\n|---|---|---|---|---|\n");
  const auto copyGroup4Page = [&](Steps& steps, const std::wstring& page, Group4Output kind) {
    EncodedImage strips = steps.time(0, [&] { return *open(page).group4Strips(); });
    steps.time(2, [] {});
    return *steps.time(1, [&] { return copyGroup4(std::move(strips), kind); }).image;
  };
  printRow("Group 4 to Group 4 TIFF", argv[1], [&](const std::wstring& page, Steps& steps) {
    const EncodedImage image = copyGroup4Page(steps, page, Group4Output::Strips);
    appendTiff(steps, L"\\g4.tif", image);
  });
  printRow("Group 4 to PDF", argv[1], [&](const std::wstring& page, Steps& steps) {
    const EncodedImage image = copyGroup4Page(steps, page, Group4Output::OneStream);
    steps.time(3, [&] { pdf.append(output + L"\\g4.pdf", image); });
  });
  printRow("LZW to Group 4 TIFF", argv[2], [&](const std::wstring& page, Steps& steps) {
    const TiffPage source = steps.time(0, [&] { return open(page); });
    const Raster pixels = steps.time(1, [&] { return source.decode().value; });
    const EncodedImage image = steps.time(2, [&] { return encodeGroup4(toBilevel(pixels)); });
    appendTiff(steps, L"\\lzw1.tif", image);
  });
  printRow("JPEG to JPEG-in-TIFF", argv[3], [&](const std::wstring& page, Steps& steps) {
    const TiffPage source = steps.time(0, [&] { return open(page); });
    steps.time(1, [] {});
    const EncodedImage image = steps.time(2, [&] {
      return *transcodeJpeg(*source.storedJpeg(), {40, 32});
    });
    appendTiff(steps, L"\\jpeg.tif", image);
  });
  printRow("JPEG to LZW TIFF", argv[3], [&](const std::wstring& page, Steps& steps) {
    const TiffPage source = steps.time(0, [&] { return open(page); });
    const Raster pixels = steps.time(1, [&] { return source.decode().value; });
    const EncodedImage image =
        steps.time(2, [&] { return encodeLzw(pixels, SampleOrder::LittleEndian); });
    appendTiff(steps, L"\\lzw.tif", image);
  });
  std::filesystem::remove_all(argv[4]);
  return 0;
}
