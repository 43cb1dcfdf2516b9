#include "export/RunProgress.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane {
namespace {

using Seconds = std::chrono::duration<double>;

// No speed is estimated from less than this.
constexpr std::int64_t kFewestPages = 10;
constexpr auto kShortestTime = std::chrono::seconds(5);

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
}

void RunProgress::beginBatch(const std::wstring& BatchID, int PaperNum) {
  batch_ = BatchID;
  PaperNum_ = PaperNum;
  pagesOfBatch_ = 0;
  document_.clear();
  pageCount_ = 0;
  isSyncing_ = false;
  if (lastFailed_ != BatchID) failuresInARow_ = 0;
}

void RunProgress::beginDocument(const std::wstring& DocumentID) {
  document_ = DocumentID;
  pageCount_ = 0;
}

void RunProgress::beginPage(int page, int pageCount) {
  page_ = page;
  pageCount_ = pageCount;
}

void RunProgress::endPage() {
  ++pagesOfBatch_;
  ++pagesDone_;
}

void RunProgress::beginSync() {
  isSyncing_ = true;
}

void RunProgress::endBatch(bool isExported) {
  ++attempts_;
  if (isExported) {
    ++exportedBatches_;
    exportedPages_ += pagesOfBatch_;
    exportedPaperNum_ += PaperNum_;
  } else {
    lastFailed_ = batch_.value_or(L"");
    ++failuresInARow_;
  }
  batch_.reset();
}

void RunProgress::endRun() {
  isRunning_ = false;
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
  const Seconds used = now_() - start_;
  std::wstring line = L"已用 " + exactTime(used);
  const std::optional<double> left = pagesLeft(waiting, isStopRequested);
  if (left && pagesDone_ >= kFewestPages && used >= kShortestTime) {
    line += (isStopRequested ? L"，这一批还要" : L"，全部做完还要") +
            roundTime(used / static_cast<double>(pagesDone_) * *left);
  }
  return line + L"\n";
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

}  // namespace orvane
