#include "imaging/tiff/TiffFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "imaging/tiff/TiffStructure.h"
#include "imaging/tiff/tiff_removal.h"

namespace orvane {

enum class TiffSubfile : std::uint32_t { SingleImage = 0, PageOfMany = 2 };

namespace {

struct Fraction {
  std::uint64_t numerator;
  std::uint64_t denominator;
};

// Continued fractions, until the value is exact to single precision: libtiff returns the
// resolutions of other TIFF files as single-precision numbers. For every resolution that an image
// may have (see requireWholeImage) both numbers stay below about 10^7.
Fraction nearestFraction(double value) {
  constexpr double kTolerance = 1e-7;
  Fraction last{1, 0};
  Fraction current{static_cast<std::uint64_t>(value), 1};
  double rest = value - std::floor(value);
  const auto error = [&] {
    return std::abs(
        static_cast<double>(current.numerator) / static_cast<double>(current.denominator) - value);
  };
  while (error() > kTolerance * value && rest > 0) {
    const double inverse = 1 / rest;
    const auto term = static_cast<std::uint64_t>(inverse);
    const Fraction next{term * current.numerator + last.numerator,
                        term * current.denominator + last.denominator};
    last = current;
    current = next;
    rest = inverse - std::floor(inverse);
  }
  return current;
}

/// A directory under construction: tags with their values, in any order.
class DirectoryBuilder {
 public:
  explicit DirectoryBuilder(TiffVariant variant) : variant_(variant) {}

  void addShorts(std::uint16_t tag, std::span<const std::uint16_t> values) {
    Bytes& out = add(tag, TiffType::Short, values.size());
    for (const std::uint16_t value : values) variant_.put(out, value, 2);
  }
  void addShort(std::uint16_t tag, std::uint16_t value) { addShorts(tag, std::span(&value, 1)); }
  void addLong(std::uint16_t tag, std::uint32_t value) {
    variant_.put(add(tag, TiffType::Long, 1), value, 4);
  }
  // Offsets or sizes of data in the file: LONG in a classic file, LONG8 in BigTIFF.
  void addSizes(std::uint16_t tag, std::span<const std::uint64_t> values) {
    Bytes& out = add(tag, variant_.bigTiff ? TiffType::Long8 : TiffType::Long, values.size());
    for (const std::uint64_t value : values) variant_.put(out, value, variant_.offsetBytes());
  }
  // The nearest fractions; common resolutions are exact (203.2 as 1016/5).
  void addRationals(std::uint16_t tag, std::span<const double> values) {
    Bytes& out = add(tag, TiffType::Rational, values.size());
    for (const double value : values) {
      const Fraction fraction = nearestFraction(value);
      variant_.put(out, fraction.numerator, 4);
      variant_.put(out, fraction.denominator, 4);
    }
  }
  void addRational(std::uint16_t tag, double value) { addRationals(tag, std::span(&value, 1)); }
  void addText(std::uint16_t tag, std::string_view text) {
    Bytes& out = add(tag, TiffType::Ascii, text.size() + 1);
    out.assign(text.begin(), text.end());
    out.push_back(0);
  }
  // Opaque bytes (UNDEFINED).
  void addBytes(std::uint16_t tag, ByteView bytes) {
    add(tag, TiffType::Undefined, bytes.size()).assign(bytes.begin(), bytes.end());
  }

  // The directory for a place at `offset`: sorted entries, no next directory, and after them the
  // values that do not fit in an entry, each at an even offset.
  Bytes bytes(std::uint64_t offset) const;

  // Position of the offset of the next directory, from the beginning of the directory.
  std::uint64_t linkPlace() const {
    return variant_.countBytes() + entries_.size() * variant_.entryBytes();
  }

 private:
  struct Entry {
    TiffType type;
    std::uint64_t count;
    Bytes value;
  };

  Bytes& add(std::uint16_t tag, TiffType type, std::uint64_t count) {
    return (entries_[tag] = Entry{type, count, {}}).value;
  }

