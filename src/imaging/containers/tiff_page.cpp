#include "imaging/containers/tiff_page.h"

#include <algorithm>
#include <array>
#include <limits>

#include "imaging/containers/OutputFile.h"
#include "imaging/containers/TiffDirectory.h"
#include "imaging/containers/image_checks.h"
#include "imaging/containers/tiff_tags.h"

namespace orvane {
namespace {

constexpr std::uint8_t kPadding[1] = {0};

void addForm(TiffDirectory& directory, const EncodedImage& image) {
  const std::vector<std::uint16_t> bits(image.samplesPerPixel, image.bitsPerSample);
  directory.addLong(tag::kImageWidth, image.width);
  directory.addLong(tag::kImageLength, image.height);
  directory.addShorts(tag::kBitsPerSample, bits);
  directory.addShort(tag::kCompression, static_cast<std::uint16_t>(image.compression));
  directory.addShort(tag::kPhotometric, static_cast<std::uint16_t>(image.photometric));
  directory.addShort(tag::kSamplesPerPixel, image.samplesPerPixel);
  directory.addLong(tag::kRowsPerStrip, std::min(image.rowsPerStrip, image.height));
  directory.addShort(tag::kPlanarConfiguration, 1);
  if (image.horizontalPredictor) directory.addShort(tag::kPredictor, 2);
  if (image.photometric == Photometric::Palette) directory.addShorts(tag::kColorMap, image.palette);
  if (!image.iccProfile.empty()) directory.addBytes(tag::kIccProfile, image.iccProfile);
  if (image.extraSample) directory.addShort(tag::kExtraSamples, *image.extraSample);
  if (image.compression == Compression::Group4) {
    directory.addShort(tag::kFillOrder, 1);
    directory.addLong(tag::kT6Options, 0);
  }
}

// JPEG samples have the full range and lie centred (JFIF); the defaults of TIFF 6.0 say otherwise.
void addYCbCr(TiffDirectory& directory, const EncodedImage& image) {
  constexpr std::array<double, 6> kFullRange{0, 255, 128, 255, 128, 255};
  directory.addShorts(tag::kYCbCrSubSampling, image.chromaSubsampling);
  directory.addShort(tag::kYCbCrPositioning, 1);
  directory.addRationals(tag::kReferenceBlackWhite, kFullRange);
}

void addPlaceInDocument(TiffDirectory& directory, const EncodedImage& image, TiffSubfile subfile,
                        std::uint32_t number) {
  // The second value, the number of pages, is 0: unknown, for the document may still grow.
  const std::array<std::uint16_t, 2> pageNumber{static_cast<std::uint16_t>(number), 0};
  directory.addLong(tag::kNewSubfileType, static_cast<std::uint32_t>(subfile));
  directory.addRational(tag::kXResolution, image.resolution.x);
  directory.addRational(tag::kYResolution, image.resolution.y);
  directory.addShort(tag::kResolutionUnit, 2);
  directory.addShorts(tag::kPageNumber, pageNumber);
  directory.addText(tag::kSoftware, "Orvane");
}

std::uint64_t roundedUp(std::uint64_t offset) {
  return offset + offset % 2;
}

// Places the strips from `offset` on and answers where they end.
std::uint64_t placeStrips(const EncodedImage& image, std::uint64_t offset, TiffPagePlan& plan,
                          std::vector<std::uint64_t>& offsets) {
  plan.parts.reserve(2 * image.strips.size() + 3);
  const auto pad = [&] {
    if (offset % 2 != 0) plan.parts.emplace_back(kPadding);
    offset = roundedUp(offset);
  };
  pad();
  for (const Bytes& strip : image.strips) {
    offsets.push_back(offset);
    plan.parts.emplace_back(strip);
    offset += strip.size();
    pad();
  }
  return offset;
}

void requireWithinLimit(const std::wstring& path, TiffForm form, std::uint64_t end) {
  if (!form.bigTiff && end > std::numeric_limits<std::uint32_t>::max()) {
    throw fileFailure(path, "the page would take the TIFF file past 4 GiB");
  }
}

}  // namespace

TiffPagePlan planTiffPage(const std::wstring& path, TiffForm form, std::uint64_t offset,
                          const EncodedImage& image, TiffSubfile subfile, std::uint32_t number) {
  requireWholeImage(path, image);
  TiffPagePlan plan;
  std::vector<std::uint64_t> offsets;
  plan.directoryOffset = placeStrips(image, offset, plan, offsets);
  requireWithinLimit(path, form, plan.directoryOffset);

  std::vector<std::uint64_t> sizes;
  for (const Bytes& strip : image.strips) sizes.push_back(strip.size());
  TiffDirectory directory(form);
  addForm(directory, image);
  addPlaceInDocument(directory, image, subfile, number);
  if (image.photometric == Photometric::YCbCr) addYCbCr(directory, image);
  directory.addSizes(tag::kStripOffsets, offsets);
  directory.addSizes(tag::kStripByteCounts, sizes);

  plan.directory = directory.bytes(plan.directoryOffset);
  plan.parts.emplace_back(plan.directory);
  plan.nextLink = plan.directoryOffset + directory.linkPlace();
  requireWithinLimit(path, form, plan.directoryOffset + plan.directory.size());
  return plan;
}

}  // namespace orvane
