#include "imaging/tiff/TiffStructure.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>

namespace orvane {
namespace {

constexpr std::uint64_t kMostEntries = 4096;  // libtiff's own limit for a sane directory
constexpr char kEndsInChain[] = "the file ends within its list of pages";
constexpr char kDamagedChain[] = "its list of pages is damaged";
constexpr char kCircle[] = "its list of pages runs in a circle";

// The variant that the header states; nothing when it is not the header of a TIFF file.
std::optional<TiffVariant> findVariant(const ByteSource& file) {
  std::array<std::uint8_t, 16> header{};
  const std::size_t size = file.readAt(0, header);
  if (size < 8) return std::nullopt;
  const bool little = header[0] == 'I' && header[1] == 'I';
  const bool big = header[0] == 'M' && header[1] == 'M';
  TiffVariant variant{.bigEndian = big, .bigTiff = false};
  const std::uint64_t version = variant.get(&header[2], 2);
  variant.bigTiff = version == 43;
  const bool known =
      version == 42 || (version == 43 && size == header.size() && variant.get(&header[4], 2) == 8 &&
                        variant.get(&header[6], 2) == 0);
  return known && (little || big) ? std::optional(variant) : std::nullopt;
}

}  // namespace

TiffVariant readTiffVariant(const ByteSource& file, const std::wstring& path) {
  if (const std::optional<TiffVariant> variant = findVariant(file)) return *variant;
  throw fileFailure(path, "not a TIFF file");
}

TiffStructure::TiffStructure(const ByteSource& file, std::wstring path, TiffVariant variant)
    : file_(file), path_(std::move(path)), size_(file.size()), variant_(variant) {}

bool TiffStructure::isInside(std::uint64_t offset, std::uint64_t length) const {
  return offset <= size_ && length <= size_ - offset;
}

void TiffStructure::requireInside(std::uint64_t offset, std::uint64_t length) const {
  if (!isInside(offset, length)) throw damaged("an offset points past the end");
}

// What is read is inside the file, as it was when its size was asked for.
void TiffStructure::read(std::uint64_t offset, std::span<std::uint8_t> into) const {
  if (file_.readAt(offset, into) < into.size()) throw damagedChain(kEndsInChain);
}

Failure TiffStructure::damaged(const std::string& reason) const {
  return fileFailure(path_, "damaged TIFF structure: " + reason);
}

Failure TiffStructure::damagedChain(const char* reason) const {
  return fileFailure(path_, reason);
}

std::uint64_t TiffStructure::number(std::uint64_t offset, unsigned width) const {
  std::array<std::uint8_t, 8> bytes{};
  requireInside(offset, width);
  read(offset, std::span(bytes).first(width));
  return variant_.get(bytes.data(), width);
}

std::vector<std::uint64_t> TiffStructure::numbers(std::uint64_t offset, std::uint64_t count,
                                                  unsigned width) const {
  requireInside(offset, count * width);
  Bytes bytes(count * width);
  read(offset, bytes);
  std::vector<std::uint64_t> numbers;
  numbers.reserve(count);
  for (std::uint64_t i = 0; i < count; ++i) {
    numbers.push_back(variant_.get(bytes.data() + i * width, width));
  }
  return numbers;
}

void TiffStructure::forEachPage(const std::function<bool(const TiffDirectoryPlace&)>& visit) const {
  std::unordered_set<std::uint64_t> seen;
  std::uint64_t link = variant_.firstLink();
  for (;;) {
    if (!isInside(link, variant_.offsetBytes())) throw damagedChain(kEndsInChain);
    const std::uint64_t offset = number(link, variant_.offsetBytes());
    if (offset == 0) return;
    if (!seen.insert(offset).second) throw damagedChain(kCircle);
    const TiffDirectoryPlace page = directory(offset);
    if (!visit(page)) return;
    link = page.nextLink;
  }
}

std::vector<TiffDirectoryPlace> TiffStructure::pages() const {
  std::vector<TiffDirectoryPlace> places;
  forEachPage([&](const TiffDirectoryPlace& page) {
    if (places.size() == kMostTiffPages) throw damaged("more than 65535 directories");
    places.push_back(page);
    return true;
  });
  return places;
}

TiffDirectoryPlace TiffStructure::directory(std::uint64_t offset) const {
  if (!isInside(offset, variant_.countBytes())) throw damagedChain(kDamagedChain);
  TiffDirectoryPlace place{.offset = offset, .entries = number(offset, variant_.countBytes())};
  if (place.entries == 0 || place.entries > size_ / variant_.entryBytes()) {
    throw damagedChain(kDamagedChain);
  }
  place.nextLink = offset + variant_.countBytes() + place.entries * variant_.entryBytes();
  return place;
}

std::vector<TiffEntry> TiffStructure::entries(const TiffDirectoryPlace& place) const {
  const std::uint64_t first = place.offset + variant_.countBytes();
  if (place.entries > kMostEntries) throw damaged("a directory with an absurd number of entries");
  Bytes bytes(place.entries * variant_.entryBytes());
  requireInside(first, bytes.size());
  read(first, bytes);
  std::vector<TiffEntry> entries;
  for (std::uint64_t at = 0; at < bytes.size(); at += variant_.entryBytes()) {
    entries.push_back(entry(bytes.data() + at, first + at));
  }
  return entries;
}

TiffEntry TiffStructure::entry(const std::uint8_t* bytes, std::uint64_t offset) const {
  TiffEntry entry;
  entry.tag = static_cast<std::uint16_t>(variant_.get(bytes, 2));
  entry.type = static_cast<std::uint16_t>(variant_.get(bytes + 2, 2));
  entry.count = variant_.get(bytes + 4, variant_.offsetBytes());
  entry.valueAt = offset + variant_.valuePlace();
  if (entry.valueBytes() > variant_.offsetBytes()) {
    entry.pointerAt = entry.valueAt;
    entry.valueAt = variant_.get(bytes + variant_.valuePlace(), variant_.offsetBytes());
  }
  return entry;
}

const TiffEntry* findEntry(const std::vector<TiffEntry>& entries, std::uint16_t tag) {
  const auto found = std::ranges::find(entries, tag, &TiffEntry::tag);
  return found == entries.end() ? nullptr : &*found;
}

}  // namespace orvane
