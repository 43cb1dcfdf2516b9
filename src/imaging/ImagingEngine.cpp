#include "imaging/ImagingEngine.h"

namespace orvane {

void ClearControl(ImagingEngine& ImgControl) {
  ImgControl.SourceFile(L"");
  ImgControl.Refresh();
  ImgControl.Picture(nullptr);
}

void ResetImagingControls(const ImagingInstances& instances) {
  ClearControl(instances.ImgControl);
  ClearControl(instances.ImgCrop);
  ClearControl(instances.ImgDelete);
  ClearControl(instances.ImgInsert);
  ClearControl(instances.ImgMerge);
  ClearControl(instances.ImgPageCount);
}

}  // namespace orvane
