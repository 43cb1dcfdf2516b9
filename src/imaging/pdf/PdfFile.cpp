#include "imaging/pdf/PdfFile.h"

#include <algorithm>
#include <array>
#include <deque>
#include <map>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/FileState.h"
#include "foundation/durable_file.h"
#include "imaging/pdf/PdfLayout.h"
#include "imaging/pdf/foreign_pdf.h"
#include "imaging/pdf/pdf_objects.h"
#include "imaging/pdf/pdf_reading.h"

namespace orvane {

struct PdfFile::State {
  std::wstring path;
  FileState file;
  PdfLayout layout;
};

namespace {

std::string documentId(const std::wstring& path, const EncodedImage& firstPage) {
  PdfFingerprint fingerprint;
  fingerprint.add(pdfImageDictionary(path, firstPage, 0));
  for (const Bytes& strip : firstPage.strips) fingerprint.add(strip);
  if (!firstPage.iccProfile.empty()) fingerprint.add(firstPage.iccProfile);
  return fingerprint.hex();
}

// A page added to a layout, and the bytes of its objects in the order of the file.
class PagePlan {
 public:
  // `layout` must not change afterwards. Throws Failure, naming `path`, for a page that does not
  // fit into a PDF file.
  PagePlan(const std::wstring& path, PdfLayout& layout, const EncodedImage& image)
      : layout_(layout) {
    const PdfPageSize size = pdfPageSize(path, image);
    if (layout.isGroupFull()) add(layout.closeGroup());
    const std::uint32_t profile = image.iccProfile.empty() ? 0 : addProfile(image);
    addObject(pdfImageDictionary(path, image, profile), image.strips);
    addObject(pdfPageContent(size));
    addObject(pdfPageDictionary(layout.leaves.back(), layout.nextObject(), size));
    layout.endPage();
    const std::string tail = layout.tail();
    if (layout.end + tail.size() > PdfLayout::kMostBytes) {
      throw fileFailure(path, "the page would take the PDF file past 10 digits of size");
    }
    add(tail);
  }
  PagePlan(const PagePlan&) = delete;

  const std::vector<ByteView>& parts() const { return parts_; }

 private:
  std::uint32_t addProfile(const EncodedImage& image) {
    const std::string dictionary = pdfProfileDictionary(pdfColours(image), image.iccProfile.size());
    const std::string fingerprint = PdfFingerprint().add(dictionary).add(image.iccProfile).hex();
    const std::uint32_t stored = layout_.profileObject(fingerprint);
    if (stored != 0) return stored;
    const std::uint32_t object = addObject(dictionary, std::span(&image.iccProfile, 1));
    layout_.profiles.push_back({fingerprint, object});
    return object;
  }

  // Without a stream `content` is the whole object, otherwise the dictionary of the stream.
  std::uint32_t addObject(const std::string& content, std::span<const Bytes> stream = {}) {
    const std::uint32_t number = layout_.nextObject();
    std::uint64_t size = add(beginPdfObject(number) + content);
    if (!stream.empty()) {
      size += add(kBeginPdfStream);
      for (const Bytes& part : stream) size += add(ByteView(part));
      size += add(kEndPdfStream);
    }
    size += add(kEndPdfObject);
    layout_.place(size);
    return number;
  }

  std::uint64_t add(ByteView bytes) {
    parts_.push_back(bytes);
    return bytes.size();
  }
  std::uint64_t add(std::string text) { return add(bytesOf(texts_.emplace_back(std::move(text)))); }

