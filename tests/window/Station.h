#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <gmock/gmock.h>

#include "support/RecordingWindow.h"
#include "support/TempStation.h"
#include "window/frmMain.h"

namespace orvane::test {

/// The real window in an empty program folder. The test supplies the run and the end of the
/// process.
class Station : public testing::Test {
 protected:
  template <typename Control = QWidget>
  Control& find(const char* name) {
    auto* found = dynamic_cast<Control*>(window.findChild<QWidget*>(QString::fromLatin1(name)));
    if (found == nullptr) throw std::runtime_error(name);
    return *found;
  }
  void click(const char* name) { find<QAbstractButton>(name).click(); }
  bool isEnabled(const char* name) { return find(name).isEnabled(); }

  TempStation folder;
  RecordingWindow services;
  std::function<void(RunHost&)> run = [](RunHost&) {};
  std::function<void()> endProcess = [] {};
  frmMain window{[this](RunHost& host) { run(host); }, [this] { endProcess(); }};
};

}  // namespace orvane::test
