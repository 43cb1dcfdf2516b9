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

/// An operator of the real program, who starts it in a station and uses nothing but its window.
class Operator {
 public:
  /// Starts the program of the station and waits for its window. `environment` has options and
  /// assignments for env(1). Throws NoWindow.
  explicit Operator(const ExportStation& station, const std::string& environment = {});

  void pressRun() const { click(64, 608); }
  void pressStop() const { click(184, 608); }

  /// Presses 退出, which is disabled during a run, until the program ends. Returns the exit code.
  int leave();

  /// The title in the older property, which is in the encoding of the program's locale.
  std::string olderTitle() const;

  /// Clicks the close box.
  void closeWindow() const;

  /// Closes the connection to the display, as when the X server ends.
  void endDisplay() const;

  /// Opens the folder chooser and types a folder.
  void chooseFolder(const std::string& path) const;

  /// Waits until the last line of the list is `lastLine`. Returns the whole list, copied with
  /// Ctrl+A and Ctrl+C.
  std::string listEndingWith(const std::string& lastLine) const;

  /// Waits for a message box with exactly this title.
  void waitForBox(const std::string& title) const;
  /// Waits for the box and closes it with Enter.
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
