#include "imaging/page/TiffHandle.h"

#include <cstdio>
#include <new>

#include "foundation/utf8_text.h"

namespace orvane {
namespace {

// What libtiff takes for itself at one time: an encoded strip, a table of strips, a decoder.
constexpr tmsize_t kMaxLibtiffAllocation = tmsize_t{256} << 20;

TiffHandle::Source& sourceOf(thandle_t handle) {
  return *static_cast<TiffHandle::Source*>(handle);
}

tmsize_t readProc(thandle_t handle, void* buffer, tmsize_t size) {
  TiffHandle::Source& source = sourceOf(handle);
  if (size <= 0) return 0;
  const std::size_t count = source.file.readAt(source.position, static_cast<std::uint8_t*>(buffer),
                                               static_cast<std::size_t>(size));
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

TiffHandle::TiffHandle(const std::wstring& path) : name_(toUtf8(path)), source_{ImageFile(path)} {
  const std::unique_ptr<TIFFOpenOptions, OptionsDeleter> options(TIFFOpenOptionsAlloc());
  if (!options) throw std::bad_alloc();
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), TiffMessages::onError, &messages_);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), TiffMessages::onWarning, &messages_);
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMaxLibtiffAllocation);
  // r: read, h: the header only, c: leave one big strip one strip.
  tiff_ = TIFFClientOpenExt(name_.c_str(), "rhc", &source_, readProc, writeProc, seekProc,
                            closeProc, sizeProc, mapProc, unmapProc, options.get());
  if (tiff_ == nullptr) throw failure(messages_.reason("not a TIFF file"));
}

TiffHandle::~TiffHandle() {
  TIFFClose(tiff_);
}

void TiffHandle::readDirectory(std::uint64_t offset) {
  messages_.clear();
  if (TIFFSetSubDirectory(tiff_, offset) != 1) {
    throw failure(messages_.reason("the page's directory cannot be read"));
  }
}

Failure TiffHandle::failure(const std::string& reason) const {
  const bool named = reason.starts_with(name_ + ": ");  // libtiff often names the file itself
  return Failure(named ? reason : name_ + ": " + reason);
}

}  // namespace orvane
