#include "export/BatchBody.h"

#include <chrono>

#include "batchdb/mdlDataBase.h"
#include "docstore/ScanTree.h"
#include "export/OutputNaming.h"
#include "export/SaveAsDocument.h"
#include "export/sync_beside_window.h"
#include "foundation/Failure.h"
#include "foundation/FileState.h"
#include "foundation/Outcome.h"
#include "foundation/WindowServices.h"
#include "foundation/durable_file.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"

namespace orvane {
namespace {

using Clock = std::chrono::steady_clock;

void report(RunHost& host, const std::wstring& line, const std::wstring& reason = {}) {
  host.listProcessLog().addItemWithReason(line, reason);
  host.listProcessLog().refresh();
}

// Short documents can take less time than redrawing the list. A line is never put off for as long
// as the next page takes: see `exportDocuments`.
void reportDocument(RunHost& host, const std::wstring& DocumentID) {
  host.listProcessLog().addItem(DocumentID + L" 导出成功！");
  host.listProcessLog().refreshInTime();
}

// Runs `step` and logs a failure.
template <typename Step>
Outcome outcomeOf(Step step) {
  Outcome outcome;
  try {
    step();
  } catch (const std::exception& failure) {
    const std::wstring message = L"RunOutPutBatch-" + description(failure);
    mdlFolderAndFile::LogWrite(message, kApplicationTitle);
    outcome.fail(message);
  }
  return outcome;
}

bool scanFolderExists(const std::wstring& BatchID) {
  return isFolderName(BatchID) && mdlFolderAndFile::FolderExist(gBatchFolder);
}

/// The export of one batch.
class BatchExport : private ExportListener {
 public:
  BatchExport(RunHost& host, const std::wstring& BatchID, Run& run)
      : host_(host),
        settings_(host.settings()),
        BatchID_(BatchID),
        BatchOutputFolder_(
            batchOutputFolder(settings_.SavePath, settings_.IsCreateBatchFolder, BatchID)),
        run_(run) {
    run_.checksums.beginBatch(settings_.SavePath, run_.written.firstOfPass());
    sum_.batch = BatchID;
  }

  // The first document that fails ends the export.
  bool exportDocuments() {
    const std::vector<std::wstring> subFolders =
        mdlFolderAndFile::fileSystem().SubFolders(gBatchFolder);
    const ForecastInPlace forecast(
        host_.imaging().ImgControl,
        forecastOf(subFolders, saveChoice(settings_.SaveFileType, !settings_.IsMutiPage,
                                          settings_.CompressionType, settings_.CompressionRatios)),
        [this] { host_.listProcessLog().refreshNow(); });
    const ScansOfBatch scans(subFolders);
    for (const std::wstring& name : subFolders) {
      // A sub-folder that cannot be examined may be a document, so it must not be skipped.
      bool isDocumentFolder = true;
      Outcome outcome = outcomeOf([&] { isDocumentFolder = isDocument(name); });
      if (!isDocumentFolder) continue;
      beginDocument(name);
      if (outcome.ok) outcome = exportDocument(name);
      endDocument(outcome);
      if (!outcome.ok) {
        run_.checksums.dropBatch();
        logReplacedFiles();
        const std::wstring kept = deleteOutput(scans);
        report(host_, name + L" 导出失败！",
               kept.empty() ? outcome.reason : outcome.reason + L"\n" + kept);
        return false;
      }
      reportDocument(host_, name);
      windowServices().yield();
    }
    logReplacedFiles();
    logLeftovers();
    return true;
  }

  bool recordSuccess() {
    host_.progress().beginSync();
    Outcome outcome = outcomeOf([this] { bringToDisk(); });
    if (outcome.ok) outcome = mdlDataBase::updateBatchState(BatchID_, L"完成成果输出");
    sum_.isExported = outcome.ok;
    if (sum_.isExported) {
      deliver();
      if (!findings_.empty()) host_.progress().noteFinding();
      report(host_, L"档案导出成果成功！", findings_);
    } else {
      addReason(outcome.reason);
      report(host_, L"档案导出数字化成果失败！", outcome.reason);
    }
    return sum_.isExported;
  }

  /// The row of the batch in the report.
  ReportRow sum() const {
    ReportRow sum = sum_;
    sum.output = run_.written.ofPass();
    sum.time = Clock::now() - start_;
    return sum;
  }

