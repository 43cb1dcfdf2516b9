#include "intake/page_file.h"

#include <algorithm>
#include <string_view>
#include <unistd.h>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/OutputFile.h"
#include "foundation/paths.h"
#include "foundation/text_encoding.h"
#include "imaging/LoadedPage.h"
#include "imaging/group4/group4.h"
#include "imaging/lzw/lossless.h"
#include "imaging/tiff/TiffFile.h"

namespace orvane {
namespace {

enum class BilevelPalette { Other, BlackFirst, WhiteFirst };

// What a palette of two entries holds.
BilevelPalette kindOf(const std::vector<std::uint16_t>& palette) {
  constexpr std::uint16_t kFull = 0xFFFF;
  const auto isEntry = [&](std::size_t entry, std::uint16_t value) {
    return palette[entry] == value && palette[entry + 2] == value && palette[entry + 4] == value;
  };
  if (isEntry(0, 0) && isEntry(1, kFull)) return BilevelPalette::BlackFirst;
  if (isEntry(0, kFull) && isEntry(1, 0)) return BilevelPalette::WhiteFirst;
  return BilevelPalette::Other;
}

void dropBilevelPalette(Raster& raster) {
  if (raster.model != ColourModel::Palette || raster.bitsPerSample != 1) return;
  const BilevelPalette kind = kindOf(raster.palette);
  if (kind == BilevelPalette::Other) return;
  raster.model =
      kind == BilevelPalette::BlackFirst ? ColourModel::MinIsBlack : ColourModel::MinIsWhite;
  raster.palette.clear();
}

/// Removes a file that is not wanted after all.
class UnlessKept {
 public:
  explicit UnlessKept(const std::wstring& path) : native_(nativePath(path)) {}
  UnlessKept(const UnlessKept&) = delete;
  UnlessKept& operator=(const UnlessKept&) = delete;
  ~UnlessKept() {
    if (!native_.empty()) unlink(native_.c_str());
  }
  void keep() { native_.clear(); }

 private:
  std::string native_;
};

// The reason of a failure without the name of the new file, which the operator does not know.
std::wstring reasonOf(const Failure& failure, const std::wstring& target) {
  std::wstring text = description(failure);
  const std::wstring front = target + L": ";
  return text.starts_with(front) ? text.substr(front.size()) : text;
}

}  // namespace

Bytes readWholeFile(const std::wstring& path) {
  const OutputFile file = OutputFile::openToRead(path);
  const std::uint64_t size = file.size();
  if (size > kMaxPageBytes) throw Failure(L"文件超过 1 GiB，不能登记");
  Bytes content(static_cast<std::size_t>(size));
  file.read(0, content);
  return content;
}

void requireRoom(std::uint64_t bytes) {
  if (bytes > kMaxPageBytes) throw Failure(L"图像太大：解码需要的内存超过 1 GiB");
}

EncodedImage encodeWithoutLoss(Raster raster) {
  dropBilevelPalette(raster);
  const bool isBilevel = raster.bitsPerSample == 1 && raster.samplesPerPixel == 1 &&
                         raster.model != ColourModel::Palette;
  return isBilevel ? encodeGroup4(raster) : encodeLzw(raster, SampleOrder::LittleEndian);
}

void writeReadablePage(const std::wstring& target, const std::function<void()>& write) {
  UnlessKept file(target);
  write();
  try {
    checkPage(LoadedPage(target, 1), target);
  } catch (const Failure& failure) {
    throw Failure(L"图像数据损坏，或者本程序读不了：" + reasonOf(failure, target));
  }
  file.keep();
}

void writeReadablePage(const std::wstring& target, const EncodedImage& image) {
  writeReadablePage(target, [&] { TiffFile().create(target, image); });
}

}  // namespace orvane
