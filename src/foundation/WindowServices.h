#pragma once

#include <string_view>

namespace orvane {

enum class BoxIcon { None, Critical };

/// What the lower floors ask of the window system. The program entry installs one; without one a
/// box goes to standard error and the rest does nothing.
class WindowServices {
 public:
  virtual ~WindowServices() = default;

  /// Shows a modal box with one OK button; returns when it has been closed.
  virtual void showBox(std::wstring_view text, std::wstring_view title, BoxIcon icon) = 0;

  /// Handles all pending events of the window, then returns.
  virtual void yield() = 0;

  /// Shows the busy pointer, or the default one again.
  virtual void showBusyPointer(bool busy) = 0;
};

/// The installed services, or the fallback for a program without a window.
WindowServices& windowServices();

/// Installs `services` (not owned); nullptr brings the fallback back.
void installWindowServices(WindowServices* services);

}  // namespace orvane
