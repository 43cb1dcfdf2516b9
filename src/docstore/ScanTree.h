#pragma once

#include <string>

/// The tree in which the scanning stations leave their work: program folder, `Batchs`, a folder for
/// each batch, a folder for each document with its `Doc.dat` and page files.
namespace orvane {

/// The path text of the folder of the batch being worked on, without a separator at the end. Empty
/// when the program starts; the run sets it at the start of each batch.
extern std::wstring gBatchFolder;

/// The folder of a document of the current batch, with a separator at its end. Like the other two a
/// plain join, which looks at nothing and cannot fail.
std::wstring GetDocumentPath(const std::wstring& sDocName);

/// The file of a page; `sPageName` carries no extension.
std::wstring GetPagePath(const std::wstring& sDocName, const std::wstring& sPageName);

/// The page list of a document.
std::wstring GetDocDataPath(const std::wstring& sDocName);

}  // namespace orvane
