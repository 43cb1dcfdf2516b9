#pragma once

#include <cstdint>
#include <string>

/// The settings of the page clean-up. A host sets them before it calls `ImageDocProcess`; nothing
/// in the program does. With the start values a page is only filtered and saved anew.
namespace orvane::mdlBatchAutoProcessStep {

/// "向右旋转90度", "向左旋转90度", "向右旋转180度" or "向左旋转180度"; any other text turns
/// nothing.
inline std::wstring AutoRotate;

/// Straighten the page.
inline bool AutoDeskew = false;

/// Pixels cut off at each edge of the straightened page.
struct CropMargins {
  bool Used = false;
  std::int16_t Left = 0;
  std::int16_t Up = 0;
  std::int16_t Right = 0;
  std::int16_t Bottom = 0;
};
inline CropMargins AutoCrop;

}  // namespace orvane::mdlBatchAutoProcessStep
