#include "imaging/tiff/TiffFile.h"

#include <optional>
#include <utility>

#include "foundation/Failure.h"
#include "imaging/tiff/TiffStructure.h"

namespace orvane {
namespace {

constexpr TiffForm kOwnForm{.bigEndian = false, .bigTiff = false};

Bytes header(std::uint64_t firstDirectory) {
  Bytes bytes{'I', 'I'};
  kOwnForm.put(bytes, 42, 2);
  kOwnForm.put(bytes, firstDirectory, kOwnForm.offsetBytes());
  return bytes;
}

Bytes link(TiffForm form, std::uint64_t offset) {
  Bytes bytes;
  form.put(bytes, offset, form.offsetBytes());
  return bytes;
}

SampleOrder sampleOrder(TiffForm form) {
  return form.bigEndian ? SampleOrder::BigEndian : SampleOrder::LittleEndian;
}

// Writes the page after the end of the file, where no reader looks yet, then the one link that
// makes it part of the document. Returns the stamp of the written file.
FileStamp writeAfterEnd(OutputFile& file, const TiffPagePlan& page, TiffForm form,
                        std::uint64_t size, std::uint64_t lastLink) {
  try {
    file.write(size, page.parts);
    file.write(lastLink, link(form, page.directoryOffset));
    const FileStamp stamp = file.stamp();
    file.close();
    return stamp;
  } catch (...) {
    try {
      file.write(lastLink, link(form, 0));
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
  TiffPagePlan page = planTiffPage(path, kOwnForm, kOwnForm.headerBytes(), image, subfile, 0);
  const Bytes front = header(page.directoryOffset);
  page.parts.insert(page.parts.begin(), front);
  OutputFile file = creation(path);
  file.write(0, page.parts);
  const FileStamp stamp = file.stamp();
  file.close();
  end_ = {path, stamp, kOwnForm, page.nextLink, 1};
}

void TiffFile::append(const std::wstring& path, const EncodedImage& image) {
  std::optional<OutputFile> file = OutputFile::openToAppend(path);
  if (file) {
    appendTo(*file, image);
  } else {
    createWith(OutputFile::createExclusively, path, image, TiffSubfile::PageOfMany);
  }
}

void TiffFile::append(const std::wstring& path,
                      const std::function<EncodedImage(SampleOrder)>& encode) {
  std::optional<OutputFile> file = OutputFile::openToAppend(path);
  if (file) {
    appendTo(*file, encode(sampleOrder(TiffStructure(*file).form())));
  } else {
    createWith(OutputFile::createExclusively, path, encode(sampleOrder(kOwnForm)),
               TiffSubfile::PageOfMany);
  }
}

void TiffFile::appendTo(OutputFile& file, const EncodedImage& image) {
  const FileStamp before = file.stamp();
  const End end = endOf(file, before);
  if (end.pages == kMostTiffPages) {
    throw fileFailure(file.path(), "the TIFF file has no room for another page");
  }
  const TiffPagePlan page =
      planTiffPage(file.path(), end.form, before.size, image, TiffSubfile::PageOfMany, end.pages);
  end_ = {};
  const FileStamp stamp = writeAfterEnd(file, page, end.form, before.size, end.nextLink);
  end_ = {file.path(), stamp, end.form, page.nextLink, end.pages + 1};
}

TiffFile::End TiffFile::endOf(const OutputFile& file, const FileStamp& stamp) const {
  if (end_.path == file.path() && end_.stamp == stamp) return end_;
  const TiffStructure structure(file);
  const std::vector<TiffDirectoryPlace> pages = structure.pages();
  const std::uint64_t nextLink =
      pages.empty() ? structure.form().firstLink() : pages.back().nextLink;
  return {file.path(), stamp, structure.form(), nextLink, static_cast<std::uint32_t>(pages.size())};
}

}  // namespace orvane
