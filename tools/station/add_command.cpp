#include "add_command.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string_view>
#include <unistd.h>

#include "foundation/Failure.h"
#include "foundation/paths.h"
#include "foundation/plain_text.h"
#include "foundation/program.h"
#include "foundation/text_encoding.h"
#include "intake/IntakePlan.h"
#include "intake/NewBatch.h"
#include "printing.h"

namespace orvane::station {
namespace {

using Clock = std::chrono::steady_clock;

std::atomic<bool> isInterrupted = false;

/// A line on a terminal that tells how far the work is.
class ProgressLine {
 public:
  explicit ProgressLine(const IntakePlan& plan) : plan_(plan) {}
  ~ProgressLine() {
    if (isTerminal_) std::fputs("\r\033[K", stderr);
  }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  void show(const IntakeProgress& done) const {
    if (!isTerminal_ || done.pages == 0) return;
    const double seconds = std::chrono::duration<double>(Clock::now() - begin_).count();
    const double left =
        seconds / static_cast<double>(done.pages) * static_cast<double>(plan_.pages - done.pages);
    std::fprintf(
        stderr, "\r%s\033[K",
        toUtf8(std::to_wstring(done.documents) + L"/" + std::to_wstring(plan_.documents.size()) +
               L" 件，" + std::to_wstring(done.pages) + L"/" + std::to_wstring(plan_.pages) +
               L" 页，每秒 " +
               std::to_wstring(static_cast<int>(static_cast<double>(done.bytes) / 1e6 /
                                                std::max(seconds, 0.001))) +
               L" MB，还要 " + std::to_wstring(static_cast<int>(left) + 1) + L" 秒")
            .c_str());
  }

 private:
  const IntakePlan& plan_;
  const bool isTerminal_ = isatty(STDERR_FILENO) == 1;
  const Clock::time_point begin_ = Clock::now();
};

template <typename Work>
IntakeProgress withProgress(const IntakePlan& plan, Work work) {
  std::signal(SIGINT, [](int) { isInterrupted = true; });
  std::signal(SIGTERM, [](int) { isInterrupted = true; });
  const ProgressLine line(plan);
  return work([&](const IntakeProgress& done) {
    if (isInterrupted) throw Failure(L"已取消，什么也没有留下");
    line.show(done);
  });
}

// With or without a time.
bool isDate(std::wstring_view text) {
  return hasShape(text, L"0000-00-00") || hasShape(text, L"0000-00-00 00:00") ||
         hasShape(text, L"0000-00-00 00:00:00");
}

}  // namespace

std::optional<AddRequest> addRequest(const std::vector<std::wstring>& words) {
  if (words.empty() || words[0] != L"add") return std::nullopt;
  AddRequest request;
  for (std::size_t i = 1; i < words.size(); ++i) {
    const std::wstring& word = words[i];
    if (word == L"--dry-run") {
      request.isDryRun = true;
    } else if ((word == L"--name" || word == L"--date") && i + 1 < words.size()) {
      (word == L"--name" ? request.name : request.date) = words[++i];
    } else if (word.starts_with(L"--") || !request.folder.empty()) {
      return std::nullopt;
    } else {
      request.folder = word;
    }
  }
  if (!request.date.empty() && !isDate(request.date)) return std::nullopt;
  if (request.folder.empty()) return std::nullopt;
  return request;
}

int add(BatchStore& store, const AddRequest& request) {
  const std::filesystem::path folder = std::filesystem::absolute(toUtf8(request.folder));
  const IntakePlan plan = planIntake(store, pathText(folder), request.name);
  for (const std::wstring& line : linesOf(plan)) print(line);
  if (!plan.refusals.empty()) return 1;
  if (request.isDryRun) return 0;

  const auto begin = Clock::now();
  const std::wstring date = request.date.empty() ? timeStamp() : request.date;
  const IntakeProgress done = withProgress(
      plan, [&](const IntakeObserver& observe) { return carryOut(store, plan, date, observe); });
  const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
  print(L"已登记：" + plan.batch + L"（" + figures(done.documents, done.pages, done.bytes) + L"，" +
        std::to_wstring(static_cast<int>(seconds + 0.5)) + L" 秒）");
  return 0;
}

}  // namespace orvane::station
