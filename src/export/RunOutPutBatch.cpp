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

/// Ends the records of a run, also if it throws.
class RecordsOfRun {
 public:
  explicit RecordsOfRun(Run& run) : run_(run) {}
  ~RecordsOfRun() {
    run_.report.endRun(run_.written.left());
    run_.checksums.endRun();
  }
  RecordsOfRun(const RecordsOfRun&) = delete;
  RecordsOfRun& operator=(const RecordsOfRun&) = delete;

 private:
  Run& run_;
};

void handleRecord(RunHost& host, const Recordset& record, Run& run) {
  if (record.RecordCount() < 1) {
    host.listProcessLog().addItem(L" 没有扫描完成的档案！");
    host.setIsStopRequested(true);
    return;
  }
  exportBatch(host, record, run);
}

// Every pass queries the table again, so a batch that failed is the oldest one again. A missing
// database file ends the run at once; any other failure may be temporary.
void runPasses(RunHost& host, Run& run) {
  const mdlDataBase::StopEndsLockWait stopEndsLockWait([&] { return host.IsStopRequested(); });
  Recordset record;
  int failedOpens = 0;
  do {
    if (mdlDataBase::OpenRecordset(record, kBatchQuery, true)) {
      failedOpens = 0;
      handleRecord(host, record, run);
    } else {
      failedOpens = mdlDataBase::isDatabaseMissing() ? kMostFailedOpens : failedOpens + 1;
      for (int i = 0; i < 3; ++i) windowServices().yield();
    }
    windowServices().yield();
  } while (!host.IsStopRequested() && failedOpens < kMostFailedOpens);
}

}  // namespace

void RunOutPutBatch(RunHost& host) {
  bool running = false;
  try {
    if (!checkOutputFolder(host.settings().SavePath)) return;
    const std::wstring SavePath = host.settings().SavePath;
    Run run{pageNumberMask(host.txtLiuShui()), SavePath, HeldFolder(SavePath)};
    running = true;
    host.setIsStopRequested(false);
    showRunning(host, true);
    host.progress().beginRun();
    const RecordsOfRun records(run);
    runPasses(host, run);
  } catch (const std::exception& failure) {
    mdlFolderAndFile::LogWrite(L"RunOutPutBatch Err:" + description(failure),
                               std::wstring(kApplicationTitle) + L"[mdlDataBase]", true);
  }
  if (!running) return;
  host.progress().endRun();
  showRunning(host, false);
}

}  // namespace orvane
