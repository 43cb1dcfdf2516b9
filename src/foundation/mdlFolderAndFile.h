#pragma once

#include <string>

#include "foundation/FileSystemObject.h"

namespace orvane {

/// The path and file utilities. Unless stated otherwise, an operation that fails shows a box with
/// one OK button and no icon, returns false and logs nothing. Paths are path texts; files in the
/// scan tree are found in any letter case (see letter_case.h). Must be called on one thread only.
namespace mdlFolderAndFile {

using orvane::fileSystem;

/// True if the folder exists.
bool FolderExist(const std::wstring& sPath);

/// True if the file exists.
bool FileExist(const std::wstring& sPath);

/// Deletes a file, even a read-only one, then yields. Shows no box.
bool FileDelete(const std::wstring& sPath);

/// Deletes a folder and its contents, even read-only ones, then yields. Symbolic links are removed
/// and never followed. Shows no box.
bool FolderDelete(const std::wstring& sPath);

/// Copies a file: creates the target's folders, deletes an existing target (even a read-only one),
/// copies, then yields. The steps before a failure are not undone. A copy of a file to itself, in
/// any spelling or through links, is refused before the first step.
bool DialogFileCopy(const std::wstring& sSource, const std::wstring& sTarget);

/// `DialogFileCopy`, then `FileDelete` of the source, whose result counts. The copy is synced
/// first, so that a crash cannot take both.
bool FileMove(const std::wstring& sSource, const std::wstring& sTarget);

/// The same as `FileMove`: works across volumes and replaces an existing target.
bool RenameFile(const std::wstring& sSource, const std::wstring& sTarget);

/// Creates the missing folders of a path. A last element that contains "." is taken for a file name
/// and not created. Always returns true; throws Failure if a folder cannot be created or `sPath` is
/// empty.
bool MakeFolderPath(const std::wstring& sPath);

/// The text up to and including the last `sSeparator`, or empty if there is none.
std::wstring ParentPath(const std::wstring& sPath, const std::wstring& sSeparator);

/// `sPath` with a final `\`, which is added if missing.
std::wstring AppendBackslash(const std::wstring& sPath);

/// The text after the last ".", or all of `sPath` if there is none.
std::wstring FileExtension(const std::wstring& sPath);

/// Appends an entry to `sLogFile` or, if it is empty, to today's log. If `bShowBox` is set, also
/// shows `sMessage` in a box with the title `sSource`. Throws nothing.
void LogWrite(const std::wstring& sMessage, const std::wstring& sSource, bool bShowBox = false,
              const std::wstring& sLogFile = {});

}  // namespace mdlFolderAndFile

}  // namespace orvane
