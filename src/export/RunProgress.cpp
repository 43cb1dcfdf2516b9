#include "export/RunProgress.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "foundation/program.h"

namespace orvane {
namespace {

using Seconds = std::chrono::duration<double>;

// No speed is estimated from less than this.
constexpr std::int64_t kFewestPages = 10;
constexpr auto kShortestTime = std::chrono::seconds(5);
// Documents differ, so the speed of long ago says little about the rest.
constexpr auto kRecentTime = std::chrono::seconds(60);

std::wstring number(std::int64_t value) {
  return std::to_wstring(value);
}

std::wstring exactTime(Seconds time) {
  const auto seconds = static_cast<std::int64_t>(time.count());
  if (seconds < 60) return number(seconds) + L" 秒";
  if (seconds < 3600) return number(seconds / 60) + L" 分 " + number(seconds % 60) + L" 秒";
  return number(seconds / 3600) + L" 小时 " + number(seconds / 60 % 60) + L" 分";
}

std::wstring roundTime(Seconds time) {
  const auto minutes = static_cast<std::int64_t>(std::lround(time.count() / 60));
  if (time.count() < 60) return L"不到 1 分钟";
  if (minutes < 60) return L"大约 " + number(minutes) + L" 分钟";
  return L"大约 " + number(minutes / 60) + L" 小时 " + number(minutes % 60) + L" 分";
}

}  // namespace

RunProgress::RunProgress(std::function<Clock::time_point()> now) : now_(std::move(now)) {}

void RunProgress::beginRun() {
  *this = RunProgress(now_);
  isRunning_ = true;
  start_ = now_();
  samples_ = {{start_, 0}};
}

void RunProgress::beginBatch(const std::wstring& BatchID, int PaperNum) {
  batch_ = BatchID;
  PaperNum_ = PaperNum;
  documentsOfBatch_ = pagesOfBatch_ = 0;
  document_.clear();
  pageCount_ = 0;
  isSyncing_ = false;
  if (lastFailed_ != BatchID) failuresInARow_ = 0;
}

void RunProgress::beginDocument(const std::wstring& DocumentID) {
  document_ = DocumentID;
  ++documentsOfBatch_;
  pageCount_ = 0;
}

void RunProgress::beginPage(int page, int pageCount) {
  page_ = page;
  pageCount_ = pageCount;
}

void RunProgress::endPage() {
  ++pagesOfBatch_;
  ++pagesDone_;
  const Clock::time_point now = now_();
  if (now - samples_.back().time < std::chrono::seconds(1)) return;
  samples_.push_back({now, pagesDone_});
  const auto begin = static_cast<std::ptrdiff_t>(beginOfRecentTime(now));
  samples_.erase(samples_.begin(), samples_.begin() + begin);
}

void RunProgress::beginSync() {
  isSyncing_ = true;
}

void RunProgress::noteFinding() {
  ++findings_;
}

void RunProgress::endBatch(bool isExported) {
  ++attempts_;
  if (isExported) {
    ++exportedBatches_;
    exportedDocuments_ += documentsOfBatch_;
    exportedPages_ += pagesOfBatch_;
    exportedPaperNum_ += PaperNum_;
  } else {
    lastFailed_ = batch_.value_or(L"");
    ++failuresInARow_;
  }
  batch_.reset();
}

void RunProgress::endRun(RunEnd end) {
  isRunning_ = false;
  end_ = end;
  timeUsed_ = now_() - start_;
  timeOfEnd_ = localTime("%Y-%m-%d %H:%M");
}

std::wstring RunProgress::text(const std::optional<WaitingBatches>& waiting,
                               bool isStopRequested) const {
  if (!isRunning_) return {};
  return currentStep(isStopRequested) + batchCounts(waiting) + times(waiting, isStopRequested);
}

std::wstring RunProgress::currentStep(bool isStopRequested) const {
  if (!batch_) return isStopRequested ? L"" : L"正在向数据库查询下一批档案……\n";
  std::wstring line = L"档案【" + *batch_ + L"】";
  if (isSyncing_) {
    line += L"的成果已写好，正在存到磁盘上……";
  } else if (document_.empty()) {
    line = L"正在导出" + line;
  } else {
    line = L"正在导出" + line + L"的 " + document_ + L" 件";
    if (pageCount_ > 0)
      line += L"：第 " + number(page_) + L" 页，共 " + number(pageCount_) + L" 页";
  }
  line += L"\n";
  if (failuresInARow_ == 0) return line;
  return line + L"这一批已经失败 " + number(failuresInARow_) + L" 次，正在重试。\n";
}

std::wstring RunProgress::batchCounts(const std::optional<WaitingBatches>& waiting) const {
  std::wstring line = L"已完成 " + number(exportedBatches_) + L" 批";
  if (waiting) {
    const std::int64_t others = waiting->count - (batch_ ? 1 : 0);
    line += L"，还有 " + number(std::max<std::int64_t>(others, 0)) + L" 批等待导出";
  }
  return line + L"\n";
}

std::wstring RunProgress::times(const std::optional<WaitingBatches>& waiting,
                                bool isStopRequested) const {
  const Clock::time_point now = now_();
  std::wstring line = L"已用 " + exactTime(now - start_);
  const std::optional<double> left = pagesLeft(waiting, isStopRequested);
  const Sample& begin = samples_[beginOfRecentTime(now)];
  const std::int64_t pages = pagesDone_ - begin.pages;
  const Seconds time = now - begin.time;
  if (left && pages >= kFewestPages && time >= kShortestTime) {
    line += (isStopRequested ? L"，这一批还要" : L"，全部做完还要") +
            roundTime(time / static_cast<double>(pages) * *left);
  }
  return line + L"\n";
}

std::size_t RunProgress::beginOfRecentTime(Clock::time_point now) const {
  std::size_t begin = samples_.size() - 1;
  while (begin > 0 && (now - samples_[begin].time < kRecentTime ||
                       pagesDone_ - samples_[begin].pages < kFewestPages)) {
    --begin;
  }
  return begin;
}

// `PaperNum` may count sheets of two pages. The exported batches show how many pages it stands for.
std::optional<double> RunProgress::pagesLeft(const std::optional<WaitingBatches>& waiting,
                                             bool isStopRequested) const {
  if (failuresInARow_ > 0) return std::nullopt;  // the failing batch blocks all others
  if (isStopRequested && !batch_) return std::nullopt;
  if (!isStopRequested && (!waiting || !waiting->pages)) return std::nullopt;
  const double pagesEach =
      exportedPaperNum_ > 0 && exportedPages_ > 0
          ? static_cast<double>(exportedPages_) / static_cast<double>(exportedPaperNum_)
          : 1;
  const double paperNum = isStopRequested ? PaperNum_ : static_cast<double>(*waiting->pages);
  const double left = paperNum * pagesEach - static_cast<double>(batch_ ? pagesOfBatch_ : 0);
  if (left <= 0) return std::nullopt;  // there are more pages than the table says
  return left;
}

std::wstring RunProgress::summary() const {
  if (isRunning_ || !end_) return {};
  constexpr const wchar_t* kEnds[] = {L" 全部做完", L" 按“停止”停下",
                                      L" 因出错停下（原因见日志，Ctrl+L）"};
  std::wstring lines = L"上次导出于 " + timeOfEnd_ + kEnds[static_cast<std::size_t>(*end_)] +
                       L"：\n已导出 " + number(exportedBatches_) + L" 批，" +
                       number(exportedDocuments_) + L" 件，" + number(exportedPages_) +
                       L" 页，用时 " + exactTime(timeUsed_) + L"\n";
  if (failuresInARow_ > 0) {
    lines +=
        L"⚠ 档案【" + lastFailed_ + L"】失败了 " + number(failuresInARow_) + L" 次，没有导出\n";
  }
  if (findings_ > 0) {
    lines += L"⚠ 有 " + number(findings_) +
             L" 批替换了本次导出的文件，或旁边有旧文件，见该批“档案导出成果成功！”那一行的提示\n";
  }
  return lines;
}

}  // namespace orvane
