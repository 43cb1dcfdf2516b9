#pragma once

#include <string>

#include "export/ExportStation.h"
#include "settings/ExportSettings.h"
#include "support/Process.h"

namespace orvane::test {

/// The program ended without a window.
struct NoWindow {
  int exitCode;
};

/// The program as an operator has it: started in a station, seen and used through its window alone.
class Operator {
 public:
  /// Starts the program of the station, in an environment with some "NAME=value" more, and waits
  /// for its window. Throws NoWindow.
  explicit Operator(const ExportStation& station, const std::string& environment = {});

  void pressRun() const { click(64, 608); }
  void pressStop() const { click(184, 608); }

  /// Presses 退出, which answers between runs only, until the program has ended.
  int leave();

  /// The close box.
  void closeWindow() const;

  /// Takes the display away, as the end of an X server does.
  void endDisplay() const;

  /// Types a folder into the folder chooser.
  void chooseFolder(const std::string& path) const;

  /// The text of the list, taken with Ctrl+A and Ctrl+C once its last line is `lastLine`.
  std::string listEndingWith(const std::string& lastLine) const;

  /// Waits for a message box with exactly this title.
  void waitForBox(const std::string& title) const;
  /// Waits for it and closes it with the Enter key.
  void closeBox(const std::string& title) const;

  Process& program() { return program_; }

 private:
  void click(int x, int y) const;

  Process program_;
  std::string window_;
};

/// Writes the station's `data.ini` with these options and copies the program into the station.
void layOut(const ExportStation& station, const ExportSettings& options);

}  // namespace orvane::test