 private:
  void beginDocument(const std::wstring& DocumentID) {
    host_.progress().beginDocument(DocumentID);
    row_ = {.batch = BatchID_, .document = DocumentID};
    startOfDocument_ = Clock::now();
  }

  // The operator can have chosen another folder since the last batch.
  void requireOutputFolder() override {
    if (settings_.SavePath.empty()) throw Failure(L"成果输出文件夹不能为空！");
    if (run_.SavePath != settings_.SavePath) {
      run_.outputFolder = HeldFolder(settings_.SavePath);
      run_.SavePath = settings_.SavePath;
    }
    run_.outputFolder.requireAt(settings_.SavePath);
  }

  void beginPage(int page, int pageCount) override { host_.progress().beginPage(page, pageCount); }

  void replace(const FileIdentity& older, const std::wstring& path) override {
    const auto number = run_.written.replace(older, path);
    if (number) run_.checksums.takeOut(*number);
  }

  void addFile(const std::wstring& file, int pages) override {
    const std::uint64_t bytes = run_.written.addFile(file, pages);
    run_.checksums.add(file, bytes);
    row_.output += {pages, 1, bytes};
  }

  void endPage() override { host_.progress().endPage(); }

  void endDocument(const Outcome& outcome) {
    row_.time = Clock::now() - startOfDocument_;
    row_.isExported = outcome.ok;
    if (!outcome.ok) row_.reason = outcome.reason;
    run_.report.addDocument(row_);
    if (!outcome.ok) addReason(row_.document + L" 导出失败");
  }

  Outcome exportDocument(const std::wstring& DocumentID) {
    Outcome outcome = outcomeOf([this] { requireOutputFolder(); });
    if (!outcome.ok) return outcome;

    const std::wstring DocOutputFolder =
        docOutputFolder(BatchOutputFolder_, settings_.IsCreateDocFolder, DocumentID);
    const std::wstring NewDocumentID = host_.AutoMakeNewDocumentName(BatchID_, DocumentID);
    const ImagingInstances imaging = host_.imaging();
    ResetImagingControls(imaging);
    const mdlDocumentHelper::DocumentExport order{.ImgMerge = imaging.ImgMerge,
                                                  .ImgControl = imaging.ImgControl,
                                                  .ImgPageCount = imaging.ImgPageCount,
                                                  .DocumentID = DocumentID,
                                                  .SaveFileType = settings_.SaveFileType,
                                                  .IsPageFile = !settings_.IsMutiPage,
                                                  .CompressionType = settings_.CompressionType,
                                                  .CompressionRatios = settings_.CompressionRatios,
                                                  .SavePath = DocOutputFolder,
                                                  .SubFolderType = run_.PageNumberMask,
                                                  .NewDocumentID = NewDocumentID};
    outcome = mdlDocumentHelper::SaveAsDocument(order, *this);
    if (!outcome.ok) return outcome;
    outcome.take(outcomeOf([&] {  // a folder that was created also changed the folder above it
      run_.written.addFolder(settings_.SavePath);
      if (settings_.IsCreateBatchFolder) run_.written.addFolder(BatchOutputFolder_);
    }));
    return outcome;
  }

  // An exported batch is never exported again, so before the table is updated the files must
  // survive a power failure and be in the folder that the operator chose.
  void bringToDisk() {
    syncBesideWindow([this] { run_.written.bringToDisk(); }, [this] { run_.checksums.complete(); });
    requireOutputFolder();
  }

  void deliver() {
    const std::wstring problem = run_.checksums.deliverBatch(run_.report.file());
    if (!problem.empty()) logFinding(L"的校验清单缺少文件：" + problem);
  }

  // Deletes nothing if another folder has replaced the output folder of the run. Returns why the
  // folder of the batch is kept, if it is.
  std::wstring deleteOutput(const ScansOfBatch& scans) {
    if (!settings_.IsCreateBatchFolder || !run_.outputFolder.isAt(settings_.SavePath)) return {};
    try {
      requireNoFileOfAnotherBatch();
      bool isDeleted = false;
      const auto gone = run_.written.forgetDeleted(BatchOutputFolder_, [&] {
        isDeleted = deleteBatchOutputFolder(settings_.SavePath, BatchID_, scans);
      });
      for (const WrittenFiles::Number number : gone) run_.checksums.takeOut(number);
      if (!isDeleted) return {};
    } catch (const std::exception& refusal) {
      std::wstring kept = description(refusal);
      mdlFolderAndFile::LogWrite(L"RunOutPutBatch-" + kept, kApplicationTitle);
      addReason(kept);
      return kept;
    }
    addReason(L"这一批的成果文件夹已删除");
    return {};
  }

