#include "imaging/ImagingControl.h"

#include <cerrno>
#include <cstdint>
#include <limits>
#include <map>
#include <new>
#include <string>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/durable_file.h"
#include "foundation/letter_case.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/paths.h"
#include "foundation/program.h"
#include "foundation/text_encoding.h"
#include "imaging/encode_page.h"
#include "imaging/jpeg/jpeg.h"
#include "imaging/operations/crop.h"
#include "imaging/operations/finishing_filter.h"
#include "imaging/operations/resize.h"
#include "imaging/operations/rotate.h"
#include "imaging/operations/skew.h"

namespace orvane {
namespace {

// The bitmaps between CopyDIB and hDIB, by their handles.
class BitmapHandles {
 public:
  std::int32_t put(Bitmap bitmap) {
    last_ = last_ == std::numeric_limits<std::int32_t>::max() ? 1 : last_ + 1;
    bitmaps_.insert_or_assign(last_, std::move(bitmap));
    return last_;
  }

  Bitmap take(std::int32_t handle) {
    auto found = bitmaps_.extract(handle);
    if (found.empty()) throw Failure("no bitmap has the handle " + std::to_string(handle));
    return std::move(found.mapped());
  }

 private:
  std::map<std::int32_t, Bitmap> bitmaps_;
  std::int32_t last_ = 0;
};

// One table for all instances of the process.
BitmapHandles& bitmapHandles() {
  static BitmapHandles handles;
  return handles;
}

}  // namespace

template <typename Operation>
auto ImagingControl::guarded(const std::wstring& path, Operation operation) {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    imagError_ = kFailed;
    throw systemFailure(ENOMEM, path);
  } catch (...) {
    imagError_ = kFailed;
    throw;
  }
}

template <typename Operation>
void ImagingControl::change(Operation operation) {
  guarded([&] {
    Examined<Raster>& held = loadedToChange().holdPixels();
    try {
      held.value = operation(std::move(held.value));
    } catch (...) {
      if (held.value.pixels.empty()) page_.reset();
      throw;
    }
    note(held.data);
  });
}

LoadedPage& ImagingControl::loaded() {
  if (!page_) throw Failure("no page is loaded");
  return *page_;
}

LoadedPage& ImagingControl::loadedToChange() {
  ahead_.reset();
  return loaded();
}

void ImagingControl::note(const DataState& data) {
  if (data.damage) {
    imagError_ = kDamagedData;
    damage_ = fromUtf8(*data.damage);
  } else if (data.earlyEnd) {
    logEarlyEnd(*data.earlyEnd);
  }
}

// Nothing that was scanned is missing, so the page is not damaged; but its file promises more.
void ImagingControl::logEarlyEnd(const EarlyEnd& earlyEnd) {
  if (std::exchange(earlyEndIsLogged_, true)) return;
  logOfPage(L"图像数据提前结束", L"应有 " + std::to_wstring(earlyEnd.promisedRows) + L" 行，实有 " +
                                     std::to_wstring(earlyEnd.codedRows) + L" 行，其余按空白输出");
}

// A bitmap of another instance has no file to name.
void ImagingControl::logOfPage(const std::wstring& what, const std::wstring& reason) {
  if (reason.empty() || page_->number() == 0) return;
  remarks_.push_back(what + L":" + sourceFile_ + L"--第" + std::to_wstring(page_->number()) +
                     L"页--" + reason);
  mdlFolderAndFile::LogWrite(remarks_.back(), kApplicationTitle);
}

void ImagingControl::expectPages(PageForecast forecast, std::function<void()> beforeWork) {
  beforeWork_ = std::move(beforeWork);
  if (forecast && !pagesAhead_) pagesAhead_.emplace(workers_);
  if (!pagesAhead_) return;
  if (forecast) {
    pagesAhead_->begin(std::move(forecast), settings_);
  } else {
    pagesAhead_->end();
  }
}

void ImagingControl::SourceFile(const std::wstring& path) {
  page_.reset();
  ahead_.reset();
  earlyEndIsLogged_ = false;
  skew_ = 0;
  imagError_ = kNoImagError;
  sourceFile_ = path;
  if (path.empty()) return;
  damage_.clear();
  remarks_.clear();
  guarded([&] { load(path); });
}

void ImagingControl::load(const std::wstring& path) {
  if (pagesAhead_ && pageNumber_ == 1) {
    if (auto page = pagesAhead_->take(path, settings_, beforeWork_)) {
      page_ = std::move(page->loaded);
      ahead_ = {page->settings, std::move(page->encoded)};
      return;
    }
  }
  if (beforeWork_) beforeWork_();
  page_.emplace(path, pageNumber_);
}

std::int16_t ImagingControl::BitsPerPixel() const {
  return page_ ? static_cast<std::int16_t>(page_->bitsPerPixel()) : std::int16_t{0};
}

std::int32_t ImagingControl::ImageWidth() const {
  return page_ ? static_cast<std::int32_t>(page_->width()) : 0;
}

std::int32_t ImagingControl::ImageHeight() const {
  return page_ ? static_cast<std::int32_t>(page_->height()) : 0;
}

std::int32_t ImagingControl::FilePageCount(const std::wstring& path) {
  return guarded(
      path, [&] { return PdfFile::isPdf(path) ? PdfFile::pageCount(path) : tiffPageCount(path); });
}

