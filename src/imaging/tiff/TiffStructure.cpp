#include "imaging/tiff/TiffStructure.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <unordered_set>

namespace orvane {
namespace {

constexpr std::uint64_t kMostEntries = 4096;  // libtiff's own limit for a sane directory

// The form that the header states; nothing when it is not the header of a TIFF file.
std::optional<TiffForm> findForm(const OutputFile& file, std::uint64_t size) {
  std::array<std::uint8_t, 16> header{};
  if (size < 8) return std::nullopt;
  file.read(0, std::span(header).first(std::min<std::uint64_t>(size, header.size())));
  const bool little = header[0] == 'I' && header[1] == 'I';
  const bool big = header[0] == 'M' && header[1] == 'M';
  TiffForm form{.bigEndian = big, .bigTiff = false};
  const std::uint64_t version = form.get(&header[2], 2);
  form.bigTiff = version == 43;
  const bool known =
      version == 42 ||
      (version == 43 && size >= 16 && form.get(&header[4], 2) == 8 && form.get(&header[6], 2) == 0);
  return known && (little || big) ? std::optional(form) : std::nullopt;
}

TiffForm readForm(const OutputFile& file, std::uint64_t size) {
  if (const std::optional<TiffForm> form = findForm(file, size)) return *form;
  throw fileFailure(file.path(), "not a TIFF file");
}

}  // namespace

TiffStructure::TiffStructure(const OutputFile& file)
    : file_(file), size_(file.size()), form_(readForm(file, size_)) {}

Failure TiffStructure::damaged(const char* reason) const {
  return fileFailure(file_.path(), std::string("damaged TIFF structure: ") + reason);
}

void TiffStructure::requireInside(std::uint64_t offset, std::uint64_t length) const {
  if (offset > size_ || length > size_ - offset) throw damaged("an offset points past the end");
}

std::uint64_t TiffStructure::number(std::uint64_t offset, unsigned width) const {
  std::array<std::uint8_t, 8> bytes{};
  requireInside(offset, width);
  file_.read(offset, std::span(bytes).first(width));
  return form_.get(bytes.data(), width);
}

std::vector<std::uint64_t> TiffStructure::numbers(std::uint64_t offset, std::uint64_t count,
                                                  unsigned width) const {
  requireInside(offset, count * width);
  Bytes bytes(count * width);
  file_.read(offset, bytes);
  std::vector<std::uint64_t> numbers;
  numbers.reserve(count);
  for (std::uint64_t i = 0; i < count; ++i) {
    numbers.push_back(form_.get(bytes.data() + i * width, width));
  }
  return numbers;
}

TiffDirectoryPlace TiffStructure::directory(std::uint64_t offset) const {
  TiffDirectoryPlace place{.offset = offset, .entries = number(offset, form_.countBytes())};
  if (place.entries == 0 || place.entries > kMostEntries) {
    throw damaged("a directory with an absurd number of entries");
  }
  place.nextLink = offset + form_.countBytes() + place.entries * form_.entryBytes();
  requireInside(place.nextLink, form_.offsetBytes());
  return place;
}

std::vector<TiffDirectoryPlace> TiffStructure::pages() const {
  std::vector<TiffDirectoryPlace> places;
  std::unordered_set<std::uint64_t> seen;
  std::uint64_t offset = number(form_.firstLink(), form_.offsetBytes());
  while (offset != 0) {
    if (!seen.insert(offset).second) throw damaged("the directories run in a circle");
    if (places.size() == kMostTiffPages) throw damaged("more than 65535 directories");
    places.push_back(directory(offset));
    offset = number(places.back().nextLink, form_.offsetBytes());
  }
  return places;
}

std::vector<TiffEntry> TiffStructure::entries(const TiffDirectoryPlace& place) const {
  const std::uint64_t first = place.offset + form_.countBytes();
  Bytes bytes(place.entries * form_.entryBytes());
  file_.read(first, bytes);
  std::vector<TiffEntry> entries;
  for (std::uint64_t i = 0; i < place.entries; ++i) {
    const std::uint64_t at = i * form_.entryBytes();
    entries.push_back(entry(bytes.data() + at, first + at));
  }
  return entries;
}

TiffEntry TiffStructure::entry(const std::uint8_t* bytes, std::uint64_t offset) const {
  TiffEntry entry;
  entry.tag = static_cast<std::uint16_t>(form_.get(bytes, 2));
  entry.type = static_cast<std::uint16_t>(form_.get(bytes + 2, 2));
  entry.count = form_.get(bytes + 4, form_.offsetBytes());
  entry.valueAt = offset + form_.valuePlace();
  const unsigned width = tiffTypeBytes(entry.type);
  if (width != 0 && entry.count > size_ / width) throw damaged("a field larger than the file");
  if (entry.valueBytes() > form_.offsetBytes()) {
    entry.pointerAt = entry.valueAt;
    entry.valueAt = form_.get(bytes + form_.valuePlace(), form_.offsetBytes());
    requireInside(entry.valueAt, entry.valueBytes());
  }
  return entry;
}

}  // namespace orvane
