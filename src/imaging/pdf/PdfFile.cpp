#include "imaging/pdf/PdfFile.h"

#include <array>
#include <deque>
#include <optional>
#include <span>
#include <utility>

#include "foundation/OutputFile.h"
#include "imaging/pdf/Fingerprint.h"
#include "imaging/pdf/PdfLayout.h"
#include "imaging/pdf/pdf_head.h"
#include "imaging/pdf/pdf_page.h"
#include "imaging/pdf/pdf_reading.h"
#include "imaging/raster/EncodedImage.h"

namespace orvane {

struct PdfFile::State {
  std::wstring path;
  FileStamp stamp;
  PdfOutline outline;
};

namespace {

ByteView bytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// What goes into the file in one row, from an offset on.
class PagePlan {
 public:
  explicit PagePlan(std::uint64_t offset) : end_(offset) {}

  void add(ByteView bytes) {
    parts_.push_back(bytes);
    end_ += bytes.size();
  }
  void add(std::string text) { add(bytesOf(texts_.emplace_back(std::move(text)))); }

  void addStream(std::uint32_t number, const std::string& dictionary,
                 std::span<const Bytes> content) {
    add(beginPdfObject(number) + dictionary + kBeginPdfStream);
    for (const Bytes& part : content) add(part);
    add(std::string(kEndPdfStream) + kEndPdfObject);
  }

  std::uint64_t end() const { return end_; }
  const std::vector<ByteView>& parts() const { return parts_; }

 private:
  std::deque<std::string> texts_;  // in a deque they stay where they are
  std::vector<ByteView> parts_;
  std::uint64_t end_;
};

std::string documentId(const std::wstring& path, const EncodedImage& firstPage) {
  Fingerprint fingerprint;
  fingerprint.add(pdfImageDictionary(path, firstPage, 0));
  for (const Bytes& strip : firstPage.strips) fingerprint.add(strip);
  if (!firstPage.iccProfile.empty()) fingerprint.add(firstPage.iccProfile);
  return fingerprint.hex();
}

// Plans the next page for the place where the tail stands, and moves the outline on to it.
PagePlan planPage(const std::wstring& path, PdfOutline& outline, const EncodedImage& image) {
  const PdfPageSize size = pdfPageSize(path, image);
  PagePlan plan(outline.end);
  if (outline.isGroupFull()) plan.add(outline.closeGroup());

  PdfProfile profile;
  std::string profileDictionary;
  if (!image.iccProfile.empty()) {
    profileDictionary = pdfProfileDictionary(pdfColours(image), image.iccProfile.size());
    profile.fingerprint = pdfProfileFingerprint(profileDictionary, image.iccProfile);
    profile.object = outline.profileObject(profile.fingerprint);
  }
  const bool bringsProfile = !image.iccProfile.empty() && profile.object == 0;
  const PdfPageNumbers numbers = outline.next(bringsProfile);
  PdfPageOffsets at;
  if (bringsProfile) {
    at.profile = plan.end();
    plan.addStream(numbers.profile, profileDictionary, std::span(&image.iccProfile, 1));
    profile.object = numbers.profile;
    outline.profiles.push_back(profile);
  }
  at.image = plan.end();
  plan.addStream(numbers.image, pdfImageDictionary(path, image, profile.object), image.strips);
  at.content = plan.end();
  const std::string content = pdfPageContent(size);
  plan.add(beginPdfObject(numbers.content) + "<< /Length " + std::to_string(content.size()) +
           " >>" + kBeginPdfStream + content + kEndPdfStream + kEndPdfObject);
  at.page = plan.end();
  plan.add(beginPdfObject(numbers.page) + pdfPageDictionary(numbers, size) + kEndPdfObject);

  outline.addPage(numbers, at, plan.end());
  plan.add(outline.tail());
  if (plan.end() > PdfOutline::kMostBytes) {
    throw fileFailure(path, "the page would take the PDF file past 10 digits of size");
  }
  return plan;
}

// The parts that fill the first `length` bytes, and those behind them.
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

// First what lies behind the old end, where a full disk shows while the old tail still stands;
// then, in one short write, what goes over the old tail. Answers how the file was left.
FileStamp writeOver(OutputFile& file, const PdfOutline& before, std::uint64_t size,
                    const PagePlan& plan) {
  const auto [overTail, behindEnd] = split(plan.parts(), size - before.end);
  try {
    file.write(size, behindEnd);
    file.write(before.end, overTail);
    const FileStamp stamp = file.stamp();
    file.close();
    return stamp;
  } catch (...) {
    try {
      const std::string tail = before.tail();
      file.write(before.end, bytesOf(tail));
    } catch (...) {
      // The first failure is the one to tell.
    }
    file.cutBack(size);
    throw;
  }
}

PdfOutline readBack(const OutputFile& file) {
  PdfOutline outline = readPdfOutline(file);
  outline.profiles = readPdfProfiles(file, outline);
  return outline;
}

}  // namespace

PdfFile::PdfFile() : state_(std::make_unique<State>()) {}
PdfFile::PdfFile(PdfFile&&) noexcept = default;
PdfFile& PdfFile::operator=(PdfFile&&) noexcept = default;
PdfFile::~PdfFile() = default;

void PdfFile::create(const std::wstring& path, const EncodedImage& image) {
  createWith(OutputFile::createAnew, path, image);
}

void PdfFile::createWith(OutputFile (*creation)(const std::wstring&), const std::wstring& path,
                         const EncodedImage& image) {
  requireWholeImage(path, image);
  PdfOutline outline = PdfOutline::empty(documentId(path, image));
  const PagePlan plan = planPage(path, outline, image);

  std::vector<ByteView> parts = plan.parts();
  parts.insert(parts.begin(), bytesOf(pdfHead().text));
  OutputFile file = creation(path);
  file.write(0, parts);
  const FileStamp stamp = file.stamp();
  file.close();
  *state_ = {path, stamp, std::move(outline)};
}

void PdfFile::append(const std::wstring& path, const EncodedImage& image) {
  std::optional<OutputFile> file = OutputFile::openToAppend(path);
  if (!file) {
    createWith(OutputFile::createExclusively, path, image);
    return;
  }
  const FileStamp stamp = file->stamp();
  const bool isRemembered = state_->path == path && state_->stamp == stamp;
  const PdfOutline before = isRemembered ? state_->outline : readBack(*file);
  if (before.pages() == PdfOutline::kMostPages) {
    throw fileFailure(path, "the PDF file has no room for another page");
  }
  requireWholeImage(path, image);
  PdfOutline after = before;
  const PagePlan plan = planPage(path, after, image);
  *state_ = {};
  const FileStamp left = writeOver(*file, before, stamp.size, plan);
  *state_ = {path, left, std::move(after)};
}

std::int32_t PdfFile::pageCount(const std::wstring& path) {
  return static_cast<std::int32_t>(readPdfOutline(OutputFile::openToRead(path)).pages());
}

bool PdfFile::isPdf(const std::wstring& path) {
  constexpr std::string_view kSign = "%PDF-";
  try {
    std::array<std::uint8_t, kSign.size()> front{};
    OutputFile::openToRead(path).read(0, front);
    return std::equal(front.begin(), front.end(), kSign.begin());
  } catch (const Failure&) {
    return false;  // whatever it is; the reader that is tried next tells why
  }
}

}  // namespace orvane
