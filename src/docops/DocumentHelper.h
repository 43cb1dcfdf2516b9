#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "docops/mdlDocumentHelper.h"
#include "imaging/ImagingEngine.h"

namespace orvane {

/// The document operations and the six imaging instances that they use. A host creates one, sets
/// `gBatchFolder` and calls the operations, which keep no state between calls. They handle the
/// window's events, so two calls must not overlap. None throws: a failure gives false or an empty
/// text.
class DocumentHelper {
 public:
  /// In the order of `ImagingInstances`.
  using Engines = std::array<std::unique_ptr<ImagingEngine>, 6>;

  /// With six instances of ImagingControl.
  DocumentHelper();
  /// With instances that the host supplies.
  explicit DocumentHelper(Engines engines) : engines_(std::move(engines)) {}

  /// As `mdlDocumentHelper::MergeDocument`. The list may be nullptr.
  bool MergeDocument(const std::wstring& sNewDocumentID, const DispatchList* aryMergedDoc);

  /// Always false.
  bool MergeDocumentFor奇偶排序(const std::wstring& sNewDocumentID,
                                const DispatchList* aryMergedDoc, bool MergeDirectionForBack);

  /// As `mdlDocumentHelper::SaveAsDocument`.
  bool SaveAsDocument(const std::wstring& DocumentID, std::int16_t SaveFileType, bool IsPageFile,
                      std::int16_t CompressionType, std::int16_t CompressionRatios,
                      const std::wstring& SavePath, const std::wstring& SubFolderType,
                      const std::wstring& NewDocumentID);

  /// As `mdlDocumentHelper::DeletePage`.
  bool DeletePage(const std::wstring& sFileName, std::int16_t iPageNum);

  /// As `mdlDocumentHelper::DeleteDocumentEx`. The instances are not used.
  bool DeleteDocumentForDocumentID(const std::wstring& sDocumentID);

  /// As `mdlDocumentHelper::MakeOnlyOneFileName`. The instances are not used.
  std::wstring MakeOnlyOneFileName(const std::wstring& sDocumentID, std::int16_t iStartIndex = 2);

  /// Writes a reduced copy of the first page of an image file, as JPEG, to `sFilePath` + "_B".
  /// @param ImageThumbSize  the divisor of width and height, which are rounded down; 0 fails.
  /// @return false after a failure, which is not logged.
  bool CreateThumbnailImage(const std::wstring& sFilePath, std::int16_t ImageThumbSize);

  /// Clears all six instances. May be called at any time and more than once.
  void Terminate();

 private:
  ImagingInstances instances() const;
  void ResetImagingControls();
  void writeThumbnail(const std::wstring& sFilePath, std::int16_t ImageThumbSize);
  void clearThumbnail();

  Engines engines_;
};

}  // namespace orvane
