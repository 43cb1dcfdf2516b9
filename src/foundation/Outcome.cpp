#include "foundation/Outcome.h"

#include <cstddef>

#include "foundation/plain_text.h"

namespace orvane {
namespace {

constexpr int kLinesKept = 6;

}  // namespace

Outcome Outcome::failed(const std::wstring& message) {
  Outcome outcome;
  outcome.fail(message);
  return outcome;
}

void Outcome::add(const std::wstring& message) {
  addLines(inOneLine(message));
}

void Outcome::take(const Outcome& step) {
  ok = step.ok;
  if (!step.reason.empty()) addLines(step.reason);
}

void Outcome::fail(const std::wstring& message) {
  ok = false;
  add(message);
}

void Outcome::addLines(const std::wstring& lines) {
  reason += (reason.empty() ? L"" : L"\n") + lines;
  std::size_t lineEnd = reason.size();  // from the last line up, of one too many
  for (int kept = 0; kept < kLinesKept && lineEnd != reason.npos; ++kept) {
    lineEnd = lineEnd == 0 ? reason.npos : reason.rfind(L'\n', lineEnd - 1);
  }
  if (lineEnd != reason.npos) reason.erase(0, lineEnd + 1);
}

}  // namespace orvane
