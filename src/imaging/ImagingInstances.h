#pragma once

#include "imaging/ImagingEngine.h"

namespace orvane {

/// The six instances of one host, in the order of their reset.
struct ImagingInstances {
  ImagingEngine& ImgControl;
  ImagingEngine& ImgCrop;
  ImagingEngine& ImgDelete;
  ImagingEngine& ImgInsert;
  ImagingEngine& ImgMerge;
  ImagingEngine& ImgPageCount;
};

/// Empties one instance: `SourceFile` "", `Refresh`, `Picture` nothing. Save settings stay.
void ClearControl(ImagingEngine& ImgControl);

/// `ClearControl` on all six instances. A failure inside reaches the caller.
void ResetImagingControls(const ImagingInstances& instances);

}  // namespace orvane
