#include <chrono>
#include <gmock/gmock.h>
#include <memory>

#include "imaging/ImagingControl.h"
#include "imaging/mdlImageProcess.h"
#include "imaging/tiff/TiffPage.h"
#include "imaging/tiff/tiff_kinds.h"
#include "support/PeakMemory.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"

/// Small files that name a lot of data.
namespace orvane::test {
namespace {

struct PageMemory : testing::Test {
  TempStation station;
  RecordingWindow window;
  const std::wstring path = station.path(L"page.tif");

  void SetUp() override {
    if (!HeapCount::kIsAvailable) GTEST_SKIP() << "needs the address sanitizer";
  }

  void write(const std::string& bytes) const { writeBytes(station.native("page.tif"), bytes); }

  // Saves the page in all forms.
  void expectWithinBounds() const {
    const std::uint64_t fileBytes = file_size(station.native("page.tif"));
    const PageInfo info = TiffPage(path, 1).info();
    const std::uint64_t decodedBytes =
        (std::uint64_t{info.width} * info.bitsPerPixel + 7) / 8 * info.height;
    ImagingControl control;
    for (const bool compress : {true, false}) {
      for (const wchar_t* name : {L"out.tif", L"out.jpg", L"out.pdf"}) {
        const auto save = name == std::wstring(L"out.pdf") ? mdlImageProcess::SavePDF
                                                           : mdlImageProcess::SaveImage;
        const std::uint64_t peak = HeapCount::peakOf(
            [&] { save(control, path, 1, station.path(name), compress, 0, false); });
        EXPECT_GT(peak, 0u);
        EXPECT_LE(peak, mostPageMemory(fileBytes, decodedBytes));
      }
    }
  }
};

// The table of offsets serves as the table of sizes too: each strip is `size` bytes at the same
// place. The codes end within the first row of Group 4.
std::string overlappingStrips(std::uint32_t width, std::uint32_t rows, std::uint32_t strips,
                              std::uint32_t size, std::vector<RawEntry> entries) {
  entries.insert(entries.end(), {{273, 4, strips, 0}, {278, 4, 1, rows}, {279, 4, strips, 0}});
  std::string table;
  for (std::uint32_t i = 0; i < 4 * strips; ++i) table += static_cast<char>(size >> i % 4 * 8);
  return rawGrayPage(width, rows * strips, table + std::string(2 * size, '\x55'), entries);
}

TEST_F(PageMemory, StripsThatOverlapAreNotHeldAllAtOnce) {
  for (const unsigned compression : {COMPRESSION_CCITTFAX4, COMPRESSION_CCITTFAX3}) {
    write(overlappingStrips(8, 1, 700, 1 << 16, {{258, 3, 1, 1}, {259, 3, 1, compression}}));
    expectWithinBounds();
  }
  for (const unsigned compression :
       {COMPRESSION_JPEG, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE}) {
    write(overlappingStrips(8, 1, 700, 1 << 16, {{259, 3, 1, compression}}));
    expectWithinBounds();
  }
}

// Tables of 60 kB that thousands of streams share.
TEST_F(PageMemory, TablesOfJpegStripsAreThereOnce) {
  const std::string whole = outputOf("convert -size 8x8 xc:gray jpg:-");
  const std::size_t frame = whole.find("\xFF\xC0"), huffman = whole.find("\xFF\xC4");
  std::string tables =
      whole.substr(0, frame) + whole.substr(huffman, whole.find("\xFF\xDA") - huffman);
  tables += "\xFF\xFE\xEA\x60" + std::string(0xEA60 - 2, 'c') + "\xFF\xD9";
  std::string strip =
      "\xFF\xD8" + whole.substr(frame, huffman - frame) + whole.substr(whole.find("\xFF\xDA"));
  const std::uint32_t strips = 4'000;
  {
    const std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff(
        TIFFOpen(station.native("page.tif").c_str(), "wl"), TIFFClose);
    for (const auto& [tag, value] : {std::pair<unsigned, std::uint32_t>{TIFFTAG_IMAGEWIDTH, 8},
                                     {TIFFTAG_IMAGELENGTH, 8 * strips},
                                     {TIFFTAG_BITSPERSAMPLE, 8},
                                     {TIFFTAG_COMPRESSION, COMPRESSION_JPEG},
                                     {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK},
                                     {TIFFTAG_ROWSPERSTRIP, 8}}) {
      TIFFSetField(tiff.get(), tag, value);
    }
    TIFFSetField(tiff.get(), TIFFTAG_JPEGTABLES, static_cast<std::uint32_t>(tables.size()),
                 tables.data());
    for (std::uint32_t i = 0; i < strips; ++i) {
      TIFFWriteRawStrip(tiff.get(), i, strip.data(), std::ssize(strip));
    }
  }
  EXPECT_EQ(TiffPage(path, 1).storedJpeg()->tables.size(), tables.size());
  expectWithinBounds();
}

// Rows of one bit each: a page of 16 MB in 2 kB.
TEST_F(PageMemory, ABlankPageTakesItsPixelsOnce) {
  std::string codes((1 << 14) / 8, '\xFF');
  codes += std::string("\0\x10\x01", 3);
  write(rawGrayPage(8192, 1 << 14, codes, {{258, 3, 1, 1}, {259, 3, 1, 4}, {262, 3, 1, 0}}));
  ImagingControl control;
  const std::uint64_t peak = HeapCount::peakOf([&] {
    EXPECT_TRUE(
        mdlImageProcess::SavePDF(control, path, 1, station.path(L"out.pdf"), false, 0, false));
  });
  EXPECT_LT(peak, 17u << 20);
}

// Four pages of 1.3 MB, each with 102 MB of strips, are prepared by two workers: never more than
// the limit for pages ahead and the page at hand.
TEST_F(PageMemory, PagesAheadKeepToTheirLimit) {
  const std::string bytes = overlappingStrips(20'000, 16, 160, 640 << 10,
                                              {{258, 3, 1, 1}, {259, 3, 1, COMPRESSION_CCITTFAX4}});
  std::vector<std::wstring> pages;
  for (const std::string name : {"1.tif", "2.tif", "3.tif", "4.tif"}) {
    writeBytes(station.native(name), bytes);
    last_write_time(station.native(name),
                    last_write_time(station.native(name)) - std::chrono::hours(1));
    pages.push_back(station.path(std::wstring(name.begin(), name.end())));
  }
  const std::uint64_t peak = HeapCount::peakOf([&] {
    ImagingControl control;
    control.setWorkers(2);
    const auto forecast = [&, next = pages.begin()]() mutable -> std::optional<ExpectedPage> {
      if (next == pages.end()) return std::nullopt;
      return ExpectedPage{*next++, {}};
    };
    control.expectPages(forecast, {});
    for (const std::wstring& page : pages) {
      mdlImageProcess::SaveImage(control, page, 1, station.path(L"out.tif"), true, 0, false);
    }
  });
  EXPECT_GT(peak, 100u << 20);
  EXPECT_LT(peak, (136u + 120u) << 20);
}

}  // namespace
}  // namespace orvane::test
