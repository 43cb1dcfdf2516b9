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

/// True for a document, which is a sub-folder of the current batch that holds a `Doc.dat`, in any
/// letter case; false only for a sub-folder that is there and certainly holds none. Throws Failure
/// "<path>: <reason>" when neither can be told: it is gone, it cannot be entered or listed, it is a
/// link to nothing, or its `Doc.dat` is no file that can be read.
bool isDocument(const std::wstring& sDocName);

}  // namespace orvane
