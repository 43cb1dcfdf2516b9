#include "foundation/WindowServices.h"

#include <cstdio>
#include <string>

#include "foundation/utf8.h"

namespace orvane {
namespace {

class NoWindow : public WindowServices {
 public:
  void showBox(std::wstring_view text, std::wstring_view title, BoxIcon) override {
    std::string line = toUtf8(title) + ": " + toUtf8(text) + "\n";
    for (char& c : line) {
      if (c == '\r') c = '\n';  // the line separator of the boxes
    }
    std::fputs(line.c_str(), stderr);
  }
  void yield() override {}
  void showBusyPointer(bool) override {}
};

NoWindow fallback;
WindowServices* installed = nullptr;

}  // namespace

WindowServices& windowServices() {
  return installed != nullptr ? *installed : fallback;
}

void installWindowServices(WindowServices* services) {
  installed = services;
}

}  // namespace orvane
