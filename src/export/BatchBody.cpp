#include "export/BatchBody.h"

#include "batchdb/mdlDataBase.h"
#include "docstore/ScanTree.h"
#include "export/BatchRecorder.h"
#include "export/OutputNaming.h"
#include "export/SaveAsDocument.h"
#include "foundation/Failure.h"
#include "foundation/FileState.h"
#include "foundation/Outcome.h"
#include "foundation/WindowServices.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"

namespace orvane {
namespace {

// Runs `step` and logs a failure.
template <typename Step>
Outcome outcomeOf(Step step) {
  try {
    step();
    return {};
  } catch (const std::exception& failure) {
    const std::wstring message = L"RunOutPutBatch-" + description(failure);
    mdlFolderAndFile::LogWrite(message, kApplicationTitle);
    return Outcome::failed(message);
  }
}

bool scanFolderExists(const std::wstring& BatchID) {
  return isFolderName(BatchID) && mdlFolderAndFile::FolderExist(gBatchFolder);
}

/// The export of one batch: walks through its documents, and decides what a failure ends.
class BatchExport : private ExportListener {
 public:
  BatchExport(RunHost& host, const std::wstring& BatchID, Run& run, BatchRecorder& recorder)
      : host_(host),
        settings_(host.settings()),
        BatchID_(BatchID),
        run_(run),
        place_(run.place),
        recorder_(recorder) {
    place_.beginFiles(settings_.SavePath, settings_.IsCreateBatchFolder);
  }

  // The first document that fails ends the export.
  bool exportDocuments() {
    const std::vector<std::wstring> subFolders =
        mdlFolderAndFile::fileSystem().SubFolders(gBatchFolder);
    const ForecastInPlace forecast(
        host_.imaging().ImgControl,
        forecastOf(subFolders, saveChoice(settings_.SaveFileType, !settings_.IsMutiPage,
                                          settings_.CompressionType, settings_.CompressionRatios)),
        [this] { recorder_.drawLines(); });
    const ScansOfBatch scans(subFolders);
    for (const std::wstring& name : subFolders) {
      // A sub-folder that cannot be examined may be a document, so it must not be skipped.
      bool isDocumentFolder = true;
      Outcome outcome = outcomeOf([&] { isDocumentFolder = isDocument(name); });
      if (!isDocumentFolder) continue;
      recorder_.beginDocument(name);
      if (outcome.ok) outcome = exportDocument(name);
      recorder_.endDocument(outcome);
      if (!outcome.ok) {
        abandonBatch(scans);
        return false;
      }
      windowServices().yield();
    }
    findReplacedFiles();
    findLeftovers();
    return true;
  }

  // An exported batch is never exported again, so before the table is updated the files must
  // survive a power failure and be in the folder that the operator chose.
  bool recordSuccess() {
    recorder_.beginSync();
    Outcome outcome = outcomeOf([this] { place_.bringToDisk(); });
    if (outcome.ok) outcome = mdlDataBase::updateBatchState(BatchID_, L"完成成果输出");
    if (outcome.ok) deliver();
    recorder_.listEnd(outcome);
    return outcome.ok;
  }

 private:
  Outcome exportDocument(const std::wstring& DocumentID) {
    Outcome outcome = outcomeOf([this] { requireOutputFolder(); });
    if (!outcome.ok) return outcome;

    const std::wstring DocOutputFolder =
        docOutputFolder(place_.batchFolder(), settings_.IsCreateDocFolder, DocumentID);
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
    outcome.take(outcomeOf([this] { place_.addFolders(); }));
    return outcome;
  }

  void requireOutputFolder() override { place_.requireFolder(); }

  void beginPage(int page, int pageCount) override { recorder_.beginPage(page, pageCount); }

  void replace(const FileIdentity& older, const std::wstring& path) override {
    place_.replace(older, path);
  }

  void addFile(const std::wstring& file, int pages) override {
    recorder_.addFile(pages, place_.addFile(file, pages));
  }

  void endPage() override { recorder_.endPage(); }

  void abandonBatch(const ScansOfBatch& scans) {
    findReplacedFiles();
    std::wstring kept;
    try {
      if (place_.abandonBatch(scans)) recorder_.outputDeleted();
    } catch (const std::exception& refusal) {
      kept = description(refusal);
      recorder_.outputKept(kept);
    }
    recorder_.listFailedDocument(kept);
  }

  void deliver() {
    const std::wstring problem = place_.deliverBatch(run_.report.file());
    if (!problem.empty()) recorder_.addFinding(L"的校验清单缺少文件：" + problem);
  }

  void findReplacedFiles() {
    const WrittenFiles::Finding& replaced = place_.replaced();
    if (replaced.count == 0) return;
    recorder_.addFinding(L"替换了本次导出中已写出的 " + std::to_wstring(replaced.count) +
                         L" 个同名文件，第一个原是档案【" + replaced.batch + L"】的：" +
                         replaced.first);
    recorder_.addAdvice(L"先写出的这些页已经没有了：请改好命名或文件夹结构，再导出一次。");
  }

  void findLeftovers() {
    outcomeOf([this] {
      const WrittenFiles::Finding leftovers = place_.leftovers();
      if (leftovers.count == 0) return;
      recorder_.addFinding(L"的成果文件夹里有 " + std::to_wstring(leftovers.count) +
                           L" 个文件不是这次写出的，第一个：" + leftovers.first);
    });
  }

  RunHost& host_;
  const ExportSettings settings_;  // a batch keeps to those that it began with
  const std::wstring BatchID_;
  Run& run_;
  OutputPlace& place_;
  BatchRecorder& recorder_;
};

// Returns true if the batch was exported.
bool exportFolder(RunHost& host, const std::wstring& BatchID, Run& run, BatchRecorder& recorder) {
  if (!scanFolderExists(BatchID)) {
    recorder.endWithoutScans(isFolderName(BatchID) ? L"没有这个文件夹：" + gBatchFolder
                                                   : L"批次名不能作文件夹名：" + BatchID);
    mdlDataBase::AddBatchRemark(BatchID, L"档案扫描件找不到！");
    return false;
  }
  BatchExport batch(host, BatchID, run, recorder);
  const bool isExported = batch.exportDocuments() && batch.recordSuccess();
  recorder.reportBatch(run.place.ofPass());
  if (!isExported) mdlDataBase::AddBatchRemark(BatchID, L"成果输出失败！");
  return isExported;
}

}  // namespace

void exportBatch(RunHost& host, const Recordset& record, Run& run) {
  const Field& batchField = record.Fields(L"BatchID");
  const std::wstring title = batchField.isNull() ? L"" : batchField.text();
  BatchRecorder recorder(host, run.report, run.loggedFindings, title);
  run.place.beginBatch(title);
  try {
    const std::wstring BatchID = batchField.text();
    // `PaperNum` only serves to estimate the remaining time, but a record without it ends the run.
    recorder.beginBatch(record.Fields(L"PaperNum").toInt16());
    gBatchFolder = programFolder() + L"\\Batchs\\" + BatchID;
    recorder.endBatch(exportFolder(host, BatchID, run, recorder));
  } catch (const std::exception& failure) {
    recorder.endWithRun(run.place.ofPass(), description(failure));
    throw;
  }
}

}  // namespace orvane
