#include "window/LineModel.h"

#include "foundation/text_encoding.h"
#include "window/qt_text.h"

namespace orvane {
namespace {

constexpr std::size_t kLongestReason = 2000;
constexpr std::size_t kMostBytesWithReasons = 16U << 20;
constexpr char kBeforeReason = '\xFF';  // does not occur in UTF-8

QString fromStore(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

LineStore::LineStore() : numbers_(0, ByText{this}, ByText{this}) {}

bool LineStore::add(std::wstring_view line, std::wstring_view reason) {
  std::string text = toUtf8(line);
  if (!reason.empty() && bytes_.size() < kMostBytesWithReasons) {
    text += kBeforeReason + toUtf8(reason.substr(0, kLongestReason));
  }
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

std::string_view LineStore::line(std::size_t row) const {
  const std::string_view whole = text(lines_.at(row));
  return whole.substr(0, whole.find(kBeforeReason));
}

std::string_view LineStore::reason(std::size_t row) const {
  const std::string_view whole = text(lines_.at(row));
  const std::size_t end = whole.find(kBeforeReason);
  return end == whole.npos ? std::string_view() : whole.substr(end + 1);
}

std::string_view LineStore::text(TextNumber number) const {
  const std::size_t start = starts_[number];
  const std::size_t end = number + 1 < starts_.size() ? starts_[number + 1] : bytes_.size();
  return std::string_view(bytes_).substr(start, end - start);
}

bool LineModel::add(std::wstring_view line, std::wstring_view reason) {
  const int row = rowCount();
  beginInsertRows({}, row, row);
  const bool isNew = lines_.add(line, reason);
  endInsertRows();
  return isNew;
}

void LineModel::clear() {
  beginResetModel();
  lines_.clear();
  endResetModel();
}

QString LineModel::line(int row) const {
  return fromStore(lines_.line(static_cast<std::size_t>(row)));
}

QString LineModel::reason(int row) const {
  return fromStore(lines_.reason(static_cast<std::size_t>(row)));
}

int LineModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(lines_.size());
}

QVariant LineModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  switch (role) {
    case Qt::DisplayRole:
      return line(index.row());
    case Qt::ToolTipRole:
      return wrappedTip(reason(index.row()));
    case Qt::AccessibleDescriptionRole:
      return reason(index.row());
    default:
      return {};
  }
}

}  // namespace orvane