  PdfLayout& layout_;
  std::deque<std::string> texts_;  // a deque, because `parts_` refers to its elements
  std::vector<ByteView> parts_;
};

// The parts that fill the first `length` bytes, and the rest.
std::array<std::vector<ByteView>, 2> split(const std::vector<ByteView>& parts,
                                           std::uint64_t length) {
  std::array<std::vector<ByteView>, 2> halves;
  for (const ByteView part : parts) {
    const std::size_t front =
        static_cast<std::size_t>(std::min<std::uint64_t>(length, part.size()));
    halves[0].push_back(part.first(front));
    halves[1].push_back(part.subspan(front));
    length -= front;
  }
  return halves;
}

// Writes the new page over the tail of `before`. What comes after the old end of the file is
// written first: a full disk is noticed while the old tail is still intact. Then one short write
// replaces the tail. Returns the state of the file.
FileState overwriteTail(OutputFile& file, const PdfLayout& before, std::uint64_t size,
                        const PagePlan& plan) {
  const auto [overTail, afterEnd] = split(plan.parts(), size - before.end);
  try {
    file.write(size, afterEnd);
    file.write(before.end, overTail);
    const FileState state = file.state();
    file.close();
    return state;
  } catch (...) {
    try {
      const std::string tail = before.tail();
      file.write(before.end, bytesOf(tail));
    } catch (...) {
      // The first failure is reported.
    }
    file.cutBack(size);
    throw;
  }
}

// The position and length of the profile's object number in an image dictionary; the length is 0
// for an image without a profile.
std::pair<std::size_t, std::size_t> findProfileNumber(const std::string& dictionary) {
  constexpr std::string_view kKey = "[ /ICCBased ";
  const std::size_t found = dictionary.find(kKey);
  if (found == std::string::npos) return {0, 0};
  const std::size_t begin = found + kKey.size();
  const std::size_t end = dictionary.find_first_not_of("0123456789", begin);
  return {begin, end == std::string::npos ? 0 : end - begin};
}

// Writes the pages that are kept under new object numbers. The streams are copied. A profile is
// copied with the first kept page that uses it, which need not be the page that brought it.
class PageCopy {
 public:
  PageCopy(const OutputFile& source, OutputFile& target, const std::string& documentId,
           const std::vector<PdfPagePlace>& allPages)
      : source_(source), target_(target), layout_(PdfLayout::empty(documentId)) {
    target_.write(0, bytesOf(pdfHead().text));
    for (const PdfPagePlace& place : allPages) {
      if (!place.hasProfile()) continue;
      profiles_[std::to_string(place.profile())] = {
          {place.profile(), place.profileAt, place.imageAt}, 0};
    }
  }

  void add(const PdfPagePlace& place) {
    const PdfPageSize size = readPdfPageSize(source_, place);
    const std::string oldDictionary = readPdfImageDictionary(source_, place);
    const auto [numberAt, numberLength] = findProfileNumber(oldDictionary);
    if (layout_.isGroupFull()) {
      const std::uint64_t at = layout_.end;
      const std::string text = layout_.closeGroup();
      target_.write(at, bytesOf(text));
    }
    std::string dictionary = oldDictionary;
    if (numberLength > 0) {
      const std::uint32_t profile = copyProfile(oldDictionary.substr(numberAt, numberLength));
      dictionary.replace(numberAt, numberLength, std::to_string(profile));
    }
    copy({place.image(), place.imageAt, place.contentAt}, oldDictionary.size(), dictionary);
    copy({place.content(), place.contentAt, place.pageAt});
    const std::uint32_t page = layout_.nextObject();
    const std::string text =
        beginPdfObject(page) + pdfPageDictionary(layout_.leaves.back(), page, size) + kEndPdfObject;
    target_.write(layout_.place(text.size()), bytesOf(text));
    layout_.endPage();
  }

  void writeTail() {
    const std::string tail = layout_.tail();
    target_.write(layout_.end, bytesOf(tail));
  }

 private:
  struct Object {
    std::uint32_t number;
    std::uint64_t begin, end;
  };
  struct Profile {
    Object object;
    std::uint32_t newNumber = 0;  // 0: not copied yet
  };

  // The new number of a profile, which is copied unless it has been before.
  std::uint32_t copyProfile(const std::string& oldNumber) {
    const auto found = profiles_.find(oldNumber);
    if (found == profiles_.end()) throw fileFailure(source_.path(), "an ICC profile is missing");
    Profile& profile = found->second;
    if (profile.newNumber == 0) profile.newNumber = copy(profile.object);
    return profile.newNumber;
  }

