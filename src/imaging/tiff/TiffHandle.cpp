#include "imaging/tiff/TiffHandle.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <string_view>

#include "foundation/Failure.h"
#include "foundation/text_encoding.h"

namespace orvane {
namespace {

// Warnings of libtiff 4.5 and libjpeg while they decode that are about the manner of writing, not
// about missing or broken pixels.
constexpr std::string_view kHarmlessWarnings[] = {
    "JPEG strip size exceeds expected dimensions",  // a last strip of full height
    "progressive mode",
    "unknown JFIF revision number",
    "Unknown Adobe color transform code",
    "Old-style LZW codes",
    "troublesome old-style JPEG compression mode",
    "subsampling inside JPEG data",
};

bool isHarmless(std::string_view warning) {
  return std::any_of(
      std::begin(kHarmlessWarnings), std::end(kHarmlessWarnings),
      [&](std::string_view part) { return warning.find(part) != std::string_view::npos; });
}

template <typename Text>
void print(Text& text, const char* module, const char* format, va_list values) {
  int length = 0;
  if (module != nullptr) length = std::snprintf(text.data(), text.size(), "%s: ", module);
  const auto begin = std::min<std::size_t>(length < 0 ? 0 : length, text.size() - 1);
  std::vsnprintf(text.data() + begin, text.size() - begin, format, values);
}

template <typename Text>
void keepFirst(Text& kept, const Text& text) {
  if (kept[0] == '\0') kept = text;
}

}  // namespace

std::string TiffMessages::reason(const char* otherwise) const {
  if (error_[0] != '\0') return error_.data();
  if (warning_[0] != '\0') return warning_.data();
  return otherwise;
}

std::optional<std::string> TiffMessages::damage() const {
  if (damage_[0] == '\0') return std::nullopt;
  return damage_.data();
}

int TiffMessages::onError(tiff*, void* userData, const char* module, const char* format,
                          va_list values) {
  auto& messages = *static_cast<TiffMessages*>(userData);
  if (messages.error_[0] != '\0') return 1;
  print(messages.error_, module, format, values);
  keepFirst(messages.damage_, messages.error_);
  return 1;
}

int TiffMessages::onWarning(tiff*, void* userData, const char* module, const char* format,
                            va_list values) {
  auto& messages = *static_cast<TiffMessages*>(userData);
  if (messages.damage_[0] != '\0') return 1;
  Text text{};
  print(text, module, format, values);
  keepFirst(messages.warning_, text);
  if (!isHarmless(text.data())) messages.damage_ = text;
  return 1;
}

namespace {

// What libtiff takes for itself at one time: an encoded strip, a table of strips, a decoder.
constexpr tmsize_t kMaxLibtiffAllocation = tmsize_t{256} << 20;

TiffHandle::Source& sourceOf(thandle_t handle) {
  return *static_cast<TiffHandle::Source*>(handle);
}

tmsize_t readProc(thandle_t handle, void* buffer, tmsize_t size) {
  TiffHandle::Source& source = sourceOf(handle);
  if (size <= 0) return 0;
  const std::size_t count = source.file.readAt(
      source.position, {static_cast<std::uint8_t*>(buffer), static_cast<std::size_t>(size)});
  source.position += count;
  return static_cast<tmsize_t>(count);
}

tmsize_t writeProc(thandle_t, void*, tmsize_t) {
  return 0;
}

toff_t seekProc(thandle_t handle, toff_t offset, int whence) {
  TiffHandle::Source& source = sourceOf(handle);
  if (whence == SEEK_CUR) offset += source.position;
  if (whence == SEEK_END) offset += source.file.size();
  source.position = offset;
  return offset;
}

int closeProc(thandle_t) {
  return 0;
}

toff_t sizeProc(thandle_t handle) {
  return sourceOf(handle).file.size();
}

// libtiff only reads what it is given here.
int mapProc(thandle_t handle, void** base, toff_t* size) {
  const ByteView content = sourceOf(handle).file.wholeContent();
  if (content.empty()) return 0;
  *base = const_cast<std::uint8_t*>(content.data());
  *size = content.size();
  return 1;
}

void unmapProc(thandle_t, void*, toff_t) {}

struct OptionsDeleter {
  void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

}  // namespace

TiffHandle::TiffHandle(const std::wstring& path) : path_(path), source_{ImageFile(path)} {
  const std::unique_ptr<TIFFOpenOptions, OptionsDeleter> options(TIFFOpenOptionsAlloc());
  if (!options) throw std::bad_alloc();
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), TiffMessages::onError, &messages_);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), TiffMessages::onWarning, &messages_);
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMaxLibtiffAllocation);
  // r: read, h: the header only, c: leave one big strip one strip.
  tiff_ = TIFFClientOpenExt(toUtf8(path).c_str(), "rhc", &source_, readProc, writeProc, seekProc,
                            closeProc, sizeProc, mapProc, unmapProc, options.get());
  if (tiff_ == nullptr) throw failure(messages_.reason("not a TIFF file"));
}

TiffHandle::~TiffHandle() {
  TIFFClose(tiff_);
}

TiffVariant TiffHandle::variant() const {
  return {.bigEndian = TIFFIsBigEndian(tiff_) != 0, .bigTiff = TIFFIsBigTIFF(tiff_) != 0};
}

void TiffHandle::readDirectory(std::uint64_t offset) {
  const auto [result, messages] = listen([&] { return TIFFSetSubDirectory(tiff_, offset); });
  if (result != 1) throw failure(messages.reason("the page's directory cannot be read"));
}

Failure TiffHandle::failure(const std::string& reason) const {
  const bool isNamed = reason.starts_with(toUtf8(path_) + ": ");  // libtiff often does so itself
  return isNamed ? Failure(reason) : fileFailure(path_, reason);
}

}  // namespace orvane