void ImagingControl::Picture(ImagePicture* picture) {
  if (picture != nullptr) return;
  page_.reset();
  ahead_.reset();
}

void ImagingControl::SaveFile() {
  guarded(sourceFile_.empty() ? targetFile_ : sourceFile_, [&] {
    loaded();
    const bool overSource = !saveMultiPage_ && targetIsSource();
    const Findings found = overSource ? saveOverSource() : saveTo(pathToWrite());
    note(found.data);
    logOfPage(L"ICC配置文件未保留", found.profileLeftOut);
    logOfPage(L"分辨率未保留", found.resolutionLeftOut);
  });
}

EncodedPage ImagingControl::encode(SampleOrder order) {
  std::optional<Ahead> ahead = std::exchange(ahead_, std::nullopt);
  if (ahead && order == SampleOrder::LittleEndian && encodeAlike(ahead->settings, settings_)) {
    return std::move(ahead->encoded);
  }
  if (beforeWork_) beforeWork_();
  return encodePage(*page_, settings_, order, [] { windowServices().yield(); });
}

ImagingControl::Findings ImagingControl::saveTo(const std::wstring& path) {
  Findings found;
  const auto image = [&](SampleOrder order = SampleOrder::LittleEndian) {
    EncodedPage page = encode(order);
    found = {std::move(page.data), std::move(page.profileLeftOut),
             std::move(page.resolutionLeftOut)};
    return std::move(page.image);
  };
  switch (containerOf(settings_.outputType)) {
    case Container::Tiff:
      if (saveMultiPage_) {
        tiffFile_.append(path, image);
      } else {
        tiffFile_.create(path, image());
      }
      break;
    case Container::Pdf:
      if (saveMultiPage_) {
        pdfFile_.append(path, image());
      } else {
        pdfFile_.create(path, image());
      }
      break;
    case Container::Jpeg:
      if (saveMultiPage_ && mdlFolderAndFile::FileExist(path)) {
        throw Failure(path + L": a JPEG file holds one page, no page can be added");
      }
      writeJpegFile(path, image());
      break;
  }
  return found;
}

// A file that gets a page can be in the scan tree, as the source.
std::wstring ImagingControl::pathToWrite() const {
  return saveMultiPage_ ? existingPath(targetFile_) : targetFile_;
}

bool ImagingControl::targetIsSource() const {
  return !sourceFile_.empty() &&
         mdlFolderAndFile::fileSystem().IsSamePlace(sourceFile_, targetFile_);
}

// The source is only replaced by a finished file that holds the whole page. It keeps the name that
// it was loaded by, which can be another spelling of the target's: exfat-fuse breaks down when a
// file that is open under one spelling is replaced under another.
ImagingControl::Findings ImagingControl::saveOverSource() {
  const OutputFile old = OutputFile::openToReplace(sourceFile_);
  FileReplacement replacement(old.path());
  Findings found = saveTo(replacement.temporaryPath());
  std::optional<std::string> damage = found.data.damage;
  if (!damage && imagError_ == kDamagedData) damage = toUtf8(damage_);  // found before this save
  if (damage) throw fileFailure(sourceFile_, *damage + "; the file is not replaced");
  replacement.commit();
  return found;
}

void ImagingControl::CropImage(std::int32_t left, std::int32_t top, std::int32_t width,
                               std::int32_t height) {
  change([&](Raster&& pixels) { return crop(pixels, left, top, width, height); });
}

void ImagingControl::RotateImage(double angle) {
  change([&](Raster&& pixels) { return rotate(std::move(pixels), angle, page_->resolution()); });
  page_->setResolution(rotated(page_->resolution(), angle));
}

void ImagingControl::DeskewFirstStep() {
  guarded([&] {
    const Examined<Raster>& held = loadedToChange().holdPixels();
    skew_ = measureSkew(held.value, page_->resolution());
    note(held.data);
  });
}

void ImagingControl::DeskewSecondStep(std::int32_t) {
  const double skew = std::exchange(skew_, 0);
  if (page_ && skew == 0) return;
  change([&](Raster&& pixels) { return straighten(std::move(pixels), skew, page_->resolution()); });
}

void ImagingControl::FinishingFilter(float strength, std::int16_t halfWidth) {
  change([&](Raster&& pixels) { return finishingFilter(std::move(pixels), strength, halfWidth); });
}

std::int32_t ImagingControl::CopyDIB() {
  return guarded([&] {
    Examined<Raster> copy = loaded().pixels();
    note(copy.data);
    return bitmapHandles().put(
        {std::move(copy.value), page_->resolution(), page_->iccProfile().bytes});
  });
}

void ImagingControl::hDIB(std::int32_t handle) {
  guarded([&] {
    ahead_.reset();
    page_.emplace(bitmapHandles().take(handle));
    imagError_ = kNoImagError;
  });
}

void ImagingControl::ResizeImage(std::int32_t width, std::int32_t height) {
  change([&](Raster&& pixels) { return resize(std::move(pixels), width, height); });
}

void ImagingControl::DeletePageFromFile(const std::wstring& path, std::int32_t page) {
  guarded(path, [&] {
    if (PdfFile::isPdf(path)) {
      PdfFile::deletePage(path, page);
    } else {
      TiffFile::deletePage(path, page);
    }
  });
}

}  // namespace orvane
