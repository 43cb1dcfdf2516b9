#pragma once

#include "foundation/WindowServices.h"

namespace orvane {

/// The services of the window system, implemented with Qt.
class QtWindowServices : public WindowServices {
 public:
  void showBox(std::wstring_view text, std::wstring_view title, BoxIcon icon) override;
  void yield() override;
  void showBusyPointer(bool busy) override;

 private:
  bool busy_ = false;
};

}  // namespace orvane
