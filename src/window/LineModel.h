#pragma once

#include <QAbstractListModel>

#include "window/LineStore.h"

namespace orvane {

/// The progress lines as a view reads them. The reason of a failed line is its tool tip, and its
/// description for a screen reader.
class LineModel : public QAbstractListModel {
 public:
  using QAbstractListModel::QAbstractListModel;

  /// Adds a line at the end, with a reason or none. True when they are new.
  bool add(std::wstring_view line, std::wstring_view reason = {});
  void clear();
  QString line(int row) const;
  QString reason(int row) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  LineStore lines_;
};

}  // namespace orvane
