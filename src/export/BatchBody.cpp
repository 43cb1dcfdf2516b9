#include "export/BatchBody.h"

#include "batchdb/mdlDataBase.h"
#include "docstore/ScanTree.h"
#include "export/OutputNaming.h"
#include "export/SaveAsDocument.h"
#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"

namespace orvane {
namespace {

void report(RunHost& frmMain, const std::wstring& line) {
  frmMain.listProcessLog().addItem(line);
  frmMain.listProcessLog().refresh();
}

// True when the step goes through; a failure in it goes to the log.
template <typename Step>
bool succeeds(Step step) {
  try {
    step();
    return true;
  } catch (const std::exception& failure) {
    mdlFolderAndFile::LogWrite(L"RunOutPutBatch-" + description(failure), kApplicationTitle);
    return false;
  }
}

bool scanFolderExists(const std::wstring& BatchID) {
  return isFolderName(BatchID) && mdlFolderAndFile::FolderExist(gBatchFolder);
}

/// The documents of one batch on their way to the output folder.
class BatchExport {
 public:
  BatchExport(RunHost& frmMain, const std::wstring& BatchID, Run& run)
      : frmMain_(frmMain),
        settings_(frmMain.settings()),
        BatchID_(BatchID),
        BatchOutputFolder_(
            batchOutputFolder(settings_.SavePath, settings_.IsCreateBatchFolder, BatchID)),
        run_(run) {
    run_.written.beginBatch(BatchID);
  }

  // The walk over the documents; the first one that fails ends it.
  bool exportDocuments() {
    const std::vector<std::wstring> subFolders =
        mdlFolderAndFile::fileSystem().SubFolders(gBatchFolder);
    const ScansOfBatch scans(subFolders);
    for (const std::wstring& name : subFolders) {
      const SubFolder kind = lookAt(name);
      if (kind == SubFolder::NoDocument) continue;
      if (kind == SubFolder::Unclear || !exportDocument(name)) {
        tellOfReplaced();
        deleteOutput(scans);
        report(frmMain_, name + L" 导出失败！");
        return false;
      }
      report(frmMain_, name + L" 导出成功！");
      windowServices().yield();
    }
    tellOfReplaced();
    tellOfLeftovers();
    return true;
  }

  bool recordSuccess() {
    const bool updated = succeeds([this] { bringToDisk(); }) &&
                         mdlDataBase::UpdateBatchInfo(BatchID_, L"完成成果输出");
    report(frmMain_, updated ? L"档案导出成果成功！" : L"档案导出数字化成果失败！");
    return updated;
  }

 private:
  enum class SubFolder { NoDocument, Document, Unclear };

  // One that cannot be looked at may be a document, so it is not passed over; the log says why.
  static SubFolder lookAt(const std::wstring& name) {
    SubFolder kind = SubFolder::Unclear;
    succeeds([&] { kind = isDocument(name) ? SubFolder::Document : SubFolder::NoDocument; });
    return kind;
  }

  bool exportDocument(const std::wstring& DocumentID) {
    if (!succeeds([this] { run_.outputFolder.requireAt(settings_.SavePath); })) return false;

    const std::wstring DocOutputFolder =
        docOutputFolder(BatchOutputFolder_, settings_.IsCreateDocFolder, DocumentID);
    const std::wstring NewDocumentID = frmMain_.AutoMakeNewDocumentName(BatchID_, DocumentID);
    const ImagingInstances imaging = frmMain_.imaging();
    ResetImagingControls(imaging);
    if (!mdlDocumentHelper::SaveAsDocument(imaging.ImgMerge, imaging.ImgControl,
                                           imaging.ImgPageCount, DocumentID, settings_.SaveFileType,
                                           !settings_.IsMutiPage, settings_.CompressionType,
                                           settings_.CompressionRatios, DocOutputFolder,
                                           run_.PageNumberMask, NewDocumentID, &run_.written)) {
      return false;
    }
    return succeeds([&] {  // with the folders in which a new one of them got its name
      for (const auto& folder : {settings_.SavePath, BatchOutputFolder_, DocOutputFolder}) {
        run_.written.addFolder(folder);
      }
    });
  }

  // The table may only say so once the files would outlive a power cut, and where the operator
  // wanted them: an exported batch never comes back.
  void bringToDisk() const {
    run_.written.bringToDisk();
    run_.outputFolder.requireAt(settings_.SavePath);
  }

  // Nothing is deleted in another folder that has come in the place of the run's own.
  void deleteOutput(const ScansOfBatch& scans) const {
    if (settings_.IsCreateBatchFolder && run_.outputFolder.isAt(settings_.SavePath)) {
      deleteBatchOutputFolder(settings_.SavePath, BatchID_, scans);
      run_.written.forgetBatch();
    }
  }

  void tellOfReplaced() const {
    const WrittenFiles::Finding& replaced = run_.written.replaced();
    if (replaced.count == 0) return;
    tell(L"替换了本次导出中已写出的 " + std::to_wstring(replaced.count) +
         L" 个同名文件，第一个原是档案【" + replaced.batch + L"】的：" + replaced.first);
  }

  void tellOfLeftovers() const {
    if (!settings_.IsCreateBatchFolder) return;
    succeeds([this] {
      const auto leftovers = run_.written.notWrittenIn(BatchOutputFolder_);
      if (leftovers.count == 0) return;
      tell(L"的成果文件夹里有 " + std::to_wstring(leftovers.count) +
           L" 个文件不是这次写出的，第一个：" + leftovers.first);
    });
  }

  // A batch that fails on every pass fills the log quickly enough without its repetitions.
  void tell(const std::wstring& finding) const {
    const std::wstring line = L"RunOutPutBatch-档案【" + BatchID_ + L"】" + finding;
    if (run_.lastFinding == line) return;
    run_.lastFinding = line;
    mdlFolderAndFile::LogWrite(line, kApplicationTitle);
  }

  RunHost& frmMain_;
  const ExportSettings& settings_;
  const std::wstring BatchID_;
  const std::wstring BatchOutputFolder_;
  Run& run_;
};

}  // namespace

void exportBatch(RunHost& frmMain, const Recordset& record, Run& run) {
  const Field& batchField = record.Fields(L"BatchID");
  report(frmMain, L"档案：" + (batchField.isNull() ? L"" : batchField.text()) + L"开始导出...");
  const std::wstring BatchID = batchField.text();
  record.Fields(L"PaperNum").toInt16();  // not used, but a record without one ends the run

  gBatchFolder = programFolder() + L"\\Batchs\\" + BatchID;
  if (!scanFolderExists(BatchID)) {
    report(frmMain, L"档案：" + BatchID + L"处理失败【档案找不到！】...");
    mdlDataBase::AddBatchRemark(BatchID, L"档案扫描件找不到！");
  } else {
    BatchExport batch(frmMain, BatchID, run);
    if (!batch.exportDocuments() || !batch.recordSuccess()) {
      mdlDataBase::AddBatchRemark(BatchID, L"成果输出失败！");
    }
  }
  frmMain.listProcessLog().addItem(L" ");
}

}  // namespace orvane
