#include "window/LineStore.h"

#include "foundation/utf8_text.h"

namespace orvane {

LineStore::LineStore() : numbers_(0, ByText{this}, ByText{this}) {}

bool LineStore::add(std::wstring_view line) {
  const std::string text = toUtf8(line);
  if (const auto known = numbers_.find(std::string_view(text)); known != numbers_.end()) {
    lines_.push_back(*known);
    return false;
  }
  const auto number = static_cast<TextNumber>(starts_.size());
  starts_.push_back(bytes_.size());
  bytes_ += text;
  numbers_.insert(number);
  lines_.push_back(number);
  return true;
}

void LineStore::clear() {
  numbers_.clear();
  lines_ = {};
  starts_ = {};
  bytes_ = {};
}

std::string_view LineStore::text(TextNumber number) const {
  const std::size_t start = starts_[number];
  const std::size_t end = number + 1 < starts_.size() ? starts_[number + 1] : bytes_.size();
  return std::string_view(bytes_).substr(start, end - start);
}

}  // namespace orvane
