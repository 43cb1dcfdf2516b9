#pragma once

#include <QComboBox>
#include <QDialog>
#include <QPlainTextEdit>
#include <string>
#include <vector>

namespace orvane {

/// A read-only window on the files of the folder `Log`: the logs of the days, or the reports of the
/// runs. A drop-down list names them, newest first. The text opens at its end, where the newest
/// entry is. Only the end of a long file is shown. F5 reads the folder and the file again.
class LogWindow : public QDialog {
 public:
  enum class Kind { Logs, Reports };

  /// Shows the newest file in the window of this kind, which is created at first use. Does not
  /// block; `owner` owns the window.
  static void open(QWidget& owner, Kind kind);

 private:
  LogWindow(QWidget& owner, Kind kind);

  /// Lists the files again and selects `file`, or the newest one if it is not there.
  void listFiles(const std::wstring& file);
  void showFile();
  std::wstring selectedFile() const;

  Kind kind_;
  std::vector<std::wstring> files_;
  QString failure_;  ///< why the folder could not be listed
  QComboBox* names_;
  QPlainTextEdit* text_;
};

}  // namespace orvane
