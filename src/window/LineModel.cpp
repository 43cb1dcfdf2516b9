#include "window/LineModel.h"

namespace orvane {

bool LineModel::add(std::wstring_view line) {
  const int row = rowCount();
  beginInsertRows({}, row, row);
  const bool isNew = lines_.add(line);
  endInsertRows();
  return isNew;
}

void LineModel::clear() {
  beginResetModel();
  lines_.clear();
  endResetModel();
}

QString LineModel::line(int row) const {
  const std::string_view text = lines_.line(static_cast<std::size_t>(row));
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

int LineModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(lines_.size());
}

QVariant LineModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || role != Qt::DisplayRole) return {};
  return line(index.row());
}

}  // namespace orvane
