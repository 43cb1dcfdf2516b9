#include "imaging/ImagingControl.h"

#include <cerrno>
#include <new>
#include <string>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/durable_file.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"
#include "foundation/utf8_text.h"
#include "imaging/BitmapHandles.h"
#include "imaging/encode_page.h"
#include "imaging/jpeg/JpegFile.h"
#include "imaging/operations/crop.h"
#include "imaging/operations/finishing_filter.h"
#include "imaging/operations/resize.h"
#include "imaging/operations/rotate.h"
#include "imaging/operations/skew.h"

namespace orvane {

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
    Raster& pixels = loaded().changeablePixels();
    try {
      pixels = operation(std::move(pixels));
    } catch (...) {
      if (pixels.pixels.empty()) page_.reset();
      throw;
    }
    noteDamage();
  });
}

LoadedPage& ImagingControl::loaded() {
  if (!page_) throw Failure("no page is loaded");
  return *page_;
}

void ImagingControl::noteDamage() {
  if (!page_) return;
  if (!page_->damage()) return logEarlyEnd();
  imagError_ = kDamagedData;
  damage_ = fromUtf8(*page_->damage());
}

// What a bitmap of another instance loses here, its page has not lost.
void ImagingControl::logProfileLeftOut() const {
  if (page_->profileLeftOut().empty() || page_->number() == 0) return;
  mdlFolderAndFile::LogWrite(L"ICC配置文件未保留:" + sourceFile_ + L"--第" +
                                 std::to_wstring(page_->number()) + L"页--" +
                                 page_->profileLeftOut(),
                             kApplicationTitle);
}

// Nothing that was scanned is missing, so the page is not damaged; but its file promises more.
void ImagingControl::logEarlyEnd() {
  if (!page_->earlyEnd() || std::exchange(earlyEndIsLogged_, true)) return;
  const auto [codedRows, promisedRows] = *page_->earlyEnd();
  mdlFolderAndFile::LogWrite(L"图像数据提前结束:" + sourceFile_ + L"--第" +
                                 std::to_wstring(page_->number()) + L"页--应有 " +
                                 std::to_wstring(promisedRows) + L" 行，实有 " +
                                 std::to_wstring(codedRows) + L" 行，其余按空白输出",
                             kApplicationTitle);
}

void ImagingControl::SourceFile(const std::wstring& path) {
  page_.reset();
  earlyEndIsLogged_ = false;
  skew_ = 0;
  imagError_ = kNoImagError;
  sourceFile_ = path;
  if (path.empty()) return;
  damage_.clear();
  guarded([&] { page_.emplace(path, pageNumber_); });
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
  if (picture == nullptr) page_.reset();
}

void ImagingControl::SaveFile() {
  guarded(sourceFile_.empty() ? targetFile_ : sourceFile_, [&] {
    loaded();
    if (!saveMultiPage_ && targetIsSource()) {
      saveOverSource();
    } else {
      saveTo(targetFile_);
    }
    noteDamage();
    logProfileLeftOut();
  });
}

void ImagingControl::saveTo(const std::wstring& path) {
  switch (settings_.outputType) {
    case kSaveTiff:
    case kSaveTiffBilevel:
    case kSaveTiffMultiBit:
      if (saveMultiPage_) {
        tiffFile_.append(
            path, [this](SampleOrder order) { return encodeForTiff(*page_, settings_, order); });
      } else {
        tiffFile_.create(path, encodeForTiff(*page_, settings_, SampleOrder::LittleEndian));
      }
      return;
    case kSavePdf:
      if (saveMultiPage_) {
        pdfFile_.append(path, encodeForPdf(*page_, settings_));
      } else {
        pdfFile_.create(path, encodeForPdf(*page_, settings_));
      }
      return;
    case kSaveJpeg:
      if (saveMultiPage_ && mdlFolderAndFile::FileExist(path)) {
        throw Failure(path + L": a JPEG file holds one page, no page can be added");
      }
      writeJpegFile(path, encodeForJpeg(*page_, settings_));
      return;
    default:
      throw Failure("no file form has the code " + std::to_string(settings_.outputType));
  }
}

bool ImagingControl::targetIsSource() const {
  return !sourceFile_.empty() &&
         mdlFolderAndFile::fileSystem().IsSamePlace(sourceFile_, targetFile_);
}

// The source is only given up for a finished file with all that could be in it. It keeps the name
// that it was loaded by, which can be another spelling of the target's: exfat-fuse breaks down when
// a file that is open under one spelling is replaced under another.
void ImagingControl::saveOverSource() {
  const OutputFile old = OutputFile::openToReplace(sourceFile_);
  FileReplacement replacement(old.path());
  saveTo(replacement.temporaryPath());
  if (page_->damage())
    throw fileFailure(sourceFile_, *page_->damage() + "; the file is not replaced");
  replacement.commit();
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
    skew_ = measureSkew(loaded().changeablePixels(), page_->resolution());
    noteDamage();
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
    Bitmap bitmap{loaded().pixels(), page_->resolution(), page_->iccProfile().bytes};
    noteDamage();
    return bitmapHandles().put(std::move(bitmap));
  });
}

void ImagingControl::hDIB(std::int32_t handle) {
  guarded([&] {
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
