#include "imaging/containers/PdfFile.h"

#include <array>
#include <optional>
#include <utility>

#include "imaging/containers/Fingerprint.h"
#include "imaging/containers/OutputFile.h"
#include "imaging/containers/PdfOutline.h"
#include "imaging/containers/image_checks.h"
#include "imaging/containers/pdf_head.h"
#include "imaging/containers/pdf_page.h"
#include "imaging/containers/pdf_reading.h"

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

// A page as it goes into the file: text, the image's bytes, and text again up to the file's end.
struct PagePlan {
  std::string front;
  std::vector<ByteView> image;
  std::string behind;

  std::vector<ByteView> parts() const {
    std::vector<ByteView> all{bytesOf(front)};
    all.insert(all.end(), image.begin(), image.end());
    all.push_back(bytesOf(behind));
    return all;
  }
};

std::string documentId(const EncodedImage& firstPage, const std::string& imageDictionary) {
  Fingerprint fingerprint;
  fingerprint.add(imageDictionary);
  for (const Bytes& strip : firstPage.strips) fingerprint.add(strip);
  return fingerprint.hex();
}

// Plans the next page for the place where the tail stands, and moves the outline on to it.
PagePlan planPage(const std::wstring& path, PdfOutline& outline, const EncodedImage& image,
                  const std::string& imageDictionary) {
  const PdfPageSize size = pdfPageSize(path, image);
  PagePlan plan;
  const std::uint64_t start = outline.end;
  if (outline.isGroupFull()) plan.front = outline.closeGroup();
  const PdfPageNumbers numbers = outline.next();

  const std::uint64_t imageAt = outline.end;
  plan.front += beginPdfObject(numbers.image) + imageDictionary + "\nstream\n";
  plan.image.assign(image.strips.begin(), image.strips.end());
  plan.behind = std::string("\nendstream") + kEndPdfObject;
  std::uint64_t behindAt = start + plan.front.size();
  for (const ByteView strip : plan.image) behindAt += strip.size();

  const std::string content = pdfPageContent(size);
  const std::uint64_t contentAt = behindAt + plan.behind.size();
  plan.behind += beginPdfObject(numbers.content) + "<< /Length " + std::to_string(content.size()) +
                 " >>\nstream\n" + content + "\nendstream" + kEndPdfObject;
  const std::uint64_t pageAt = behindAt + plan.behind.size();
  plan.behind += beginPdfObject(numbers.page) + pdfPageDictionary(numbers, size) + kEndPdfObject;

  outline.addPage(imageAt, contentAt, pageAt, behindAt + plan.behind.size());
  plan.behind += outline.tail();
  if (behindAt + plan.behind.size() > PdfOutline::kMostBytes) {
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
    } catch (const Failure&) {
      // The first failure is the one to tell.
    }
    file.cutBack(size);
    throw;
  }
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
  const std::string dictionary = pdfImageDictionary(path, image);
  PdfOutline outline = PdfOutline::empty(documentId(image, dictionary));
  const PagePlan plan = planPage(path, outline, image, dictionary);

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
  const PdfOutline before = isRemembered ? state_->outline : readPdfOutline(*file);
  if (before.pages() == PdfOutline::kMostPages) {
    throw fileFailure(path, "the PDF file has no room for another page");
  }
  requireWholeImage(path, image);
  PdfOutline after = before;
  const PagePlan plan = planPage(path, after, image, pdfImageDictionary(path, image));
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
