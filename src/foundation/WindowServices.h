#pragma once

#include <string_view>

namespace orvane {

enum class BoxIcon { None, Critical };

/// What the code below the window needs of the window system. `main` installs an implementation.
/// Without one, a box is written to standard error and the other operations do nothing.
class WindowServices {
 public:
  virtual ~WindowServices() = default;

  /// Shows a modal box with one OK button and returns after it was closed.
  virtual void showBox(std::wstring_view text, std::wstring_view title, BoxIcon icon) = 0;

  /// Handles all pending events of the window, then returns.
  virtual void yield() = 0;

  /// Shows the busy pointer or the default one.
  virtual void showBusyPointer(bool busy) = 0;
};

/// The installed services, or the fallback.
WindowServices& windowServices();

/// Installs `services` (not owned); nullptr restores the fallback.
void installWindowServices(WindowServices* services);

/// The busy pointer, as long as it lives.
class BusyPointer {
 public:
  BusyPointer() { windowServices().showBusyPointer(true); }
  ~BusyPointer() { windowServices().showBusyPointer(false); }
  BusyPointer(const BusyPointer&) = delete;
  BusyPointer& operator=(const BusyPointer&) = delete;
};

/// The run's report to the operator: `listProcessLog` of the window.
class ProgressList {
 public:
  virtual ~ProgressList() = default;

  /// Adds a line at the end.
  virtual void addItem(std::wstring_view line) = 0;

  /// Adds a line at the end with what the operator can ask about it: why it failed, or what is
  /// unusual about a success. `reason` is a few lines of text, or empty. By default, only the line
  /// is added.
  virtual void addItemWithReason(std::wstring_view line, std::wstring_view /*reason*/) {
    addItem(line);
  }

  /// Removes all lines.
  virtual void clear() = 0;

  /// Redraws the list at once.
  virtual void refresh() = 0;

  /// Redraws the list at once, or, if that happened less than 16 ms ago, in the first yield after
  /// this time. For lines that can come faster than a screen shows them. Before work without
  /// yields, the caller calls `refreshNow`. By default, redraws at once.
  virtual void refreshInTime() { refresh(); }

  /// Redraws the list at once if `refreshInTime` has put that off.
  virtual void refreshNow() {}
};

}  // namespace orvane
