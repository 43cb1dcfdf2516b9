#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// The drawing that a control shows. The program only removes it, with
/// `ImagingEngine::Picture(nullptr)`.
class ImagePicture;

/// The settings of a saver. Together with the depth of a page they decide the codes.
struct SaveChoice {
  bool asPdf = false;
  bool isJpgName = false;  ///< the target's name ends in ".jpg"
  bool bCompression = true;
  std::int16_t CompressionRatios = 0;  ///< 0, 1 or 2 selects the JPEG factors
};

/// A file whose first page will be loaded and saved.
struct ExpectedPage {
  std::wstring path;
  SaveChoice choice;
};

/// Returns the next expected page at each call, in the order of the export; nothing at the end.
using PageForecast = std::function<std::optional<ExpectedPage>()>;

/// The loaded page as far as a save is concerned: its depth, and the codes that are set for it.
class PageToSave {
 public:
  virtual ~PageToSave() = default;

  /// Bits of one pixel of the loaded page, all samples together; 0 when nothing is loaded.
  virtual std::int16_t BitsPerPixel() const = 0;
  /// The form of the file: a `SaveType`.
  virtual void OutputType(std::int32_t type) = 0;
  /// The compression in a TIFF file: a `TiffCode`.
  virtual void TiffCompression(std::int32_t code) = 0;
  /// The compression in a PDF file: a `PdfCode`.
  virtual void PdfCompression(std::int32_t code) = 0;
  /// Luminance factor, 0 to 100: the luminance quality is 100 minus the factor. Initially 20.
  virtual void JpegFactorMajor(std::int16_t factor) = 0;
  /// Chrominance factor, 0 to 100: the chrominance quality is 100 minus the factor. Initially 16.
  virtual void JpegFactorMinor(std::int16_t factor) = 0;
};

/// The interface of one imaging instance, used by one thread. An instance holds at most one loaded
/// page, its path, and the save settings, which keep their values until they are set again.
///
/// An operation fails in one of two ways. If a file cannot be loaded or saved at all, it throws
/// Failure, with path and reason in the text, and sets `ImagError`. If a page can be loaded but its
/// image data is damaged, it sets `ImagError` and returns. `ImagError` keeps its value until the
/// instance is cleared or loads again. A fax page that ends properly but before its last row is not
/// damaged: the missing rows are white, and a line is logged.
class ImagingEngine : public PageToSave {
 public:
  /// Loads page `PageNumber` of the file in place of the loaded page; "" unloads.
  virtual void SourceFile(const std::wstring& path) = 0;
  /// The path that was set last.
  virtual std::wstring SourceFile() const = 0;
  /// The page, from 1, that `SourceFile` will load.
  virtual void PageNumber(std::int32_t page) = 0;

  /// Sets the forecast of the pages that will be loaded and saved, so that an instance can prepare
  /// them; an empty function removes it. It is called while pages are loaded, on the caller's
  /// thread. A wrong forecast costs time and changes nothing else.
  /// @param beforeWork  called on the caller's thread, for as long as there is a forecast, before
  /// the instance loads or encodes a page there, and before it waits for a page.
  virtual void expectPages(PageForecast forecast, std::function<void()> beforeWork) = 0;

  /// Width of the loaded page in pixels.
  virtual std::int32_t ImageWidth() const = 0;
  /// Height of the loaded page in pixels.
  virtual std::int32_t ImageHeight() const = 0;
  /// The number of pages of a file. It need not be loaded.
  virtual std::int32_t FilePageCount(const std::wstring& path) = 0;

  /// The file that `SaveFile` writes.
  virtual void TargetFile(const std::wstring& path) = 0;
  /// True: `SaveFile` appends the page to `TargetFile` and creates the file if it is missing.
  /// False: it replaces `TargetFile` by a file with this page only.
  virtual void SaveMultiPage(bool append) = 0;
  /// Horizontal resolution, in dots per inch, of a PDF page whose source states none. It never
  /// replaces a resolution that the page has.
  virtual void OutputResolutionX(double dotsPerInch) = 0;
  /// The same for the vertical resolution.
  virtual void OutputResolutionY(double dotsPerInch) = 0;
  /// Writes the loaded page to `TargetFile` with the current settings.
  virtual void SaveFile() = 0;

