#include "imaging/tiff/tiff_page_plan.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "foundation/OutputFile.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/tiff/TiffForm.h"

namespace orvane {
namespace {

struct Fraction {
  std::uint64_t numerator;
  std::uint64_t denominator;
};

// Continued fractions, until the value is exact to single precision: libtiff returns the
// resolutions of other TIFF files as single-precision numbers.
Fraction nearestFraction(double value) {
  constexpr double kTolerance = 1e-7;
  constexpr std::uint64_t kLimit = std::numeric_limits<std::uint32_t>::max();
  Fraction last{1, 0};
  Fraction current{static_cast<std::uint64_t>(value), 1};
  double rest = value - std::floor(value);
  const auto error = [&] {
    return std::abs(
        static_cast<double>(current.numerator) / static_cast<double>(current.denominator) - value);
  };
  while (error() > kTolerance * value && rest > 0) {
    const double inverse = 1 / rest;
    if (inverse > static_cast<double>(kLimit)) break;
    const auto term = static_cast<std::uint64_t>(inverse);
    const Fraction next{term * current.numerator + last.numerator,
                        term * current.denominator + last.denominator};
    if (next.numerator > kLimit || next.denominator > kLimit) break;
    last = current;
    current = next;
    rest = inverse - std::floor(inverse);
  }
  return current;
}

}  // namespace

Bytes& TiffDirectory::add(std::uint16_t tag, TiffType type, std::uint64_t count) {
  return (entries_[tag] = Entry{type, count, {}}).value;
}

void TiffDirectory::addShorts(std::uint16_t tag, std::span<const std::uint16_t> values) {
  Bytes& out = add(tag, TiffType::Short, values.size());
  for (const std::uint16_t value : values) form_.put(out, value, 2);
}

void TiffDirectory::addLong(std::uint16_t tag, std::uint32_t value) {
  form_.put(add(tag, TiffType::Long, 1), value, 4);
}

void TiffDirectory::addSizes(std::uint16_t tag, std::span<const std::uint64_t> values) {
  Bytes& out = add(tag, form_.bigTiff ? TiffType::Long8 : TiffType::Long, values.size());
  for (const std::uint64_t value : values) form_.put(out, value, form_.offsetBytes());
}

void TiffDirectory::addRationals(std::uint16_t tag, std::span<const double> values) {
  Bytes& out = add(tag, TiffType::Rational, values.size());
  for (const double value : values) {
    const Fraction fraction = nearestFraction(value);
    form_.put(out, fraction.numerator, 4);
    form_.put(out, fraction.denominator, 4);
  }
}

void TiffDirectory::addText(std::uint16_t tag, std::string_view text) {
  Bytes& out = add(tag, TiffType::Ascii, text.size() + 1);
  out.assign(text.begin(), text.end());
  out.push_back(0);
}

void TiffDirectory::addBytes(std::uint16_t tag, ByteView bytes) {
  add(tag, TiffType::Undefined, bytes.size()).assign(bytes.begin(), bytes.end());
}

std::uint64_t TiffDirectory::linkPlace() const {
  return form_.countBytes() + entries_.size() * form_.entryBytes();
}

Bytes TiffDirectory::bytes(std::uint64_t offset) const {
  Bytes directory;
  Bytes values;
  const std::uint64_t valuesOffset = offset + linkPlace() + form_.offsetBytes();
  form_.put(directory, entries_.size(), form_.countBytes());
  for (const auto& [tag, entry] : entries_) {
    form_.put(directory, tag, 2);
    form_.put(directory, static_cast<std::uint16_t>(entry.type), 2);
    form_.put(directory, entry.count, form_.offsetBytes());
    if (entry.value.size() <= form_.offsetBytes()) {
      directory.insert(directory.end(), entry.value.begin(), entry.value.end());
      directory.resize(directory.size() + form_.offsetBytes() - entry.value.size());
    } else {
      form_.put(directory, valuesOffset + values.size(), form_.offsetBytes());
      values.insert(values.end(), entry.value.begin(), entry.value.end());
      values.resize((values.size() + 1) / 2 * 2);
    }
  }
  form_.put(directory, 0, form_.offsetBytes());
  directory.insert(directory.end(), values.begin(), values.end());
  return directory;
}

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

// JPEG samples have the full range and centred chroma (JFIF); the defaults of TIFF 6.0 say
// otherwise.
void addYCbCr(TiffDirectory& directory, const EncodedImage& image) {
  constexpr std::array<double, 6> kFullRange{0, 255, 128, 255, 128, 255};
  directory.addShorts(tag::kYCbCrSubSampling, image.chromaSubsampling);
  directory.addShort(tag::kYCbCrPositioning, 1);
  directory.addRationals(tag::kReferenceBlackWhite, kFullRange);
}

void addPlaceInDocument(TiffDirectory& directory, const EncodedImage& image, TiffSubfile subfile,
                        std::uint32_t number) {
  // The second value, the number of pages, is 0: unknown, because the document may still grow.
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

// Places the strips from `offset` on and returns the offset of their end.
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
