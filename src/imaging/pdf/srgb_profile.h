#pragma once

#include <string>

namespace orvane {

/// An ICC profile (ICC.1:2001-04, version 2.1, monitor class) of sRGB, computed from
/// IEC 61966-2-1.
std::string srgbProfile();

}  // namespace orvane