  /// The last error of the instance; 0 means none.
  virtual std::int32_t ImagError() const = 0;
  /// Why the image data of the page that was loaded last is damaged; empty if no damage has been
  /// found. It can still be read after the instance has been cleared.
  virtual std::wstring damage() const { return {}; }
  /// What has been logged of the page that was loaded last, although it was saved. It can still be
  /// read after the instance has been cleared.
  virtual std::vector<std::wstring> remarks() const { return {}; }
  /// Repaints the control; no effect on data.
  virtual void Refresh() = 0;
  /// nullptr removes the picture and the loaded page.
  virtual void Picture(ImagePicture* picture) = 0;

  /// Crops the loaded page to a rectangle in pixels. Throws when nothing is left.
  virtual void CropImage(std::int32_t left, std::int32_t top, std::int32_t width,
                         std::int32_t height) = 0;
  /// Rotates the loaded page by `angle` degrees, to the left when positive. Exact for multiples
  /// of 90.
  virtual void RotateImage(double angle) = 0;
  /// Measures the skew of the loaded page. A page with too little ink counts as straight.
  virtual void DeskewFirstStep() = 0;
  /// Rotates the page by the measured skew and keeps its size. `mode` is always 0.
  virtual void DeskewSecondStep(std::int32_t mode) = 0;
  /// Sharpens a gray or colour page (strength 0 to 1, half-width in pixels); removes single-pixel
  /// specks that stand alone from a 1-bit page.
  virtual void FinishingFilter(float strength, std::int16_t halfWidth) = 0;
  /// A handle to a copy of the loaded bitmap, for `hDIB` of another instance.
  virtual std::int32_t CopyDIB() = 0;
  /// Loads the bitmap of a handle that `CopyDIB` returned. A handle can be used once.
  virtual void hDIB(std::int32_t handle) = 0;
  /// Scales the loaded page to a size in pixels. Throws for a width or height below 1.
  virtual void ResizeImage(std::int32_t width, std::int32_t height) = 0;

  /// Removes a page, from 1, from a file on disk (TIFF or PDF).
  virtual void DeletePageFromFile(const std::wstring& path, std::int32_t page) = 0;
};

/// Codes of `OutputType`.
enum SaveType : std::int32_t {
  kSaveTiff = 4,           ///< compression as `TiffCompression` says
  kSaveJpeg = 8,           ///< a JPEG file
  kSaveTiffBilevel = 15,   ///< TIFF of a 1-bit page, with kTiffGroup4
  kSaveTiffMultiBit = 18,  ///< TIFF of a page of more than 1 bit, with kTiffJpeg
  kSavePdf = 40,           ///< compression as `PdfCompression` says
};

/// Codes of `TiffCompression`.
enum TiffCode : std::int32_t { kTiffNone = 0, kTiffGroup4 = 3, kTiffLzw = 4, kTiffJpeg = 6 };

/// Codes of `PdfCompression`.
enum PdfCode : std::int32_t { kPdfNone = 0, kPdfGroup4 = 4, kPdfJpeg = 6 };

/// The six instances of one host, in the order of their reset.
struct ImagingInstances {
  ImagingEngine& ImgControl;
  ImagingEngine& ImgCrop;
  ImagingEngine& ImgDelete;
  ImagingEngine& ImgInsert;
  ImagingEngine& ImgMerge;
  ImagingEngine& ImgPageCount;
};

/// Empties one instance: `SourceFile` "", `Refresh`, `Picture` nothing. Save settings stay.
void ClearControl(ImagingEngine& ImgControl);

/// `ClearControl` on all six instances. A failure inside reaches the caller.
void ResetImagingControls(const ImagingInstances& instances);

}  // namespace orvane