  TiffVariant variant_;
  std::map<std::uint16_t, Entry> entries_;
};

Bytes DirectoryBuilder::bytes(std::uint64_t offset) const {
  Bytes directory;
  Bytes values;
  const std::uint64_t valuesOffset = offset + linkPlace() + variant_.offsetBytes();
  variant_.put(directory, entries_.size(), variant_.countBytes());
  for (const auto& [tag, entry] : entries_) {
    variant_.put(directory, tag, 2);
    variant_.put(directory, static_cast<std::uint16_t>(entry.type), 2);
    variant_.put(directory, entry.count, variant_.offsetBytes());
    if (entry.value.size() <= variant_.offsetBytes()) {
      directory.insert(directory.end(), entry.value.begin(), entry.value.end());
      directory.resize(directory.size() + variant_.offsetBytes() - entry.value.size());
    } else {
      variant_.put(directory, valuesOffset + values.size(), variant_.offsetBytes());
      values.insert(values.end(), entry.value.begin(), entry.value.end());
      values.resize((values.size() + 1) / 2 * 2);
    }
  }
  variant_.put(directory, 0, variant_.offsetBytes());
  directory.insert(directory.end(), values.begin(), values.end());
  return directory;
}

void addForm(DirectoryBuilder& directory, const EncodedImage& image) {
  const std::vector<std::uint16_t> bits(image.samplesPerPixel, image.bitsPerSample);
  directory.addLong(tag::kImageWidth, image.width);
  directory.addLong(tag::kImageLength, image.height);
  directory.addShorts(tag::kBitsPerSample, bits);
  directory.addShort(tag::kCompression, static_cast<std::uint16_t>(image.compression));
  directory.addShort(tag::kPhotometric, static_cast<std::uint16_t>(image.photometric));
  directory.addShort(tag::kSamplesPerPixel, image.samplesPerPixel);
  if (image.orientation != 1) directory.addShort(tag::kOrientation, image.orientation);
  directory.addLong(tag::kRowsPerStrip, std::min(image.rowsPerStrip, image.height));
  directory.addShort(tag::kPlanarConfiguration, 1);
  if (image.horizontalPredictor) directory.addShort(tag::kPredictor, 2);
  if (image.photometric == Photometric::Palette) directory.addShorts(tag::kColorMap, image.palette);
  if (!image.iccProfile.empty()) directory.addBytes(tag::kIccProfile, image.iccProfile);
  if (image.extraSample) directory.addShort(tag::kExtraSamples, *image.extraSample);
  if (image.compression == Compression::Group3) {
    directory.addLong(tag::kT4Options, image.twoDimensional ? 1 : 0);
  }
  if (image.compression == Compression::Group4) {
    directory.addShort(tag::kFillOrder, 1);
    directory.addLong(tag::kT6Options, 0);
  }
}

// JPEG samples have the full range and centred chroma (JFIF); the defaults of TIFF 6.0 say
// otherwise.
void addYCbCr(DirectoryBuilder& directory, const EncodedImage& image) {
  constexpr std::array<double, 6> kFullRange{0, 255, 128, 255, 128, 255};
  directory.addShorts(tag::kYCbCrSubSampling, image.chromaSubsampling);
  directory.addShort(tag::kYCbCrPositioning, 1);
  directory.addRationals(tag::kReferenceBlackWhite, kFullRange);
}

void addPlaceInDocument(DirectoryBuilder& directory, const EncodedImage& image, TiffSubfile subfile,
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

/// A page laid out for a place at the end of a TIFF file: strips, then the directory, all at even
/// offsets. `parts` points into the image and into `directory`.
struct PagePlan {
  std::vector<ByteView> parts;  ///< what is written from the planned offset on
  Bytes directory;
  std::uint64_t directoryOffset = 0;
  std::uint64_t nextLink = 0;  ///< offset of the field that links to the next directory
};

std::uint64_t roundedUp(std::uint64_t offset) {
  return offset + offset % 2;
}

// Places the strips from `offset` on and returns the offset of their end.
std::uint64_t placeStrips(const EncodedImage& image, std::uint64_t offset, PagePlan& plan,
                          std::vector<std::uint64_t>& offsets) {
  static constexpr std::uint8_t kPadding[1] = {0};
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

void requireWithinLimit(const std::wstring& path, TiffVariant variant, std::uint64_t end) {
  if (!variant.bigTiff && end > std::numeric_limits<std::uint32_t>::max()) {
    throw fileFailure(path, "the page would take the TIFF file past 4 GiB");
  }
}

// Plans page `number` (from 0) for `offset`. Throws Failure, naming `path`, for an image that does
// not fit together and for one that would pass 4 GiB in a classic TIFF.
PagePlan planPage(const std::wstring& path, TiffVariant variant, std::uint64_t offset,
                  const EncodedImage& image, TiffSubfile subfile, std::uint32_t number) {
  requireWholeImage(path, image);
  PagePlan plan;
  std::vector<std::uint64_t> offsets;
  plan.directoryOffset = placeStrips(image, offset, plan, offsets);
  requireWithinLimit(path, variant, plan.directoryOffset);

  std::vector<std::uint64_t> sizes;
  for (const Bytes& strip : image.strips) sizes.push_back(strip.size());
  DirectoryBuilder directory(variant);
  addForm(directory, image);
  addPlaceInDocument(directory, image, subfile, number);
  if (image.photometric == Photometric::YCbCr) addYCbCr(directory, image);
  directory.addSizes(tag::kStripOffsets, offsets);
  directory.addSizes(tag::kStripByteCounts, sizes);

  plan.directory = directory.bytes(plan.directoryOffset);
  plan.parts.emplace_back(plan.directory);
  plan.nextLink = plan.directoryOffset + directory.linkPlace();
  requireWithinLimit(path, variant, plan.directoryOffset + plan.directory.size());
  return plan;
}

constexpr TiffVariant kOwnVariant{.bigEndian = false, .bigTiff = false};

Bytes header(std::uint64_t firstDirectory) {
  Bytes bytes{'I', 'I'};
  kOwnVariant.put(bytes, 42, 2);
  kOwnVariant.put(bytes, firstDirectory, kOwnVariant.offsetBytes());
  return bytes;
}

Bytes link(TiffVariant variant, std::uint64_t offset) {
  Bytes bytes;
  variant.put(bytes, offset, variant.offsetBytes());
  return bytes;
}

SampleOrder sampleOrder(TiffVariant variant) {
  return variant.bigEndian ? SampleOrder::BigEndian : SampleOrder::LittleEndian;
}

// Writes the page after the end of the file, where no reader looks yet, then the one link that
// makes it part of the document. Returns the state of the written file.
FileState writeAfterEnd(OutputFile& file, const PagePlan& page, TiffVariant variant,
                        std::uint64_t size, std::uint64_t lastLink) {
  try {
    file.write(size, page.parts);
    file.write(lastLink, link(variant, page.directoryOffset));
    const FileState state = file.state();
    file.close();
    return state;
  } catch (...) {
    try {
      file.write(lastLink, link(variant, 0));
    } catch (...) {
      // The first failure is the one to report.
    }
    file.cutBack(size);
    throw;
  }
}

}  // namespace

void TiffFile::create(const std::wstring& path, const EncodedImage& image) {
  createWith(OutputFile::createAnew, path, image, TiffSubfile::SingleImage);
}

void TiffFile::createWith(OutputFile (*creation)(const std::wstring&), const std::wstring& path,
                          const EncodedImage& image, TiffSubfile subfile) {
  PagePlan page = planPage(path, kOwnVariant, kOwnVariant.headerBytes(), image, subfile, 0);
  const Bytes front = header(page.directoryOffset);
  page.parts.insert(page.parts.begin(), front);
  OutputFile file = creation(path);
  file.write(0, page.parts);
  const FileState state = file.state();
  file.close();
  end_ = {path, state, kOwnVariant, page.nextLink, 1};
}

void TiffFile::append(const std::wstring& path,
                      const std::function<EncodedImage(SampleOrder)>& encode) {
  std::optional<OutputFile> file = OutputFile::openToAppend(path);
  if (file) {
    appendTo(*file, encode(sampleOrder(readTiffVariant(*file, path))));
  } else {
    createWith(OutputFile::createExclusively, path, encode(sampleOrder(kOwnVariant)),
               TiffSubfile::PageOfMany);
  }
}

void TiffFile::appendTo(OutputFile& file, const EncodedImage& image) {
  const FileState before = file.state();
  const End end = endOf(file, before);
  if (end.pages == kMostTiffPages) {
    throw fileFailure(file.path(), "the TIFF file has no room for another page");
  }
  const PagePlan page =
      planPage(file.path(), end.variant, before.size, image, TiffSubfile::PageOfMany, end.pages);
  end_ = {};
  const FileState state = writeAfterEnd(file, page, end.variant, before.size, end.nextLink);
  end_ = {file.path(), state, end.variant, page.nextLink, end.pages + 1};
}

TiffFile::End TiffFile::endOf(const OutputFile& file, const FileState& state) const {
  if (end_.path == file.path() && end_.file == state) return end_;
  const TiffStructure structure(file, file.path(), readTiffVariant(file, file.path()));
  const std::vector<TiffDirectoryPlace> pages = structure.pages();
  const std::uint64_t nextLink =
      pages.empty() ? structure.variant().firstLink() : pages.back().nextLink;
  return {file.path(), state, structure.variant(), nextLink,
          static_cast<std::uint32_t>(pages.size())};
}

void TiffFile::deletePage(const std::wstring& path, std::int32_t page) {
  removeTiffPage(path, page);
}

}  // namespace orvane
