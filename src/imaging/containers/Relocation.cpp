#include "imaging/containers/Relocation.h"

#include <algorithm>

namespace orvane {
namespace {

std::uint64_t endOf(const Relocation::Range& range) {
  return range.from + range.length;
}

}  // namespace

void Relocation::keep(std::uint64_t from, std::uint64_t length) {
  if (length == 0) return;
  // A byte of padding between two strips is not worth a range of its own.
  if (!ranges_.empty()) {
    Range& last = ranges_.back();
    if (from >= last.from && from <= endOf(last) + 1) {
      last.length = std::max(endOf(last), from + length) - last.from;
      return;
    }
  }
  ranges_.push_back({from, length, 0});
}

void Relocation::arrange(std::uint64_t alignment) {
  std::vector<Range> marked;
  marked.swap(ranges_);
  std::ranges::sort(marked, {}, &Range::from);
  for (const Range& range : marked) keep(range.from, range.length);

  std::uint64_t end = 0;
  for (Range& range : ranges_) {
    const std::uint64_t gap = range.from - end;
    range.to = range.from - gap / alignment * alignment;
    end = range.to + range.length;
  }
}

std::optional<std::uint64_t> Relocation::moved(std::uint64_t offset) const {
  const auto behind = std::ranges::upper_bound(ranges_, offset, {}, &Range::from);
  if (behind == ranges_.begin()) return std::nullopt;
  const Range& range = *std::prev(behind);
  if (offset >= endOf(range)) return std::nullopt;
  return range.to + (offset - range.from);
}

}  // namespace orvane
