#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"

/// How the operations of a Document report a failure.

namespace orvane {

/// Logs one line and gives false.
inline bool failInLog(const std::wstring& text) {
  mdlFolderAndFile::LogWrite(text, L"Document");
  return false;
}

/// The answer of `operation`; a failure in it becomes one line, `prefix` and its text, and false.
template <typename Operation>
bool withFailuresLogged(const std::wstring& prefix, Operation operation) {
  try {
    return operation();
  } catch (const std::exception& failure) {
    return failInLog(prefix + description(failure));
  }
}

/// One scanned document of the current batch: its name, its folder and the ordered list of its page
/// names, which `Doc.dat` holds on the disk. Positions count from 1.
///
/// Every operation but the two properties catches its failures: it logs one line with the source
/// "Document" and gives false, or what is said with it. Nothing is open between two calls.
class Document {
 public:
  /// Reads the page list. Name and folder are set whatever happens. False for a missing `Doc.dat`,
  /// which leaves the list as it was, and for one with nothing but spaces in it. A byte pair of the
  /// file that is no character becomes U+FFFD.
  bool LoadDocument(const std::wstring& sDocName);

  /// Begins a document without pages. The disk learns of it through `SaveDocument`.
  bool CreateDocument(const std::wstring& sDocName);

  /// Writes the page list. The old file stands aside as `Doc.datbak` meanwhile and is put back when
  /// the save fails, as it does for a name that code page 936 cannot hold.
  bool SaveDocument();

  /// The name of a page, without folder and extension; empty, and not logged, for a position that
  /// is none.
  std::wstring GetPage(std::int16_t iPageIndex) const;

  /// Appends a page name (`iInsertTo` negative) or inserts it in front of the existing page at
  /// `iInsertTo`. Any name goes in, an empty or equal one too.
  bool AddPage(const std::wstring& sPageName, std::int16_t iInsertTo = -1);

  /// Moves a page in front of another existing page. In front of its own successor means that the
  /// two change places.
  bool MovePage(std::int16_t iSourcePageNum, std::int16_t iInsertBefore);

  /// Removes the page at a position.
  bool RemovePage(std::int16_t iPageIndex);

  /// Removes every page of exactly this name. Gives the text "True", also when there was none, or
  /// "False" after a failure.
  std::wstring RemovePageForName(const std::wstring& sPageName);

  /// The number of pages. Throws Failure as long as there is no list: until `CreateDocument` has
  /// run or `LoadDocument` has found a `Doc.dat`.
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
