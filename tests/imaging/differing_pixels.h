#pragma once

#include <string>

#include "support/command.h"

namespace orvane::test {

/// How many pixels ImageMagick finds different between two pictures, seen upright; "0" for none.
/// Both are words of the shell, as `quoted` makes them; a page number in brackets may follow.
inline std::string differingPixels(const std::string& left, const std::string& right,
                                   const std::string& options = {}, const std::string& fuzz = "0") {
  return runCommand("convert -quiet " + left + " -auto-orient " + options +
                    " -depth 16 miff:- | compare -quiet -fuzz " + fuzz + " -metric AE - " + right +
                    " null:")
      .output;
}

}  // namespace orvane::test
