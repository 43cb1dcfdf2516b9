#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "settings/ExportSettings.h"

/// The one rule for where an exported file lands and what it is called: pure functions that join
/// texts and look neither at the disk nor at the window. Paths are path texts, joined plainly: a
/// `SavePath` that ends in `\` gives a doubled separator, unless it is the root folder.
namespace orvane {

/// The front of a document's output names under a naming pattern (one of kAllNamingPatterns,
/// compared character by character). Any other text, the empty one too, gives an empty stem. A
/// pattern with the page number ends in `ReNameSp2`; the number itself is no part of the stem.
std::wstring documentStem(const std::wstring& sPattern, const std::wstring& sBatchName,
                          const std::wstring& sDocName, const std::wstring& ReNameSp1,
                          const std::wstring& ReNameSp2);

/// `PageNumberMask`: as many "0" as the number at the front of the text of `txtLiuShui`, rounded
/// half to even, says; empty for 0 or less. Throws Failure for a number beyond 16 bits.
std::wstring pageNumberMask(const std::wstring& txtLiuShui);

/// A page index, from 1, filled with "0" on the left to the length of the mask. A longer number
/// keeps all its digits.
std::wstring pageNumberText(std::int16_t pageIndex, const std::wstring& mask);

/// ".tif" for a `SaveFileType` of 0, ".jpg" for 1, ".pdf" for any other.
std::wstring outputExtension(std::int16_t SaveFileType);

/// `BatchOutputFolder`: `SavePath`, or the batch's own folder below it.
std::wstring batchOutputFolder(const std::wstring& SavePath, bool IsCreateBatchFolder,
                               const std::wstring& BatchID);

/// `DocOutputFolder`: `BatchOutputFolder`, or the document's own folder below it.
std::wstring docOutputFolder(const std::wstring& BatchOutputFolder, bool IsCreateDocFolder,
                             const std::wstring& sDocName);

/// The file of one page of a document, in the form of one file a page. `folder` may end in `\`.
std::wstring pageFilePath(const std::wstring& folder, const std::wstring& stem,
                          std::int16_t pageIndex, const std::wstring& mask,
                          std::int16_t SaveFileType);

/// The one file of a document, in the form of a multi-page file. `folder` may end in `\`.
std::wstring multiPageFilePath(const std::wstring& folder, const std::wstring& stem,
                               std::int16_t SaveFileType);

/// One page of the scan tree, as far as the name of its output file goes.
struct PageToName {
  std::wstring batch;
  std::wstring document;
  std::int16_t page;  ///< from 1

  bool operator==(const PageToName&) const = default;
};

/// The file that a page is written to under the folder options, separators and forms of `settings`.
std::wstring outputFile(const ExportSettings& settings, const std::wstring& sPattern,
                        const std::wstring& mask, const PageToName& page);

/// Two pages that are not of one document but go to one file, where the later replaces the earlier.
struct NameCollision {
  PageToName first;
  PageToName second;

  bool operator==(const NameCollision&) const = default;
};

/// How files can replace each other under these settings: at most one example for each cause. Looks
/// at two batches with documents of the same names, and at names that are numbers, with up to 999
/// pages a document. Empty when no two of those pages share a file.
std::vector<NameCollision> nameCollisions(const ExportSettings& settings,
                                          const std::wstring& sPattern, const std::wstring& mask);

/// The examples as the operator reads them, each with what helps against it: lines that begin with
/// "⚠" and end in a line end. Empty when there are none.
std::wstring collisionWarning(const ExportSettings& settings, const std::wstring& sPattern,
                              const std::wstring& mask);

}  // namespace orvane
