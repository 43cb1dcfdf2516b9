#include "window/LineModel.h"

#include "window/qt_text.h"

namespace orvane {
namespace {

QString fromStore(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

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
