#pragma once

#include <cstdint>
#include <string>

#include "imaging/DocumentConversion.h"
#include "imaging/PageCleanup.h"

namespace orvane {

/// The operations that `frmMain` offers to other hosts: page clean-up and conversion, on the
/// instances and the list of the window. The run does not call them. They are described in
/// PageCleanup and DocumentConversion.
class FormOperations {
 public:
  virtual ~FormOperations() = default;

  bool ImageDocProcess(const std::wstring& sImageFilePath,
                       const std::wstring& sProcessedImageFilePath,
                       const std::wstring& sBatchErrorLogPath) {
    return PageCleanup(imaging(), listProcessLog())
        .ImageDocProcess(sImageFilePath, sProcessedImageFilePath, sBatchErrorLogPath);
  }

  void WriteBatchErrorLog(const std::wstring& Message, const std::wstring& FileName) {
    orvane::WriteBatchErrorLog(Message, FileName);
  }

  bool ChangeToDocPDF(const std::wstring& sImageFilePath, const std::wstring& sChangedPDFFilePath,
                      const std::wstring& sBatchErrorLogPath, std::int16_t SaveFileType,
                      std::int16_t CompressionType) {
    return conversion().ChangeToDocPDF(sImageFilePath, sChangedPDFFilePath, sBatchErrorLogPath,
                                       SaveFileType, CompressionType);
  }

  bool ChangeToPagePDF(const std::wstring& sImageFilePath, const std::wstring& sChangedPDFRootPath,
                       const std::wstring& sBatchErrorLogPath, std::int16_t SaveFileType,
                       std::int16_t CompressionType) {
    return conversion().ChangeToPagePDF(sImageFilePath, sChangedPDFRootPath, sBatchErrorLogPath,
                                        SaveFileType, CompressionType);
  }

  bool SaveAsDocument(const std::wstring& PageFilePath, std::int16_t SaveFileType,
                      std::int16_t CompressionType, const std::wstring& SaveFilePath) {
    return conversion().SaveAsDocument(PageFilePath, SaveFileType, CompressionType, SaveFilePath);
  }

  bool SaveAsPage(const std::wstring& PageFilePath, std::int16_t SaveFileType,
                  std::int16_t CompressionType, const std::wstring& SaveRootPath) {
    return conversion().SaveAsPage(PageFilePath, SaveFileType, CompressionType, SaveRootPath);
  }

  void SaveImage(ImagingEngine& ImgControl, const std::wstring& ImagePath, std::int16_t PageNum,
                 const std::wstring& sSaveFilePath = {}, bool bCompression = false,
                 bool bSaveMultiPage = false) {
    DocumentConversion::SaveImage(ImgControl, ImagePath, PageNum, sSaveFilePath, bCompression,
                                  bSaveMultiPage);
  }

  void SavePDF(ImagingEngine& ImgControl, const std::wstring& ImagePath, std::int16_t PageNum,
               const std::wstring& sSaveFilePath = {}, bool bCompression = false,
               bool bSaveMultiPage = false) {
    DocumentConversion::SavePDF(ImgControl, ImagePath, PageNum, sSaveFilePath, bCompression,
                                bSaveMultiPage);
  }

 protected:
  virtual ImagingInstances imaging() = 0;
  virtual ProgressList& listProcessLog() = 0;

 private:
  DocumentConversion conversion() { return {imaging(), listProcessLog()}; }
};

}  // namespace orvane