  // Copies an object under the next number, which is returned. The first `dropped` bytes of its
  // content are replaced by `front`.
  std::uint32_t copy(const Object& object, std::size_t dropped = 0, const std::string& front = {}) {
    requirePdfObject(source_, object.number, object.begin, object.end);
    const std::uint32_t number = layout_.nextObject();
    const std::string begin = beginPdfObject(number) + front;
    const std::uint64_t rest = object.begin + beginPdfObject(object.number).size() + dropped;
    const std::uint64_t at = layout_.place(begin.size() + object.end - rest);
    target_.write(at, bytesOf(begin));
    target_.copy(source_, rest, object.end - rest, at + begin.size());
    return number;
  }

  const OutputFile& source_;
  OutputFile& target_;
  PdfLayout layout_;
  std::map<std::string, Profile> profiles_;  // by the object number, as it is written
};

// Replaces the content of a file by what `write` writes.
template <typename Write>
void replace(const OutputFile& file, Write write) {
  FileReplacement replacement(file.path());
  OutputFile content = OutputFile::createAnew(replacement.temporaryPath());
  write(content);
  content.close();
  replacement.commit();
}

}  // namespace

PdfFile::PdfFile() : state_(std::make_unique<State>()) {}
PdfFile::~PdfFile() = default;

void PdfFile::create(const std::wstring& path, const EncodedImage& image) {
  createWith(OutputFile::createAnew, path, image);
}

void PdfFile::createWith(OutputFile (*creation)(const std::wstring&), const std::wstring& path,
                         const EncodedImage& image) {
  requireWholeImage(path, image);
  PdfLayout layout = PdfLayout::empty(documentId(path, image));
  const PagePlan plan(path, layout, image);

  std::vector<ByteView> parts = plan.parts();
  parts.insert(parts.begin(), bytesOf(pdfHead().text));
  OutputFile file = creation(path);
  file.write(0, parts);
  const FileState state = file.state();
  file.close();
  *state_ = {path, state, std::move(layout)};
}

void PdfFile::append(const std::wstring& path, const EncodedImage& image) {
  std::optional<OutputFile> file = OutputFile::openToAppend(path);
  if (!file) {
    createWith(OutputFile::createExclusively, path, image);
    return;
  }
  const FileState state = file->state();
  const bool isRemembered = state_->path == path && state_->file == state;
  const PdfLayout before = isRemembered ? state_->layout : readPdfLayoutToAppend(*file);
  if (before.pages() == PdfLayout::kMostPages) {
    throw fileFailure(path, "the PDF file has no room for another page");
  }
  requireWholeImage(path, image);
  PdfLayout after = before;
  const PagePlan plan(path, after, image);
  *state_ = {};
  const FileState written = overwriteTail(*file, before, state.size, plan);
  *state_ = {path, written, std::move(after)};
}

void PdfFile::deletePage(const std::wstring& path, std::int32_t page) {
  const OutputFile file = OutputFile::openToReplace(path);
  if (const std::optional<PdfLayout> layout = readOwnPdfLayout(file)) {
    requireDeletablePage(path, page, layout->pages());
    const std::vector<PdfPagePlace> pages = readPdfPages(file, *layout);
    replace(file, [&](OutputFile& shorter) {
      PageCopy copy(file, shorter, layout->documentId, pages);
      for (std::size_t i = 0; i < pages.size(); ++i) {
        if (i + 1 != static_cast<std::size_t>(page)) copy.add(pages[i]);
      }
      copy.writeTail();
    });
  } else {
    replace(file, [&](OutputFile& shorter) { copyForeignPdfWithout(file.path(), page, shorter); });
  }
}

std::int32_t PdfFile::pageCount(const std::wstring& path) {
  const std::optional<PdfLayout> layout = readOwnPdfLayout(OutputFile::openToRead(path));
  return layout ? static_cast<std::int32_t>(layout->pages()) : foreignPdfPageCount(path);
}

bool PdfFile::isPdf(const std::wstring& path) {
  constexpr std::string_view kSignature = "%PDF-";
  try {
    std::array<std::uint8_t, kSignature.size()> front{};
    OutputFile::openToRead(path).read(0, front);
    return std::ranges::equal(front, kSignature);
  } catch (const Failure&) {
    return false;  // the reader that is tried next reports the reason
  }
}

}  // namespace orvane
