#pragma once

namespace orvane {

/// The longest side of a page, in points (ISO 32000-1 annex C.2).
inline constexpr double kMostPdfPoints = 14400;

}  // namespace orvane
