#include "imaging/save_steps.h"

#include <array>

#include "foundation/mdlFolderAndFile.h"

namespace orvane {

void setTarget(ImagingEngine& ImgControl, const std::wstring& sSaveFilePath) {
  if (sSaveFilePath.empty()) {
    ImgControl.TargetFile(ImgControl.SourceFile());
    return;
  }
  ImgControl.TargetFile(sSaveFilePath);
  mdlFolderAndFile::MakeFolderPath(mdlFolderAndFile::ParentPath(sSaveFilePath, L"\\"));
}

void setJpegFactors(ImagingEngine& ImgControl, std::int16_t CompressionRatios) {
  struct FactorPair {
    std::int16_t major;
    std::int16_t minor;
  };
  static constexpr std::array<FactorPair, 3> kPairs{{{20, 16}, {40, 32}, {60, 48}}};

  if (CompressionRatios < 0 || CompressionRatios >= static_cast<int>(kPairs.size())) return;
  const FactorPair& pair = kPairs[static_cast<std::size_t>(CompressionRatios)];
  ImgControl.JpegFactorMajor(pair.major);
  ImgControl.JpegFactorMinor(pair.minor);
}

void setTiffCodesByDepth(ImagingEngine& ImgControl, bool bCompression) {
  if (ImgControl.BitsPerPixel() > 1) {
    ImgControl.OutputType(kSaveTiffMultiBit);
    ImgControl.TiffCompression(kTiffJpeg);
  } else {
    ImgControl.OutputType(kSaveTiffBilevel);
    ImgControl.TiffCompression(kTiffGroup4);
  }
  if (!bCompression) {
    ImgControl.OutputType(kSaveTiff);
    ImgControl.TiffCompression(kTiffNone);
  }
}

}  // namespace orvane
