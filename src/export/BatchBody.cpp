#include "export/BatchBody.h"

#include <chrono>

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

using Clock = std::chrono::steady_clock;

void report(RunHost& frmMain, const std::wstring& line) {
  frmMain.listProcessLog().addItem(line);
  frmMain.listProcessLog().refresh();
}

void reportFailure(RunHost& frmMain, const std::wstring& line, const std::wstring& reason) {
  frmMain.listProcessLog().addFailure(line, reason);
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
class BatchExport : private ExportListener {
 public:
  BatchExport(RunHost& frmMain, const std::wstring& BatchID, Run& run)
      : frmMain_(frmMain),
        settings_(frmMain.settings()),
        BatchID_(BatchID),
        BatchOutputFolder_(
            batchOutputFolder(settings_.SavePath, settings_.IsCreateBatchFolder, BatchID)),
        run_(run) {
    run_.written.beginBatch(BatchID);
    sum_.batch = BatchID;
  }

  // The walk over the documents; the first one that fails ends it.
  bool exportDocuments() {
    const std::vector<std::wstring> subFolders =
        mdlFolderAndFile::fileSystem().SubFolders(gBatchFolder);
    const ScansOfBatch scans(subFolders);
    for (const std::wstring& name : subFolders) {
      const mdlFolderAndFile::LogCapture told;
      const SubFolder kind = lookAt(name);
      if (kind == SubFolder::NoDocument) continue;
      beginDocument(name);
      const bool isExported = kind == SubFolder::Document && exportDocument(name);
      const std::wstring reason = isExported ? L"" : told.text();
      endDocument(isExported, reason);
      if (!isExported) {
        tellOfReplaced();
        deleteOutput(scans);
        reportFailure(frmMain_, name + L" 导出失败！", reason);
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
    const mdlFolderAndFile::LogCapture told;
    frmMain_.progress().beginSync();
    sum_.isExported = succeeds([this] { bringToDisk(); }) &&
                      mdlDataBase::UpdateBatchInfo(BatchID_, L"完成成果输出");
    if (sum_.isExported) {
      report(frmMain_, L"档案导出成果成功！");
    } else {
      addReason(told.text());
      reportFailure(frmMain_, L"档案导出数字化成果失败！", told.text());
    }
    return sum_.isExported;
  }

  /// What is there of the batch in the end.
  ReportRow sum() const {
    ReportRow sum = sum_;
    sum.time = Clock::now() - start_;
    return sum;
  }

 private:
  enum class SubFolder { NoDocument, Document, Unclear };

  // One that cannot be looked at may be a document, so it is not passed over; the log says why.
  static SubFolder lookAt(const std::wstring& name) {
    SubFolder kind = SubFolder::Unclear;
    succeeds([&] { kind = isDocument(name) ? SubFolder::Document : SubFolder::NoDocument; });
    return kind;
  }

  void beginDocument(const std::wstring& DocumentID) {
    frmMain_.progress().beginDocument(DocumentID);
    row_ = {.batch = BatchID_, .document = DocumentID};
    startOfDocument_ = Clock::now();
  }

  void beginPage(int page, int pageCount) override {
    frmMain_.progress().beginPage(page, pageCount);
  }

  void replace(const FileIdentity& older, const std::wstring& path) override {
    run_.written.replace(older, path);
  }

  void addFile(const std::wstring& file, int pages) override {
    row_.bytes += run_.written.addFile(file);
    row_.pages += pages;
    ++row_.files;
  }

  void endPage() override { frmMain_.progress().endPage(); }

  void endDocument(bool isExported, const std::wstring& reason) {
    row_.time = Clock::now() - startOfDocument_;
    row_.isExported = isExported;
    row_.reason = reason;
    run_.report.addDocument(row_);
    sum_.pages += row_.pages;
    sum_.files += row_.files;
    sum_.bytes += row_.bytes;
    if (!isExported) addReason(row_.document + L" 导出失败");
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
                                           run_.PageNumberMask, NewDocumentID, this)) {
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
  void deleteOutput(const ScansOfBatch& scans) {
    if (settings_.IsCreateBatchFolder && run_.outputFolder.isAt(settings_.SavePath)) {
      const bool isDeleted = deleteBatchOutputFolder(settings_.SavePath, BatchID_, scans);
      run_.written.forgetBatch();
      if (!isDeleted) return;
      sum_.pages = sum_.files = 0;
      sum_.bytes = 0;
      addReason(L"这一批的成果文件夹已删除");
    }
  }

  void tellOfReplaced() {
    const WrittenFiles::Finding& replaced = run_.written.replaced();
    if (replaced.count == 0) return;
    tell(L"替换了本次导出中已写出的 " + std::to_wstring(replaced.count) +
         L" 个同名文件，第一个原是档案【" + replaced.batch + L"】的：" + replaced.first);
  }

  void tellOfLeftovers() {
    if (!settings_.IsCreateBatchFolder) return;
    succeeds([this] {
      const auto leftovers = run_.written.notWrittenIn(BatchOutputFolder_);
      if (leftovers.count == 0) return;
      tell(L"的成果文件夹里有 " + std::to_wstring(leftovers.count) +
           L" 个文件不是这次写出的，第一个：" + leftovers.first);
    });
  }

  // A batch that fails on every pass fills the log quickly enough without its repetitions.
  void tell(const std::wstring& finding) {
    addReason(finding);
    const std::wstring line = L"RunOutPutBatch-档案【" + BatchID_ + L"】" + finding;
    if (run_.lastFinding == line) return;
    run_.lastFinding = line;
    mdlFolderAndFile::LogWrite(line, kApplicationTitle);
  }

  void addReason(const std::wstring& reason) {
    sum_.reason += (sum_.reason.empty() ? L"" : L"；") + reason;
  }

  RunHost& frmMain_;
  const ExportSettings& settings_;
  const std::wstring BatchID_;
  const std::wstring BatchOutputFolder_;
  Run& run_;
  const Clock::time_point start_ = Clock::now();
  Clock::time_point startOfDocument_{};
  ReportRow row_{}, sum_{};  // of the document under way, and of the batch
};

// True when the batch is exported.
bool exportFolder(RunHost& frmMain, const std::wstring& BatchID, Run& run) {
  if (!scanFolderExists(BatchID)) {
    const std::wstring reason = isFolderName(BatchID) ? L"没有这个文件夹：" + gBatchFolder
                                                      : L"批次名不能作文件夹名：" + BatchID;
    reportFailure(frmMain, L"档案：" + BatchID + L"处理失败【档案找不到！】...", reason);
    run.report.endBatch({.batch = BatchID, .reason = reason});
    mdlDataBase::AddBatchRemark(BatchID, L"档案扫描件找不到！");
    return false;
  }
  BatchExport batch(frmMain, BatchID, run);
  const bool isExported = batch.exportDocuments() && batch.recordSuccess();
  run.report.endBatch(batch.sum());
  if (!isExported) mdlDataBase::AddBatchRemark(BatchID, L"成果输出失败！");
  return isExported;
}

}  // namespace

void exportBatch(RunHost& frmMain, const Recordset& record, Run& run) {
  const Field& batchField = record.Fields(L"BatchID");
  const std::wstring title = batchField.isNull() ? L"" : batchField.text();
  report(frmMain, L"档案：" + title + L"开始导出...");
  try {
    const std::wstring BatchID = batchField.text();
    // For the time that is left alone, but a record without one ends the run.
    frmMain.progress().beginBatch(BatchID, record.Fields(L"PaperNum").toInt16());
    gBatchFolder = programFolder() + L"\\Batchs\\" + BatchID;
    frmMain.progress().endBatch(exportFolder(frmMain, BatchID, run));
  } catch (const std::exception& failure) {
    run.report.endBatch({.batch = title, .reason = description(failure)});
    throw;
  }
  frmMain.listProcessLog().addItem(L" ");
}

}  // namespace orvane
