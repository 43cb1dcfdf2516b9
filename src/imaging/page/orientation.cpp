#include "imaging/page/orientation.h"

#include <utility>

#include "imaging/page/mirror.h"
#include "imaging/page/transpose.h"

namespace orvane {
namespace {

/// A TIFF orientation as steps, in their order. Rows are mirrored before a transposition where
/// columns would have to be after it: whole rows are cheaper to move.
struct Steps {
  bool mirrorRowsFirst;
  bool transpose;
  bool mirrorColumns;
  bool mirrorRows;
};

constexpr Steps kSteps[] = {
    {false, false, false, false},  // 1: row 0 top, column 0 left
    {false, false, true, false},   // 2: top, right
    {false, false, true, true},    // 3: bottom, right
    {false, false, false, true},   // 4: bottom, left
    {false, true, false, false},   // 5: left, top
    {true, true, false, false},    // 6: right, top
    {true, true, false, true},     // 7: right, bottom
    {false, true, false, true},    // 8: left, bottom
};

}  // namespace

Raster toUpright(Raster raster, std::uint16_t orientation) {
  if (orientation < 1 || orientation > 8) return raster;
  const Steps& steps = kSteps[orientation - 1];
  if (steps.mirrorRowsFirst) mirrorRows(raster);
  if (steps.transpose) raster = transposed(raster);
  if (steps.mirrorColumns) mirrorColumns(raster);
  if (steps.mirrorRows) mirrorRows(raster);
  return raster;
}

Raster rotateQuarters(Raster raster, int quarterTurns) {
  static constexpr std::uint16_t kOrientationAfterLeftTurns[] = {1, 8, 3, 6};
  return toUpright(std::move(raster), kOrientationAfterLeftTurns[(quarterTurns % 4 + 4) % 4]);
}

}  // namespace orvane
