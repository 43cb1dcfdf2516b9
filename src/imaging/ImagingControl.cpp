#include "imaging/ImagingControl.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/existing_path.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/path_text.h"
#include "foundation/program.h"
#include "foundation/utf8_text.h"
#include "imaging/BitmapHandles.h"
#include "imaging/containers/JpegFile.h"
#include "imaging/encode_page.h"
#include "imaging/operations/operations.h"

namespace orvane {

template <typename Operation>
auto ImagingControl::guarded(Operation operation) {
  try {
    return operation();
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
  if (!page_ || !page_->damage()) return;
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

void ImagingControl::SourceFile(const std::wstring& path) {
  page_.reset();
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
      [&] { return PdfFile::isPdf(path) ? PdfFile::pageCount(path) : tiffPageCount(path); });
}

void ImagingControl::Picture(ImagePicture* picture) {
  if (picture == nullptr) page_.reset();
}

void ImagingControl::SaveFile() {
  guarded([&] {
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
        tiffFile_.append(path, encodeForTiff(*page_, settings_, tiffFile_.sampleOrder(path)));
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
  if (sourceFile_.empty()) return false;
  std::error_code ignored;
  return std::filesystem::equivalent(nativePath(existingPath(sourceFile_)), nativePath(targetFile_),
                                     ignored);
}

// The source is only given up for a finished file.
void ImagingControl::saveOverSource() {
  const std::wstring aside = targetFile_ + L".new";
  try {
    saveTo(aside);
    std::filesystem::rename(nativePath(aside), nativePath(targetFile_));
  } catch (...) {
    std::error_code ignored;
    std::filesystem::remove(nativePath(aside), ignored);
    throw;
  }
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
  change([&](Raster&& pixels) { return finish(std::move(pixels), strength, halfWidth); });
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
  guarded([&] {
    if (PdfFile::isPdf(path)) {
      PdfFile::deletePage(path, page);
    } else {
      TiffFile::deletePage(path, page);
    }
  });
}

}  // namespace orvane
