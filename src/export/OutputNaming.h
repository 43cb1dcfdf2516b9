#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "settings/ExportSettings.h"

/// The folders and names of output files. These are pure functions on texts; they access neither
/// the disk nor the window. Paths are joined without being normalised: a `SavePath` that ends in
/// `\` gives a doubled separator, unless it is the root folder.
namespace orvane {

/// Returns the front of a document's output names under a naming pattern (one of
/// kAllNamingPatterns, compared character by character). Any other text, including the empty one,
/// gives an empty stem. Under a pattern with the page number, the stem ends in `ReNameSp2`; the
/// number itself is not part of the stem.
std::wstring documentStem(const std::wstring& sPattern, const std::wstring& sBatchName,
                          const std::wstring& sDocName, const std::wstring& ReNameSp1,
                          const std::wstring& ReNameSp2);

/// `PageNumberMask`: one "0" per digit. The number of digits is the number at the front of
/// `txtLiuShui`, rounded half to even; the mask is empty for 0 or less. Throws Failure for a number
/// beyond 16 bits.
std::wstring pageNumberMask(const std::wstring& txtLiuShui);

/// A page index, from 1, padded with "0" on the left to the length of the mask. A longer number
/// keeps all its digits.
std::wstring pageNumberText(std::int16_t pageIndex, const std::wstring& mask);

/// ".tif" for a `SaveFileType` of 0, ".jpg" for 1, ".pdf" for any other value.
std::wstring outputExtension(std::int16_t SaveFileType);

/// `BatchOutputFolder`: `SavePath`, or the batch's own folder below it.
std::wstring batchOutputFolder(const std::wstring& SavePath, bool IsCreateBatchFolder,
                               const std::wstring& BatchID);

/// `DocOutputFolder`: `BatchOutputFolder`, or the document's own folder below it.
std::wstring docOutputFolder(const std::wstring& BatchOutputFolder, bool IsCreateDocFolder,
                             const std::wstring& sDocName);

/// The file of one page, if each page is exported to a file of its own. `folder` may end in `\`.
std::wstring pageFilePath(const std::wstring& folder, const std::wstring& stem,
                          std::int16_t pageIndex, const std::wstring& mask,
                          std::int16_t SaveFileType);

/// The file of a document that is exported to one multi-page file. `folder` may end in `\`.
std::wstring multiPageFilePath(const std::wstring& folder, const std::wstring& stem,
                               std::int16_t SaveFileType);

/// A page of the scan tree: what the name of its output file depends on.
struct PageToName {
  std::wstring batch;
  std::wstring document;
  std::int16_t page;  ///< from 1

  bool operator==(const PageToName&) const = default;
};

/// The file that a page is written to under `settings`.
std::wstring outputFile(const ExportSettings& settings, const std::wstring& sPattern,
                        const std::wstring& mask, const PageToName& page);

/// Two pages of different documents that have the same output file. The second replaces the first.
struct NameCollision {
  PageToName first;
  PageToName second;

  bool operator==(const NameCollision&) const = default;
};

/// Finds how output files can replace each other under these settings: at most one example per
/// cause. The search covers two batches whose documents have the same names, and names that are
/// numbers, with up to 999 pages per document.
std::vector<NameCollision> nameCollisions(const ExportSettings& settings,
                                          const std::wstring& sPattern, const std::wstring& mask);

/// The examples for the operator, each with a remedy. Every example begins with "⚠" and ends in a
/// line end. Empty if there are none.
std::wstring collisionWarning(const ExportSettings& settings, const std::wstring& sPattern,
                              const std::wstring& mask);

}  // namespace orvane
