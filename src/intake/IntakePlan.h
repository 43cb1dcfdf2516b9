#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// What becomes of a folder of scans: which documents and pages, under which names. Paths are path
/// texts; reasons are for the operator.
namespace orvane {

/// A page of a new document: a page of an image file, from 1, and its name, without extension.
struct PlannedPage {
  std::wstring file;
  std::int32_t number = 1;
  std::wstring name;
};

/// What `PaperNum` can hold, and what a page list can.
inline constexpr std::size_t kMostPagesOfBatch = 32767;

struct PlannedDocument {
  std::wstring name;
  std::vector<PlannedPage> pages;
};

struct IntakePlan {
  std::wstring batch;
  bool isInPlace = false;  ///< the pages are below `Batchs` already
  std::vector<PlannedDocument> documents;
  std::vector<std::wstring> passedOver;  ///< what stays outside the batch, with the reason
  std::vector<std::wstring> refusals;    ///< why the folder cannot become a batch; mostly empty
  std::uint64_t pages = 0;
  std::uint64_t bytes = 0;  ///< of the image files
};

/// Plans the batch `batch` from the image files of `folder`; writes nothing.
///
/// Each direct sub-folder with images is a document of its name. Of the images directly in the
/// folder, a file of several pages is a document of the file's name, and the single pages together
/// are one document of the batch's name. Files and names are in natural order. A page keeps the
/// name of its file where that can be the name of a page; pages of one file have `NAME-0001` and so
/// on; any other page is numbered.
///
/// Throws Failure if the folder cannot be listed.
IntakePlan planBatch(const std::wstring& folder, const std::wstring& batch);

/// The plan for a reader: a line for each document, what is passed over, and what is refused.
std::vector<std::wstring> linesOf(const IntakePlan& plan);

/// Numbers of documents, pages and bytes, for a reader.
std::wstring figures(std::uint64_t documents, std::uint64_t pages, std::uint64_t bytes);

/// The last name of a folder's path.
std::wstring nameOfFolder(const std::wstring& folder);

/// Why `name` cannot be the name of a batch or of a document: it is no name of a folder, or code
/// page 936 cannot hold it. Empty if it can.
std::wstring reasonAgainstName(const std::wstring& name);

/// True if `one` comes before `other` in natural order: digits are compared as numbers, everything
/// else by code points.
bool isBefore(std::wstring_view one, std::wstring_view other);

}  // namespace orvane
