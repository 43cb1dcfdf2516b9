#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Outcome.h"

namespace orvane {

/// One scanned document of the current batch: its name, its folder and the ordered list of its page
/// names, which is stored in `Doc.dat`. Positions count from 1.
///
/// Every operation except `PageCount` and `DocName` catches its failures: it logs one line with the
/// source "Document" and returns false, or the value named in its comment. No file is open between
/// two calls.
class Document {
 public:
  /// Reads the page list. Name and folder are set in every case. False for a missing `Doc.dat`,
  /// which leaves the list as it was, and for one that has only spaces. A byte pair of the file
  /// that is no character becomes U+FFFD.
  bool LoadDocument(const std::wstring& sDocName);

  /// `LoadDocument` with the reason of a failure.
  Outcome load(const std::wstring& sDocName);

  /// Begins a document without pages. `SaveDocument` writes it to the disk.
  bool CreateDocument(const std::wstring& sDocName);

  /// Writes the page list. There is a copy of the old file, `Doc.datbak`, meanwhile. The old file
  /// stays when the save fails, for example for a name that code page 936 cannot represent. A crash
  /// leaves the old file or the new one.
  bool SaveDocument();

  /// The name of a page, without folder and extension. Empty, and not logged, for a position out of
  /// range.
  std::wstring GetPage(std::int16_t iPageIndex) const;

  /// Appends a page name (`iInsertTo` negative) or inserts it in front of the existing page at
  /// `iInsertTo`. Any name is accepted, also an empty or equal one.
  bool AddPage(const std::wstring& sPageName, std::int16_t iInsertTo = -1);

  /// Moves a page in front of another existing page. In front of its own successor, the two are
  /// exchanged.
  bool MovePage(std::int16_t iSourcePageNum, std::int16_t iInsertBefore);

  /// Removes the page at a position.
  bool RemovePage(std::int16_t iPageIndex);

  /// Removes every page of exactly this name. Returns the text "True", also when there was none, or
  /// "False" after a failure.
  std::wstring RemovePageForName(const std::wstring& sPageName);

  /// The number of pages. Throws Failure until `CreateDocument` has run or `LoadDocument` has found
  /// a `Doc.dat`.
  std::int16_t PageCount() const;

  /// The name last given to `LoadDocument` or `CreateDocument`.
  const std::wstring& DocName() const { return sDocName_; }

 private:
  using PageList = std::vector<std::wstring>;

  PageList& pages();
  const PageList& pages() const;
  std::ptrdiff_t indexOf(std::int16_t position) const;
  void writePages(const std::wstring& dataFile, const std::wstring& backupFile) const;

  std::wstring sDocFolder_;
  std::wstring sDocName_;
  std::optional<PageList> pages_;
};

}  // namespace orvane
