// Damaged page files of every kind that a station reads, exported in every form.
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <sys/resource.h>
#include <unistd.h>

#include "imaging/ImagingControl.h"
#include "imaging/mdlImageProcess.h"
#include "imaging/tiff/tiff_kinds.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

constexpr int kCuts = 50;
constexpr unsigned kLongestSeconds = 5;
#if defined(__SANITIZE_ADDRESS__)  // whose shadow takes terabytes of addresses
constexpr int kChanges = 25;
constexpr rlim_t kMostMemory = RLIM_INFINITY;
#else
constexpr int kChanges = 500;
constexpr rlim_t kMostMemory = 1229U << 20;  // bytes: 1.2 GiB
#endif

// A kind of page, and how tiffcp stores it; with a blank in front as the last of three pages.
const struct {
  std::uint16_t bits, samples, photometric;
  const char* storages;
} kSources[] = {
    {1, 1, PHOTOMETRIC_MINISWHITE, "none|g3|g3:2d|g4|g4 -r 11|g4 -f lsb2msb|g4 -B|packbits"},
    {8, 1, PHOTOMETRIC_MINISBLACK, "none|lzw|lzw:2|zip|jpeg -r 16|none -t -w 32 -l 32"},
    {8, 1, PHOTOMETRIC_MINISBLACK, "lzw -B|zip -8| none| lzw"},
    {8, 3, PHOTOMETRIC_RGB, "none|lzw:2|zip -t -w 32 -l 32|jpeg -r 16| zip|packbits -p separate"},
    {4, 1, PHOTOMETRIC_PALETTE, "none|lzw"},
    {8, 1, PHOTOMETRIC_PALETTE, "packbits"},
    {16, 1, PHOTOMETRIC_MINISBLACK, "none|lzw:2|zip -B"},
    {16, 3, PHOTOMETRIC_RGB, "zip:2"},
    {1, 1, PHOTOMETRIC_MINISWHITE, " g4| packbits"},
    {8, 4, PHOTOMETRIC_RGB, "lzw"},
    {8, 4, PHOTOMETRIC_SEPARATED, "none|zip"},
    {8, 3, PHOTOMETRIC_RGB, "zstd:2|lzma|webp"},
    {8, 3, PHOTOMETRIC_CIELAB, "lzw|zip -t -w 32 -l 32"},
};

// Little-endian, as the platform is.
std::uint32_t number(const std::string& bytes, std::size_t at, int width) {
  std::uint32_t value = 0;
  bytes.copy(reinterpret_cast<char*>(&value), width, at);
  return value;
}

void add(std::string& bytes, std::size_t at, int width, std::uint32_t summand) {
  const std::uint32_t value = number(bytes, at, width) + summand;
  bytes.replace(at, width, reinterpret_cast<const char*>(&value), width);
}

// The same classic file with its directory in front of the data, so that a cut takes data and
// leaves a page that still opens. Other files come back as they are.
std::string directoryFirst(const std::string& file) {
  if (!file.starts_with(std::string("II*\0", 4))) return file;
  const std::uint32_t old = number(file, 4, 4);
  std::string block = file.substr(old);
  const auto length = static_cast<std::uint32_t>(block.size());
  for (std::uint32_t i = 0; i < number(file, old, 2); ++i) {
    const std::size_t entry = 2 + 12 * i;
    const std::uint32_t tag = number(block, entry, 2), count = number(block, entry + 4, 4);
    const int width =
        std::vector{0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8}[number(block, entry + 2, 2)];
    const bool outside = width * count > 4;
    std::size_t values = outside ? number(block, entry + 8, 4) - old : entry + 8;
    if (outside) add(block, entry + 8, 4, 8 - old);
    if (tag != TIFFTAG_STRIPOFFSETS && tag != TIFFTAG_TILEOFFSETS) continue;
    for (std::uint32_t k = 0; k < count; ++k, values += width) add(block, values, width, length);
  }
  return std::string("II*\0\x08\0\0\0", 8) + block + file.substr(8, old - 8);
}

