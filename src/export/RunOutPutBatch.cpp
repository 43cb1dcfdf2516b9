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
constexpr int kFailedOpensToEnd = 3;

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

void showRunning(RunHost& frmMain, bool running) {
  frmMain.enableBtnRun(!running);
  frmMain.RefreshRunButtons();
}

void handleAnswer(RunHost& frmMain, const Recordset& record, Run& run) {
  if (record.RecordCount() < 1) {
    frmMain.listProcessLog().addItem(L" 没有扫描完成的档案！");
    frmMain.setIsStopRequested(true);
    return;
  }
  exportBatch(frmMain, record, run);
}

// Every pass asks the table again: a batch that failed is the oldest one again. A database that is
// not there will not come back while boxes are closed; other failures may pass.
void runPasses(RunHost& frmMain, Run& run) {
  const mdlDataBase::StopEndsLockWait stopEndsLockWait([&] { return frmMain.IsStopRequested(); });
  Recordset record;
  int failedOpens = 0;
  do {
    if (mdlDataBase::OpenRecordset(record, kBatchQuery, true)) {
      failedOpens = 0;
      handleAnswer(frmMain, record, run);
    } else {
      failedOpens = mdlDataBase::isDatabaseMissing() ? kFailedOpensToEnd : failedOpens + 1;
      for (int i = 0; i < 3; ++i) windowServices().yield();
    }
    windowServices().yield();
  } while (!frmMain.IsStopRequested() && failedOpens < kFailedOpensToEnd);
}

}  // namespace

void RunOutPutBatch(RunHost& frmMain) {
  bool running = false;
  try {
    if (!checkOutputFolder(frmMain.settings().SavePath)) return;
    Run run{pageNumberMask(frmMain.txtLiuShui()), HeldFolder(frmMain.settings().SavePath)};
    running = true;
    frmMain.setIsStopRequested(false);
    showRunning(frmMain, true);
    frmMain.progress().beginRun();
    runPasses(frmMain, run);
    run.report.endRun();
  } catch (const std::exception& failure) {
    mdlFolderAndFile::LogWrite(L"RunOutPutBatch Err:" + description(failure),
                               std::wstring(kApplicationTitle) + L"[mdlDataBase]", true);
  }
  if (!running) return;
  frmMain.progress().endRun();
  showRunning(frmMain, false);
}

}  // namespace orvane
