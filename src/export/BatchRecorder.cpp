#include "export/BatchRecorder.h"

#include <utility>

#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"

namespace orvane {

BatchRecorder::BatchRecorder(RunHost& host, RunReport& report,
                             std::set<std::wstring>& loggedFindings, std::wstring BatchID)
    : host_(host),
      report_(report),
      loggedFindings_(loggedFindings),
      BatchID_(std::move(BatchID)),
      sum_{.batch = BatchID_} {
  list(L"档案：" + BatchID_ + L"开始导出...");
}

void BatchRecorder::list(const std::wstring& line, const std::wstring& reason) {
  host_.listProcessLog().addItemWithReason(line, reason);
  host_.listProcessLog().refresh();
}

void BatchRecorder::beginBatch(std::int16_t PaperNum) {
  host_.progress().beginBatch(BatchID_, PaperNum);
  start_ = Clock::now();
}

void BatchRecorder::endWithoutScans(const std::wstring& reason) {
  list(L"档案：" + BatchID_ + L"处理失败【档案找不到！】...", reason);
  report_.endBatch({.batch = BatchID_, .reason = reason});
}

void BatchRecorder::endWithRun(const OutputSum& left, const std::wstring& reason) {
  report_.endBatch({.batch = BatchID_, .output = left, .reason = reason});
}

void BatchRecorder::beginDocument(const std::wstring& DocumentID) {
  host_.progress().beginDocument(DocumentID);
  row_ = {.batch = BatchID_, .document = DocumentID};
  startOfDocument_ = Clock::now();
}

void BatchRecorder::endDocument(const Outcome& outcome) {
  row_.time = Clock::now() - startOfDocument_;
  row_.isExported = outcome.ok;
  if (!outcome.ok) row_.reason = outcome.reason;
  report_.addDocument(row_);
  if (!outcome.ok) {
    addReason(row_.document + L" 导出失败");
    return;
  }
  // Short documents can take less time than redrawing the list. A line is never put off for as long
  // as the next page takes: see `drawLines`.
  host_.listProcessLog().addItem(row_.document + L" 导出成功！");
  host_.listProcessLog().refreshInTime();
}

void BatchRecorder::listFailedDocument(const std::wstring& kept) {
  list(row_.document + L" 导出失败！", kept.empty() ? row_.reason : row_.reason + L"\n" + kept);
}

void BatchRecorder::outputDeleted() {
  addReason(L"这一批的成果文件夹已删除");
}

void BatchRecorder::outputKept(const std::wstring& reason) {
  mdlFolderAndFile::LogWrite(L"RunOutPutBatch-" + reason, kApplicationTitle);
  addReason(reason);
}

// A finding repeats in every pass over a failing batch.
void BatchRecorder::addFinding(const std::wstring& finding) {
  addReason(finding);
  addAdvice(L"这一批" + finding);
  const std::wstring line = L"RunOutPutBatch-档案【" + BatchID_ + L"】" + finding;
  if (!loggedFindings_.insert(line).second) return;
  mdlFolderAndFile::LogWrite(line, kApplicationTitle);
}

void BatchRecorder::addAdvice(const std::wstring& advice) {
  findings_ += (findings_.empty() ? L"" : L"\n") + advice;
}

void BatchRecorder::listEnd(const Outcome& outcome) {
  sum_.isExported = outcome.ok;
  if (outcome.ok) {
    if (!findings_.empty()) host_.progress().noteFinding();
    list(L"档案导出成果成功！", findings_);
  } else {
    addReason(outcome.reason);
    list(L"档案导出数字化成果失败！", outcome.reason);
  }
}

void BatchRecorder::reportBatch(const OutputSum& left) {
  sum_.output = left;
  sum_.time = Clock::now() - start_;
  report_.endBatch(sum_);
}

void BatchRecorder::endBatch(bool isExported) {
  host_.progress().endBatch(isExported);
  host_.listProcessLog().addItem(L" ");
}

void BatchRecorder::addReason(const std::wstring& reason) {
  sum_.reason += (sum_.reason.empty() ? L"" : L"；") + reason;
}

}  // namespace orvane