struct Form {
  decltype(&mdlImageProcess::SaveImage) save;
  const char* name;
  bool compress;
  const char* judge;
};
const std::vector<Form> kForms{
    {mdlImageProcess::SaveImage, "out.tif", true, "tiffcp -c none out.tif judged"},
    {mdlImageProcess::SaveImage, "out.tif", false, "tiffcp -c none out.tif judged"},
    {mdlImageProcess::SaveImage, "out.jpg", true,
     "(djpeg out.jpg || tiffcp -c none out.jpg judged)"},
    {mdlImageProcess::SavePDF, "out.pdf", true, "qpdf --check out.pdf"},
    {mdlImageProcess::SavePDF, "out.pdf", false, "qpdf --check out.pdf"}};

class DamagedPages : public testing::Test {
 protected:
  DamagedPages() {
    getrlimit(RLIMIT_AS, &before);
    const rlimit limit{std::min(kMostMemory, before.rlim_max), before.rlim_max};
    setrlimit(RLIMIT_AS, &limit);
    writeBytes(station.native("Log"), "in the way, so that no log grows");
  }
  ~DamagedPages() override { setrlimit(RLIMIT_AS, &before); }

  // A hang ends the process; the page then still lies in its folder under /tmp.
  bool exportPage(const std::string& bytes, const Form& form, std::int16_t page) {
    writeBytes(station.native("page.tif"), bytes);
    alarm(kLongestSeconds);
    const bool done = form.save(control, station.path(L"page.tif"), page,
                                pathText(station.native(form.name)), form.compress, 0, false);
    alarm(0);
    return done;
  }

  void expectValid(const Form& form) {
    const CommandResult judged =
        runCommand("cd " + quoted(station.native()) + " && " + form.judge + " >text");
    EXPECT_EQ(judged.exitCode, 0) << judged.output << " " << form.name;
  }

  // Page number `page`, the last one of a good file, in every form; then cuts and changes of it.
  void damage(const std::string& whole, std::int16_t page = 1) {
    for (const Form& form : kForms) {
      ASSERT_TRUE(exportPage(whole, form, page)) << form.name;
      expectValid(form);
    }
    for (int i = 0; i < kCuts; ++i) {
      const std::size_t length = whole.size() * static_cast<std::size_t>(i) / kCuts;
      EXPECT_FALSE(exportPage(whole.substr(0, length), kForms[i % kForms.size()], page)) << length;
    }
    for (int i = 0; i < kChanges; ++i) {
      std::string damaged = whole;
      damaged[random() % damaged.size()] = static_cast<char>(random());
      const Form& form = kForms[static_cast<std::size_t>(i) % kForms.size()];
      if (exportPage(damaged, form, page) && ++exported % 100 == 0) expectValid(form);
    }
  }

  rlimit before{};
  TempStation station;
  ImagingControl control;
  std::mt19937 random{20240601};
  int exported = 0;
};

TEST_F(DamagedPages, NeitherCrashNorHangNorGrowAndACutOneAlwaysFails) {
  for (const auto& source : kSources) {
    TiffKind kind{source.bits, source.samples, source.photometric};
    if (source.samples == 4 && source.photometric == PHOTOMETRIC_RGB) kind.extras = {2};
    std::istringstream storages(source.storages);
    for (std::string storage; std::getline(storages, storage, '|');) {
      const std::int16_t pages = storage.starts_with(' ') ? 3 : 1;
      SCOPED_TRACE(std::to_string(kind.bits) + " bits, " + storage);
      writeTiff(station.native("base.tif"), kind, pages);
      outputOf("cd " + quoted(station.native()) + " && tiffcp -c " + storage +
               " base.tif whole.tif");
      const std::string whole = readBytes(station.native("whole.tif"));
      damage(pages == 1 ? directoryFirst(whole) : whole, pages);
    }
  }
  SCOPED_TRACE("old-style JPEG");
  const std::string jpeg = outputOf("convert -size 64x48 gradient:red-blue -quality 90 jpg:-");
  damage(oldStyleJpegPage(64, 48, jpeg));
  EXPECT_GT(exported, 0);
}

}  // namespace
}  // namespace orvane::test
