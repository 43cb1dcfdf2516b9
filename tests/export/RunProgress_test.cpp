#include "export/RunProgress.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <regex>

#include "batchdb/mdlDataBase.h"
#include "export/WholeRun.h"

namespace orvane {
namespace {

class ProgressOfRun : public test::WholeRun {};

TEST_F(ProgressOfRun, ReportsItsProgressAndTheReasonsOfFailedLines) {
  station.createTable({"B1", "B2", "gone"});
  station.addDocument("B1/D1", {"P1", "P2"});
  station.addDocument("B2/D1", {"P1"});
  station.addDocument("B2/D2", {"P1", "missing"});
  std::string told, last;
  host.whenYielding = [&] {
    const auto waiting = mdlDataBase::waitingBatches();
    std::string text = toUtf8(host.runProgress.text(waiting, host.IsStopRequested()));
    text = text.substr(0, text.find("已用"));
    std::replace(text.begin(), text.end(), '\n', '|');
    if (text.find("磁盘") != text.npos) return;  // the number of these yields is not fixed
    if (text != last) told += (last = text) + "\n";
  };
  host.whenLineAdded = [&](const std::string& line) {
    if (line == "D2 导出失败！" && host.reasons.size() == 2) {
      station.query("update T_BatchInfo set BatchState='' where BatchID='B2'");
    }
    if (line.starts_with("档案：gone处理失败")) host.setIsStopRequested(true);
  };
  run();
  const std::string again = "这一批已经失败 1 次，正在重试。|";
  const auto attemptAtB2 = [](const std::string& retry) {
    std::string text;
    for (const char* step : {"1 件：第 1 页，共 1", "2 件：第 1 页，共 2", "2 件：第 2 页，共 2"}) {
      text += "正在导出档案【B2】的 D" + std::string(step) + " 页|" + retry +
              "已完成 1 批，还有 1 批等待导出|\n";
    }
    return text;
  };
  EXPECT_EQ(told,
            "正在导出档案【B1】的 D1 件：第 1 页，共 2 页|已完成 0 批，还有 2 批等待导出|\n"
            "正在导出档案【B1】的 D1 件：第 2 页，共 2 页|已完成 0 批，还有 2 批等待导出|\n"
            "正在向数据库查询下一批档案……|已完成 1 批，还有 2 批等待导出|\n" +
                attemptAtB2("") + "正在向数据库查询下一批档案……|已完成 1 批，还有 2 批等待导出|\n" +
                attemptAtB2(again) +
                "正在向数据库查询下一批档案……|已完成 1 批，还有 1 批等待导出|\n"
                "已完成 1 批，还有 1 批等待导出|\n");
  EXPECT_FALSE(host.runProgress.isRunning());

  const std::string scans = toUtf8(station.path(L"Batchs\\"));
  ASSERT_EQ(host.reasons.size(), 3u);
  EXPECT_EQ(host.reasons[0],
            "mdlImageProcess-SaveImage-" + scans +
                "B2\\D2\\missing.tif: No such file or directory ImgControl.ImagError =0\n"
                "DocumentHelper-SaveAsDocument-按页保存时出错。页码：2");
  EXPECT_EQ(host.reasons[1], host.reasons[0]);
  EXPECT_EQ(host.reasons[2], "没有这个文件夹：" + scans + "gone");
}

TEST(RunProgress, TheRemainingTimeIsShownOnceItCanBeEstimated) {
  const WaitingBatches none{.count = 4, .pages = {}};
  const auto pages = [](std::int64_t sum) { return WaitingBatches{.count = 4, .pages = sum}; };
  const struct {
    int seconds, donePages, PaperNum;  // of an exported batch
    int pages;                         // exported of the next batch, whose PaperNum is 500
    std::optional<WaitingBatches> waiting;
    bool isStopRequested;
    std::string times;
  } cases[] = {
      {59, 0, 0, 0, pages(900), false, "已用 59 秒"},
      {20, 5, 5, 4, pages(900), false, "已用 20 秒"},   // too few pages
      {4, 50, 50, 50, pages(900), false, "已用 4 秒"},  // too short a time
      {50, 0, 0, 10, pages(190), false, "已用 50 秒，全部做完还要大约 15 分钟"},
      {60, 5, 5, 5, pages(14), false, "已用 1 分 0 秒，全部做完还要不到 1 分钟"},
      {3723, 1000, 500, 0, pages(1000), false, "已用 1 小时 2 分，全部做完还要大约 2 小时 4 分"},
      {100, 50, 50, 50, none, false, "已用 1 分 40 秒"},
      {100, 50, 50, 50, std::nullopt, false, "已用 1 分 40 秒"},
      {100, 0, 0, 50, pages(50), false, "已用 1 分 40 秒"},  // more pages than in the table
      {100, 0, 0, 50, none, true, "已用 1 分 40 秒，这一批还要大约 15 分钟"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    RunProgress::Clock::time_point now{};
    RunProgress progress([&] { return now; });
    progress.beginRun();
    if (c.donePages > 0) progress.beginBatch(L"B1", c.PaperNum);
    for (int i = 0; i < c.donePages; ++i) progress.endPage();
    if (c.donePages > 0) progress.endBatch(true);
    progress.beginBatch(L"B2", 500);
    for (int i = 0; i < c.pages; ++i) progress.endPage();
    now += std::chrono::seconds(c.seconds);
    const std::string text = toUtf8(progress.text(c.waiting, c.isStopRequested));
    EXPECT_EQ(text.substr(text.find("已用")), c.times + "\n");
    progress.beginSync();
    EXPECT_TRUE(toUtf8(progress.text(c.waiting, c.isStopRequested))
                    .starts_with("档案【B2】的成果已写好，正在存到磁盘上……\n"));
    progress.endBatch(false);
    progress.beginBatch(L"B2", 500);  // a failing batch: no estimate is possible
    EXPECT_EQ(toUtf8(progress.text(c.waiting, c.isStopRequested)).find("还要"), std::string::npos);
  }
}

TEST(RunProgress, TheRemainingTimeFollowsTheLastMinute) {
  RunProgress::Clock::time_point now{};
  RunProgress progress([&] { return now; });
  const WaitingBatches waiting{.count = 1, .pages = 10'000};
  progress.beginRun();
  progress.beginBatch(L"B1", 10'000);
  const auto exportPages = [&](int pages, std::chrono::milliseconds each) {
    for (int i = 0; i < pages; ++i) {
      now += each;
      progress.endPage();
    }
    const std::string text = toUtf8(progress.text(waiting, false));
    return text.substr(text.find("还要"));
  };
  using std::chrono::milliseconds;
  EXPECT_EQ(exportPages(3900, milliseconds(10)), "还要大约 1 分钟\n");
  EXPECT_EQ(exportPages(60, milliseconds(1000)), "还要大约 1 小时 41 分\n");  // 6040 pages are left
  EXPECT_EQ(exportPages(12, milliseconds(30'000)), "还要大约 50 小时 14 分\n");  // 6028
  EXPECT_EQ(exportPages(4728, milliseconds(50)), "还要大约 1 分钟\n");           // 1300
}

TEST_F(ProgressOfRun, TheSummaryTellsHowTheRunEnded) {
  const auto summary = [&] {
    return std::regex_replace(toUtf8(host.progress().summary()),
                              std::regex("[0-9-]{10} [0-9:]{5}|，用时 [0-9]+ 秒"), "");
  };
  const std::string all = "：\n已导出 2 批，3 件，4 页\n", one = "：\n已导出 1 批，2 件，3 页\n";
  station.addDocument("B1/D1", {"P"});
  station.addDocument("B1/D2", {"P", "P"});
  station.addDocument("B2/D1", {"P"});
  station.createTable({"B1", "B2"});
  EXPECT_EQ(summary(), "");
  host.whenYielding = [&] { EXPECT_EQ(summary(), "") << "there is a progress instead"; };
  run();
  EXPECT_EQ(summary(), "上次导出于  全部做完" + all);

  station.createTable({"B1", "B2"});
  host.stopAfterBatch = true;
  run();
  EXPECT_EQ(summary(), "上次导出于  按“停止”停下" + one);

  host.stopAfterBatch = false;
  station.createTable({"B1", "B2"});
  station.query("update T_BatchInfo set PaperNum = null where BatchID = 'B2'");
  run();
  EXPECT_EQ(summary(), "上次导出于  因出错停下（原因见日志，Ctrl+L）" + one);

  station.createTable({"B1", "gone"});
  int lines = 0;
  host.whenLineAdded = [&](const std::string& line) {
    if (line.starts_with("档案：gone处理失败") && ++lines == 3) host.setIsStopRequested(true);
  };
  run();
  EXPECT_EQ(summary(), "上次导出于  按“停止”停下" + one + "⚠ 档案【gone】失败了 3 次，没有导出\n");
}

}  // namespace
}  // namespace orvane
