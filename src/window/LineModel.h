#pragma once

#include <QAbstractListModel>

#include "window/LineStore.h"

namespace orvane {

/// The progress lines as a view reads them.
class LineModel : public QAbstractListModel {
 public:
  using QAbstractListModel::QAbstractListModel;

  /// Adds a line at the end. True when its text is new.
  bool add(std::wstring_view line);
  void clear();
  QString line(int row) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  LineStore lines_;
};

}  // namespace orvane
