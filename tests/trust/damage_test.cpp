// Damaged page files of every kind that the program reads, exported in every form.
#include <csignal>
#include <cstdint>
#include <cstdlib>
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
#if defined(__SANITIZE_ADDRESS__)  // its shadow memory needs terabytes of address space
constexpr int kChanges = 25;
constexpr rlim_t kMostMemory = RLIM_INFINITY;
#else
constexpr int kChanges = 500;
constexpr rlim_t kMostMemory = 1229U << 20;  // bytes: 1.2 GiB
#endif

// A kind of page, and the options of tiffcp that store it. After a blank, the page is the last of
// three.
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

// Little-endian, like the platform.
std::uint32_t number(const std::string& bytes, std::size_t at, int width) {
  std::uint32_t value = 0;
  bytes.copy(reinterpret_cast<char*>(&value), width, at);
  return value;
}

void add(std::string& bytes, std::size_t at, int width, std::uint32_t summand) {
  const std::uint32_t value = number(bytes, at, width) + summand;
  bytes.replace(at, width, reinterpret_cast<const char*>(&value), width);
}

// Moves the directory of a classic file before the data, so that a cut removes data and leaves a
// page that can still be opened. Other files are returned unchanged.
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

// The case that the time limit reports.
std::string currentCase;

extern "C" void reportTimeout(int) {
  constexpr std::string_view kMessage = "time limit exceeded: ";
  for (const std::string_view part : {kMessage, std::string_view(currentCase)}) {
    if (write(STDERR_FILENO, part.data(), part.size()) < 0) break;
  }
  std::abort();
}

class DamagedPages : public testing::Test {
 protected:
  DamagedPages() {
    std::signal(SIGALRM, reportTimeout);
    getrlimit(RLIMIT_AS, &before);
    const rlimit limit{std::min(kMostMemory, before.rlim_max), before.rlim_max};
    setrlimit(RLIMIT_AS, &limit);
    writeBytes(station.native("Log"), "a file, so that no log is written");
  }
  ~DamagedPages() override { setrlimit(RLIMIT_AS, &before); }

  // A hang ends the process and leaves the page in the temporary folder.
  bool exportPage(const std::string& bytes, const Form& form, std::int16_t page,
                  const std::string& damage) {
    writeBytes(station.native("page.tif"), bytes);
    currentCase = kind + ", " + damage + ", to " + form.name + (form.compress ? "" : " plain") +
                  ": " + station.native("page.tif").string() + "\n";
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

  // Exports page `page`, the last one of a valid file, in every form; then with cuts and changes.
  void damage(const std::string& whole, std::int16_t page = 1) {
    SCOPED_TRACE(kind);
    for (const Form& form : kForms) {
      ASSERT_TRUE(exportPage(whole, form, page, "undamaged")) << form.name;
      expectValid(form);
    }
    for (int i = 0; i < kCuts; ++i) {
      const std::size_t length = whole.size() * static_cast<std::size_t>(i) / kCuts;
      const std::string cut = "cut to " + std::to_string(length) + " bytes";
      EXPECT_FALSE(exportPage(whole.substr(0, length), kForms[i % kForms.size()], page, cut))
          << cut;
    }
    for (int i = 0; i < kChanges; ++i) {
      std::string damaged = whole;
      damaged[random() % damaged.size()] = static_cast<char>(random());
      const Form& form = kForms[static_cast<std::size_t>(i) % kForms.size()];
      if (exportPage(damaged, form, page, "change " + std::to_string(i)) && ++exported % 100 == 0) {
        expectValid(form);
      }
    }
  }

  rlimit before{};
  TempStation station;
  ImagingControl control;
  std::string kind;  // of the page, for messages
  std::mt19937 random{20240601};
  int exported = 0;
};

TEST_F(DamagedPages, NeverCrashHangOrExhaustMemoryAndACutPageAlwaysFails) {
  for (const auto& source : kSources) {
    TiffKind form{source.bits, source.samples, source.photometric};
    if (source.samples == 4 && source.photometric == PHOTOMETRIC_RGB) form.extras = {2};
    std::istringstream storages(source.storages);
    for (std::string storage; std::getline(storages, storage, '|');) {
      const std::int16_t pages = storage.starts_with(' ') ? 3 : 1;
      kind = std::to_string(form.bits) + " bits, " + storage;
      writeTiff(station.native("base.tif"), form, pages);
      outputOf("cd " + quoted(station.native()) + " && tiffcp -c " + storage +
               " base.tif whole.tif");
      const std::string whole = readBytes(station.native("whole.tif"));
      damage(pages == 1 ? directoryFirst(whole) : whole, pages);
    }
  }
  kind = "old-style JPEG";
  const std::string jpeg = outputOf("convert -size 64x48 gradient:red-blue -quality 90 jpg:-");
  damage(oldStyleJpegPage(64, 48, jpeg));
  EXPECT_GT(exported, 0);
}

}  // namespace
}  // namespace orvane::test
