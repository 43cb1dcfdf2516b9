#pragma once

#include <cstdint>

/// Tags of TIFF 6.0 and its registered extensions.
namespace orvane::tag {

constexpr std::uint16_t kNewSubfileType = 254;
constexpr std::uint16_t kImageWidth = 256;
constexpr std::uint16_t kImageLength = 257;
constexpr std::uint16_t kBitsPerSample = 258;
constexpr std::uint16_t kCompression = 259;
constexpr std::uint16_t kPhotometric = 262;
constexpr std::uint16_t kFillOrder = 266;
constexpr std::uint16_t kStripOffsets = 273;
constexpr std::uint16_t kSamplesPerPixel = 277;
constexpr std::uint16_t kRowsPerStrip = 278;
constexpr std::uint16_t kStripByteCounts = 279;
constexpr std::uint16_t kXResolution = 282;
constexpr std::uint16_t kYResolution = 283;
constexpr std::uint16_t kPlanarConfiguration = 284;
constexpr std::uint16_t kT6Options = 293;
constexpr std::uint16_t kResolutionUnit = 296;
constexpr std::uint16_t kPageNumber = 297;
constexpr std::uint16_t kSoftware = 305;
constexpr std::uint16_t kPredictor = 317;
constexpr std::uint16_t kColorMap = 320;
constexpr std::uint16_t kTileOffsets = 324;
constexpr std::uint16_t kTileByteCounts = 325;
constexpr std::uint16_t kSubIfds = 330;
constexpr std::uint16_t kExtraSamples = 338;
constexpr std::uint16_t kGlobalParametersIfd = 400;
constexpr std::uint16_t kJpegInterchangeFormat = 513;
constexpr std::uint16_t kJpegInterchangeFormatLength = 514;
constexpr std::uint16_t kJpegQTables = 519;
constexpr std::uint16_t kJpegDcTables = 520;
constexpr std::uint16_t kJpegAcTables = 521;
constexpr std::uint16_t kYCbCrSubSampling = 530;
constexpr std::uint16_t kYCbCrPositioning = 531;
constexpr std::uint16_t kReferenceBlackWhite = 532;
constexpr std::uint16_t kExifIfd = 34665;
constexpr std::uint16_t kIccProfile = 34675;
constexpr std::uint16_t kGpsIfd = 34853;
constexpr std::uint16_t kInteroperabilityIfd = 40965;

}  // namespace orvane::tag
