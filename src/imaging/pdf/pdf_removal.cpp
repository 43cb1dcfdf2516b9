#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/OutputFile.h"
#include "foundation/durable_file.h"
#include "imaging/pdf/PdfFile.h"
#include "imaging/pdf/PdfLayout.h"
#include "imaging/pdf/pdf_head.h"
#include "imaging/pdf/pdf_page.h"
#include "imaging/pdf/pdf_reading.h"
#include "imaging/raster/page_choice.h"

namespace orvane {
namespace {

// Where in an image's dictionary the number of its profile's object stands; of no length for an
// image without a profile.
std::pair<std::size_t, std::size_t> profileNumberIn(const std::string& dictionary) {
  constexpr std::string_view kKey = "[ /ICCBased ";
  const std::size_t found = dictionary.find(kKey);
  if (found == std::string::npos) return {0, 0};
  const std::size_t begin = found + kKey.size();
  const std::size_t end = dictionary.find_first_not_of("0123456789", begin);
  return {begin, end == std::string::npos ? 0 : end - begin};
}

// Writes the kept pages one after another under new object numbers. The streams are copied. A
// profile goes with the first kept page that uses it, whichever page has brought it along.
class PageCopy {
 public:
  PageCopy(const OutputFile& source, OutputFile& target, const std::string& documentId,
           const std::vector<PdfPagePlace>& allPages)
      : source_(source), target_(target), outline_(PdfOutline::empty(documentId)) {
    put(0, pdfHead().text);
    for (const PdfPagePlace& place : allPages) {
      if (place.numbers.profile == 0) continue;
      profiles_[std::to_string(place.numbers.profile)] = {
          {place.numbers.profile, place.at.profile, place.at.image}, 0};
    }
  }

  void add(const PdfPagePlace& place) {
    const PdfPageSize size = readPdfPageSize(source_, place);
    const std::string oldDictionary = readPdfImageDictionary(source_, place);
    const auto [numberAt, numberLength] = profileNumberIn(oldDictionary);
    Profile* const profile = find(oldDictionary.substr(numberAt, numberLength));
    if (outline_.isGroupFull()) {
      const std::uint64_t at = outline_.end;
      put(at, outline_.closeGroup());
    }
    const bool bringsProfile = profile != nullptr && profile->newNumber == 0;
    const PdfPageNumbers numbers = outline_.next(bringsProfile);
    PdfPageOffsets at;
    at.image = outline_.end;
    if (bringsProfile) {
      profile->newNumber = numbers.profile;
      at.profile = outline_.end;
      at.image = copy(profile->object, numbers.profile, at.profile);
    }
    std::string dictionary = oldDictionary;
    if (profile != nullptr) {
      dictionary.replace(numberAt, numberLength, std::to_string(profile->newNumber));
    }
    at.content = copy({place.numbers.image, place.at.image, place.at.content}, numbers.image,
                      at.image, oldDictionary.size(), dictionary);
    at.page =
        copy({place.numbers.content, place.at.content, place.at.page}, numbers.content, at.content);
    const std::uint64_t end = put(
        at.page, beginPdfObject(numbers.page) + pdfPageDictionary(numbers, size) + kEndPdfObject);
    outline_.addPage(numbers, at, end);
  }

  void finish() { put(outline_.end, outline_.tail()); }

 private:
  struct Object {
    std::uint32_t number;
    std::uint64_t from, end;
  };

  struct Profile {
    Object object;
    std::uint32_t newNumber = 0;  // 0: not copied yet
  };

  Profile* find(const std::string& number) {
    if (number.empty()) return nullptr;
    const auto found = profiles_.find(number);
    if (found == profiles_.end()) throw fileFailure(source_.path(), "an ICC profile is missing");
    return &found->second;
  }

  std::uint64_t put(std::uint64_t offset, const std::string& text) {
    target_.write(offset,
                  ByteView(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
    return offset + text.size();
  }

  // Copies an object under a new number; the first `dropped` bytes of its content give way to
  // `front`. Answers where the copy ends.
  std::uint64_t copy(const Object& object, std::uint32_t newNumber, std::uint64_t to,
                     std::size_t dropped = 0, const std::string& front = {}) {
    requirePdfObject(source_, object.number, object.from, object.end);
    const std::uint64_t body = object.from + beginPdfObject(object.number).size() + dropped;
    const std::uint64_t at = put(to, beginPdfObject(newNumber) + front);
    target_.copy(source_, body, object.end - body, at);
    return at + (object.end - body);
  }

  const OutputFile& source_;
  OutputFile& target_;
  PdfOutline outline_;
  std::map<std::string, Profile> profiles_;  // by the object number, as it is written
};

}  // namespace

void PdfFile::deletePage(const std::wstring& path, std::int32_t page) {
  const OutputFile file = OutputFile::openToReplace(path);
  const PdfOutline outline = readPdfOutline(file);
  requireDeletablePage(path, page, outline.pages());
  std::vector<PdfPagePlace> pages = readPdfPages(file, outline);
  FileReplacement replacement(file.path());
  OutputFile shorter = OutputFile::createAnew(replacement.temporaryPath());
  PageCopy copy(file, shorter, outline.documentId, pages);
  pages.erase(pages.begin() + (page - 1));
  for (const PdfPagePlace& place : pages) copy.add(place);
  copy.finish();
  shorter.close();
  replacement.commit();
}

}  // namespace orvane
