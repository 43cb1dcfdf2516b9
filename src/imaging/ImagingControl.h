#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "imaging/ImagingEngine.h"
#include "imaging/LoadedPage.h"
#include "imaging/PagesAhead.h"
#include "imaging/encode_page.h"
#include "imaging/pdf/PdfFile.h"
#include "imaging/tiff/TiffFile.h"

namespace orvane {

/// Values of `ImagError`.
enum ImagErrorCode : std::int32_t {
  kNoImagError = 0,
  kFailed = 1,       ///< an operation threw: nothing was loaded, changed or saved; a page that
                     ///< was lost in a change is loaded no more
  kDamagedData = 2,  ///< the page's image data is damaged; what could be decoded was used
};

/// The imaging instance of this system. It joins what is loaded (LoadedPage), its encoding
/// (encode_page), and the files that it is written to (TiffFile, PdfFile, JPEG).
class ImagingControl final : public ImagingEngine {
 public:
  ImagingControl() = default;
  ImagingControl(const ImagingControl&) = delete;
  ImagingControl& operator=(const ImagingControl&) = delete;

  void SourceFile(const std::wstring& path) override;
  std::wstring SourceFile() const override { return sourceFile_; }
  void PageNumber(std::int32_t page) override { pageNumber_ = page; }

  void expectPages(PageForecast forecast, std::function<void()> beforeWork) override;
  /// Sets how many threads prepare expected pages, before the first forecast; 0 prepares none. At
  /// first as many as suit the machine.
  void setWorkers(unsigned workers) { workers_ = workers; }

  std::int16_t BitsPerPixel() const override;
  std::int32_t ImageWidth() const override;
  std::int32_t ImageHeight() const override;
  std::int32_t FilePageCount(const std::wstring& path) override;

  void TargetFile(const std::wstring& path) override { targetFile_ = path; }
  void OutputType(std::int32_t type) override { settings_.outputType = type; }
  void TiffCompression(std::int32_t code) override { settings_.tiffCompression = code; }
  void PdfCompression(std::int32_t code) override { settings_.pdfCompression = code; }
  void JpegFactorMajor(std::int16_t factor) override { settings_.jpegFactors.major = factor; }
  void JpegFactorMinor(std::int16_t factor) override { settings_.jpegFactors.minor = factor; }
  void SaveMultiPage(bool append) override { saveMultiPage_ = append; }
  void OutputResolutionX(double dotsPerInch) override { settings_.resolutionX = dotsPerInch; }
  void OutputResolutionY(double dotsPerInch) override { settings_.resolutionY = dotsPerInch; }
  void SaveFile() override;

  std::int32_t ImagError() const override { return imagError_; }
  std::wstring damage() const override { return damage_; }
  std::vector<std::wstring> remarks() const override { return remarks_; }
  void Refresh() override {}
  void Picture(ImagePicture* picture) override;

  void CropImage(std::int32_t left, std::int32_t top, std::int32_t width,
                 std::int32_t height) override;
  void RotateImage(double angle) override;
  void DeskewFirstStep() override;
  void DeskewSecondStep(std::int32_t mode) override;
  void FinishingFilter(float strength, std::int16_t halfWidth) override;
  std::int32_t CopyDIB() override;
  void hDIB(std::int32_t handle) override;
  void ResizeImage(std::int32_t width, std::int32_t height) override;

  void DeletePageFromFile(const std::wstring& path, std::int32_t page) override;

 private:
  /// Runs an operation on the page of `path`; one that throws sets `ImagError` on its way out.
  template <typename Operation>
  auto guarded(const std::wstring& path, Operation operation);
  template <typename Operation>
  auto guarded(Operation operation) {
    return guarded(sourceFile_, operation);
  }

  /// Replaces the page's pixels by the result of an operation. If the operation throws after it has
  /// taken them, the instance is left without a page.
  template <typename Operation>
  void change(Operation operation);

  /// What a save found, apart from the image.
  struct Findings {
    DataState data;
    std::wstring profileLeftOut;
    std::wstring resolutionLeftOut;
  };

  LoadedPage& loaded();
  /// The loaded page, which may be changed: an encoding of it is discarded.
  LoadedPage& loadedToChange();
  void load(const std::wstring& path);
  EncodedPage encode(SampleOrder order);
  void note(const DataState& data);
  void logEarlyEnd(const EarlyEnd& earlyEnd);
  void logOfPage(const std::wstring& what, const std::wstring& reason);
  Findings saveTo(const std::wstring& path);
  Findings saveOverSource();
  std::wstring pathToWrite() const;
  bool targetIsSource() const;

  std::wstring sourceFile_;
  std::wstring targetFile_;
  std::int32_t pageNumber_ = 1;
  bool saveMultiPage_ = false;
  SaveSettings settings_;
  std::optional<LoadedPage> page_;
  /// An encoding of the page that was made ahead, and the settings that it was made under.
  struct Ahead {
    SaveSettings settings;
    EncodedPage encoded;
  };
  std::optional<Ahead> ahead_;
  double skew_ = 0;  ///< degrees, from DeskewFirstStep to DeskewSecondStep
  std::int32_t imagError_ = kNoImagError;
  std::wstring damage_;
  std::vector<std::wstring> remarks_;
  bool earlyEndIsLogged_ = false;
  TiffFile tiffFile_;
  PdfFile pdfFile_;
  unsigned workers_ = workersOfMachine();
  std::optional<PagesAhead> pagesAhead_;  ///< since the first forecast
  std::function<void()> beforeWork_;      ///< while there is a forecast
};

}  // namespace orvane
