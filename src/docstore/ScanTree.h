#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The tree of the scanning stations' work: in the program's folder `Batchs`, in it a folder for
/// each batch, in that a folder for each document with its page files and its page list `Doc.dat`.
namespace orvane {

/// The path text of the current batch's folder, without a separator at the end. Empty when the
/// program starts; the run sets it at the start of each batch.
extern std::wstring gBatchFolder;

/// True if `name` can name a single folder, of a batch or of a document: it is not empty, "." or
/// "..", and has no separator and no NUL.
bool isFolderName(const std::wstring& name);

/// The folder of a document of the current batch, with a separator at its end. This and the next
/// two only join texts and cannot fail.
std::wstring GetDocumentPath(const std::wstring& sDocName);

/// The file of a page; `sPageName` carries no extension.
std::wstring GetPagePath(const std::wstring& sDocName, const std::wstring& sPageName);

/// The page list of a document.
std::wstring GetDocDataPath(const std::wstring& sDocName);

/// True for a document: a sub-folder of the current batch with a `Doc.dat`, in any letter case.
/// False only for an existing sub-folder that certainly has none. Throws Failure "<path>: <reason>"
/// when neither is certain: it does not exist, cannot be entered or listed, is a link to a missing
/// target, or its `Doc.dat` is no readable file.
bool isDocument(const std::wstring& sDocName);

/// Reads the page list of a document of the current batch and logs nothing. `pages` is replaced as
/// soon as the file is known to exist. Throws Failure with the text that `Document::LoadDocument`
/// logs.
void readPageList(const std::wstring& sDocName, std::optional<std::vector<std::wstring>>& pages);

/// Adds the names in the text of a `Doc.dat` to `pages`: each is followed by "$". Text after the
/// last "$" and items that are empty or only spaces are ignored; all others keep their spaces.
/// Throws Failure at the 32768th "$", when the items before it have been added.
void appendPages(std::wstring_view text, std::vector<std::wstring>& pages);

/// The text of a `Doc.dat` for `pages`.
std::wstring pageListText(const std::vector<std::wstring>& pages);

}  // namespace orvane
