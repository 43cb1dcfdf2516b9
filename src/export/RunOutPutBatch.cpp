#include "export/RunOutPutBatch.h"

#include "batchdb/BatchStore.h"
#include "batchdb/mdlDataBase.h"
#include "export/BatchBody.h"
#include "export/OutputNaming.h"
#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"

namespace orvane {
namespace {

constexpr const wchar_t* kBatchQuery =
    L"select top 1 * from T_BatchInfo where BatchState='完成扫描' order by  CreateDate";
constexpr int kMostFailedOpens = 3;  // in a row

bool checkOutputFolder(const std::wstring& SavePath) {
  if (SavePath.empty()) {
    windowServices().showBox(L"成果输出文件夹不能为空！", L"提醒", BoxIcon::Critical);
    return false;
  }
  if (!mdlFolderAndFile::FolderExist(SavePath)) {
    windowServices().showBox(L"成果输出文件夹不存在！", L"提醒", BoxIcon::Critical);
    return false;
  }
  return true;
}

void showRunning(RunHost& host, bool running) {
  host.enableBtnRun(!running);
  host.RefreshRunButtons();
}

// Returns false if there was no batch.
bool handleRecord(RunHost& host, const Recordset& record, Run& run) {
  if (record.RecordCount() < 1) {
    host.listProcessLog().addItem(L" 没有扫描完成的档案！");
    host.setIsStopRequested(true);
    return false;
  }
  exportBatch(host, record, run);
  return true;
}

// Every pass queries the table again, so a batch that failed is the oldest one again. A missing
// database file ends the run at once; any other failure may be temporary.
RunEnd runPasses(RunHost& host, Run& run) {
  const mdlDataBase::StopEndsLockWait stopEndsLockWait([&] { return host.IsStopRequested(); });
  Recordset record;
  bool isDone = false;
  int failedOpens = 0;
  do {
    if (mdlDataBase::OpenRecordset(record, kBatchQuery, true)) {
      failedOpens = 0;
      isDone = !handleRecord(host, record, run);
    } else {
      failedOpens = mdlDataBase::isDatabaseMissing() ? kMostFailedOpens : failedOpens + 1;
      for (int i = 0; i < 3; ++i) windowServices().yield();
    }
    windowServices().yield();
  } while (!host.IsStopRequested() && failedOpens < kMostFailedOpens);
  if (isDone) return RunEnd::Done;
  return host.IsStopRequested() ? RunEnd::Stopped : RunEnd::Failed;
}

void logRunFailure(const std::exception& failure) {
  mdlFolderAndFile::LogWrite(L"RunOutPutBatch Err:" + description(failure),
                             std::wstring(kApplicationTitle) + L"[mdlDataBase]", true);
}

// A failure ends the run, but not without the end of its records.
RunEnd runRecorded(RunHost& host, Run& run) {
  RunEnd end = RunEnd::Failed;
  try {
    end = runPasses(host, run);
  } catch (const std::exception& failure) {
    logRunFailure(failure);
  }
  run.report.endRun(run.place.left());
  run.place.endRun();
  return end;
}

}  // namespace

void RunOutPutBatch(RunHost& host) {
  bool running = false;
  RunEnd end = RunEnd::Failed;
  try {
    if (!checkOutputFolder(host.settings().SavePath)) return;
    Run run{pageNumberMask(host.txtLiuShui()), OutputPlace(host.settings().SavePath)};
    running = true;
    host.setIsStopRequested(false);
    showRunning(host, true);
    host.progress().beginRun();
    end = runRecorded(host, run);
  } catch (const std::exception& failure) {
    logRunFailure(failure);
  }
  if (!running) return;
  host.progress().endRun(end);
  showRunning(host, false);
}

}  // namespace orvane
