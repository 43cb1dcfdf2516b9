#include "imaging/tiff/TiffStructure.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <unordered_set>

namespace orvane {
namespace {

constexpr std::uint64_t kMostEntries = 4096;  // libtiff's own limit for a sane directory
constexpr char kPastEnd[] = "an offset points past the end";
constexpr char kEndsInChain[] = "the file ends within its list of pages";
constexpr char kDamagedChain[] = "its list of pages is damaged";

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
    : size_(file.size()),
      form_(readForm(file, size_)),
      mostEntries_(kMostEntries),
      texts_{kPastEnd, kPastEnd, "a directory with an absurd number of entries",
             "the directories run in a circle"},
      read_(
          [&file](std::uint64_t offset, std::span<std::uint8_t> into) { file.read(offset, into); }),
      failure_([&file](const std::string& reason) {
        return fileFailure(file.path(), "damaged TIFF structure: " + reason);
      }) {}

TiffStructure::TiffStructure(const TiffHandle& tiff)
    : size_(tiff.file().size()),
      form_{.bigEndian = TIFFIsBigEndian(tiff.get()) != 0,
            .bigTiff = TIFFIsBigTIFF(tiff.get()) != 0},
      mostEntries_(size_ / form_.entryBytes()),
      texts_{kEndsInChain, kDamagedChain, kDamagedChain, "its list of pages runs in a circle"},
      read_([&tiff](std::uint64_t offset, std::span<std::uint8_t> into) {
        const std::size_t count = tiff.file().readAt(offset, into.data(), into.size());
        if (count != into.size()) throw tiff.failure(kEndsInChain);
      }),
      failure_([&tiff](const std::string& reason) { return tiff.failure(reason); }) {}

bool TiffStructure::isInside(std::uint64_t offset, std::uint64_t length) const {
  return offset <= size_ && length <= size_ - offset;
}

void TiffStructure::requireInside(std::uint64_t offset, std::uint64_t length) const {
  if (!isInside(offset, length)) throw damaged(kPastEnd);
}

std::uint64_t TiffStructure::number(std::uint64_t offset, unsigned width) const {
  std::array<std::uint8_t, 8> bytes{};
  requireInside(offset, width);
  read_(offset, std::span(bytes).first(width));
  return form_.get(bytes.data(), width);
}

std::vector<std::uint64_t> TiffStructure::numbers(std::uint64_t offset, std::uint64_t count,
                                                  unsigned width) const {
  requireInside(offset, count * width);
  Bytes bytes(count * width);
  read_(offset, bytes);
  std::vector<std::uint64_t> numbers;
  numbers.reserve(count);
  for (std::uint64_t i = 0; i < count; ++i) {
    numbers.push_back(form_.get(bytes.data() + i * width, width));
  }
  return numbers;
}

void TiffStructure::forEachPage(const std::function<bool(const TiffDirectoryPlace&)>& visit) const {
  std::unordered_set<std::uint64_t> seen;
  std::uint64_t link = form_.firstLink();
  for (;;) {
    if (!isInside(link, form_.offsetBytes())) throw damaged(texts_.linkOutside);
    const std::uint64_t offset = number(link, form_.offsetBytes());
    if (offset == 0) return;
    if (!seen.insert(offset).second) throw damaged(texts_.circle);
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
  if (!isInside(offset, form_.countBytes())) throw damaged(texts_.directoryOutside);
  TiffDirectoryPlace place{.offset = offset, .entries = number(offset, form_.countBytes())};
  if (place.entries == 0 || place.entries > mostEntries_) throw damaged(texts_.entryCount);
  place.nextLink = offset + form_.countBytes() + place.entries * form_.entryBytes();
  return place;
}

std::vector<TiffEntry> TiffStructure::entries(const TiffDirectoryPlace& place) const {
  const std::uint64_t first = place.offset + form_.countBytes();
  Bytes bytes(std::min(place.entries, kMostEntries) * form_.entryBytes());
  requireInside(first, bytes.size());
  read_(first, bytes);
  std::vector<TiffEntry> entries;
  for (std::uint64_t at = 0; at < bytes.size(); at += form_.entryBytes()) {
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
  if (entry.valueBytes() > form_.offsetBytes()) {
    entry.pointerAt = entry.valueAt;
    entry.valueAt = form_.get(bytes + form_.valuePlace(), form_.offsetBytes());
  }
  return entry;
}

const TiffEntry* findEntry(const std::vector<TiffEntry>& entries, std::uint16_t tag) {
  const auto found = std::ranges::find(entries, tag, &TiffEntry::tag);
  return found == entries.end() ? nullptr : &*found;
}

}  // namespace orvane