  // On a disk that ignores letter case, two batches can have the same folder.
  void requireNoFileOfAnotherBatch() const {
    const WrittenFiles::Finding others = run_.written.ofOtherBatchesIn(BatchOutputFolder_);
    if (others.count == 0) return;
    throw Failure(L"输出文件夹里有本次导出的档案【" + others.batch + L"】的文件，不删除：" +
                  BatchOutputFolder_);
  }

  void logReplacedFiles() {
    const WrittenFiles::Finding& replaced = run_.written.replaced();
    if (replaced.count == 0) return;
    logFinding(L"替换了本次导出中已写出的 " + std::to_wstring(replaced.count) +
               L" 个同名文件，第一个原是档案【" + replaced.batch + L"】的：" + replaced.first);
    addFinding(L"先写出的这些页已经没有了：请改好命名或文件夹结构，再导出一次。");
  }

  void logLeftovers() {
    if (!settings_.IsCreateBatchFolder) return;
    outcomeOf([this] {
      const auto leftovers = run_.written.notWrittenIn(BatchOutputFolder_);
      if (leftovers.count == 0) return;
      logFinding(L"的成果文件夹里有 " + std::to_wstring(leftovers.count) +
                 L" 个文件不是这次写出的，第一个：" + leftovers.first);
    });
  }

  // A finding repeats in every pass over a failing batch.
  void logFinding(const std::wstring& finding) {
    addReason(finding);
    addFinding(L"这一批" + finding);
    const std::wstring line = L"RunOutPutBatch-档案【" + BatchID_ + L"】" + finding;
    if (!run_.loggedFindings.insert(line).second) return;
    mdlFolderAndFile::LogWrite(line, kApplicationTitle);
  }

  void addFinding(const std::wstring& line) {
    findings_ += (findings_.empty() ? L"" : L"\n") + line;
  }

  void addReason(const std::wstring& reason) {
    sum_.reason += (sum_.reason.empty() ? L"" : L"；") + reason;
  }

  RunHost& host_;
  const ExportSettings settings_;  // a batch keeps to those that it began with
  const std::wstring BatchID_;
  const std::wstring BatchOutputFolder_;
  Run& run_;
  const Clock::time_point start_ = Clock::now();
  Clock::time_point startOfDocument_{};
  ReportRow row_{}, sum_{};  // of the current document, and of the batch
  std::wstring findings_;    // what is unusual about its files, for the operator
};

// Returns true if the batch was exported.
bool exportFolder(RunHost& host, const std::wstring& BatchID, Run& run) {
  if (!scanFolderExists(BatchID)) {
    const std::wstring reason = isFolderName(BatchID) ? L"没有这个文件夹：" + gBatchFolder
                                                      : L"批次名不能作文件夹名：" + BatchID;
    report(host, L"档案：" + BatchID + L"处理失败【档案找不到！】...", reason);
    run.report.endBatch({.batch = BatchID, .reason = reason});
    mdlDataBase::AddBatchRemark(BatchID, L"档案扫描件找不到！");
    return false;
  }
  BatchExport batch(host, BatchID, run);
  const bool isExported = batch.exportDocuments() && batch.recordSuccess();
  run.report.endBatch(batch.sum());
  if (!isExported) mdlDataBase::AddBatchRemark(BatchID, L"成果输出失败！");
  return isExported;
}

}  // namespace

void exportBatch(RunHost& host, const Recordset& record, Run& run) {
  const Field& batchField = record.Fields(L"BatchID");
  const std::wstring title = batchField.isNull() ? L"" : batchField.text();
  report(host, L"档案：" + title + L"开始导出...");
  run.written.beginBatch(title);
  try {
    const std::wstring BatchID = batchField.text();
    // `PaperNum` only serves to estimate the remaining time, but a record without it ends the run.
    host.progress().beginBatch(BatchID, record.Fields(L"PaperNum").toInt16());
    gBatchFolder = programFolder() + L"\\Batchs\\" + BatchID;
    host.progress().endBatch(exportFolder(host, BatchID, run));
  } catch (const std::exception& failure) {
    run.report.endBatch(
        {.batch = title, .output = run.written.ofPass(), .reason = description(failure)});
    throw;
  }
  host.listProcessLog().addItem(L" ");
}

}  // namespace orvane
