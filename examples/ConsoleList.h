#pragma once

#include <iostream>

#include "foundation/WindowServices.h"
#include "foundation/text_encoding.h"

namespace example {

/// The progress list of a host without a window.
class ConsoleList : public orvane::ProgressList {
 public:
  void addItem(std::wstring_view line) override { std::cout << orvane::toUtf8(line) << '\n'; }
  void clear() override {}
  void refresh() override { std::cout.flush(); }
};

}  // namespace example
