#pragma once

#include <string>

#include "foundation/Bytes.h"
#include "imaging/raster/icc_profile.h"

namespace orvane::test {

/// A sound ICC profile of the space "RGB ", "GRAY" or another one (of which only the header is
/// right), with `padding` bytes at its end that no tag refers to.
inline Bytes iccProfile(const std::string& space, std::size_t padding = 0) {
  std::string profile = srgbProfile() + std::string(padding, 'x');
  for (int i = 0; i < 4; ++i) profile[i] = static_cast<char>(profile.size() >> (24 - 8 * i));
  profile.replace(16, 4, space);
  if (space == "GRAY") profile.replace(profile.find("rTRC"), 4, "kTRC");
  return {profile.begin(), profile.end()};
}

}  // namespace orvane::test
