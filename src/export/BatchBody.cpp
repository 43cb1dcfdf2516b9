#include "export/BatchBody.h"

#include "batchdb/mdlDataBase.h"
#include "docstore/ScanTree.h"
#include "export/OutputNaming.h"
#include "export/SaveAsDocument.h"
#include "export/ScanTreeGuard.h"
#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/disk_sync.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"

namespace orvane {
namespace {

void report(RunHost& frmMain, const std::wstring& line) {
  frmMain.listProcessLog().addItem(line);
  frmMain.listProcessLog().refresh();
}

bool scanFolderExists(const std::wstring& BatchID) {
  return isFolderName(BatchID) && mdlFolderAndFile::FolderExist(gBatchFolder);
}

bool isDocument(const std::wstring& folderName) {
  return mdlFolderAndFile::FileExist(GetDocDataPath(folderName));
}

bool exportDocument(RunHost& frmMain, const std::wstring& BatchID, const std::wstring& DocumentID,
                    const std::wstring& BatchOutputFolder, const std::wstring& PageNumberMask) {
  const ExportSettings& settings = frmMain.settings();
  const std::wstring DocOutputFolder =
      docOutputFolder(BatchOutputFolder, settings.IsCreateDocFolder, DocumentID);
  const std::wstring NewDocumentID = frmMain.AutoMakeNewDocumentName(BatchID, DocumentID);
  const ImagingInstances imaging = frmMain.imaging();
  ResetImagingControls(imaging);
  return mdlDocumentHelper::SaveAsDocument(
      imaging.ImgMerge, imaging.ImgControl, imaging.ImgPageCount, DocumentID, settings.SaveFileType,
      !settings.IsMutiPage, settings.CompressionType, settings.CompressionRatios, DocOutputFolder,
      PageNumberMask, NewDocumentID);
}

// The walk over the documents; the first one that fails ends it.
bool exportDocuments(RunHost& frmMain, const std::wstring& BatchID,
                     const std::wstring& PageNumberMask) {
  const ExportSettings& settings = frmMain.settings();
  const std::wstring BatchOutputFolder =
      batchOutputFolder(settings.SavePath, settings.IsCreateBatchFolder, BatchID);
  for (const std::wstring& name : mdlFolderAndFile::fileSystem().SubFolders(gBatchFolder)) {
    if (!isDocument(name)) continue;
    if (!exportDocument(frmMain, BatchID, name, BatchOutputFolder, PageNumberMask)) {
      if (settings.IsCreateBatchFolder) deleteBatchOutputFolder(settings.SavePath, BatchID);
      report(frmMain, name + L" 导出失败！");
      return false;
    }
    report(frmMain, name + L" 导出成功！");
    windowServices().yield();
  }
  return true;
}

// The table may only say so once the files would outlive a power cut: an exported batch never comes
// back.
bool isOnDisk(const std::wstring& BatchOutputFolder) {
  try {
    syncDiskOf(BatchOutputFolder);
    return true;
  } catch (const Failure& failure) {
    mdlFolderAndFile::LogWrite(L"RunOutPutBatch-" + description(failure), kApplicationTitle);
    return false;
  }
}

bool recordSuccess(RunHost& frmMain, const std::wstring& BatchID) {
  const ExportSettings& settings = frmMain.settings();
  const bool updated =
      isOnDisk(batchOutputFolder(settings.SavePath, settings.IsCreateBatchFolder, BatchID)) &&
      mdlDataBase::UpdateBatchInfo(BatchID, L"完成成果输出");
  report(frmMain, updated ? L"档案导出成果成功！" : L"档案导出数字化成果失败！");
  return updated;
}

}  // namespace

void exportBatch(RunHost& frmMain, const Recordset& record, const std::wstring& PageNumberMask) {
  const Field& batchField = record.Fields(L"BatchID");
  report(frmMain, L"档案：" + (batchField.isNull() ? L"" : batchField.text()) + L"开始导出...");
  const std::wstring BatchID = batchField.text();
  record.Fields(L"PaperNum").toInt16();  // not used, but a record without one ends the run

  gBatchFolder = programFolder() + L"\\Batchs\\" + BatchID;
  if (!scanFolderExists(BatchID)) {
    report(frmMain, L"档案：" + BatchID + L"处理失败【档案找不到！】...");
    mdlDataBase::AddBatchRemark(BatchID, L"档案扫描件找不到！");
  } else {
    const bool exported =
        exportDocuments(frmMain, BatchID, PageNumberMask) && recordSuccess(frmMain, BatchID);
    if (!exported) mdlDataBase::AddBatchRemark(BatchID, L"成果输出失败！");
  }
  frmMain.listProcessLog().addItem(L" ");
}

}  // namespace orvane
