#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>

#include "foundation/FileSystemObject.h"

namespace orvane {

/// The module's file-system object: made at first use and kept to the end of the process.
extern std::unique_ptr<FileSystemObject> gFileSystem;

/// The path and file utilities. Unless said otherwise an operation shows a failure in a box with
/// one OK button and no icon, and returns false; nothing is logged. Paths are path texts; files in
/// the scan tree are found in any letter case (see existing_path.h). For one thread only.
namespace mdlFolderAndFile {

/// `gFileSystem`, made if this is its first use.
FileSystemObject& fileSystem();

/// True when the folder exists.
bool FolderExist(const std::wstring& sPath);

/// True when the file exists.
bool FileExist(const std::wstring& sPath);

/// Deletes a file, a read-only one too, then yields. A failure is silent.
bool FileDelete(const std::wstring& sPath);

/// Deletes a folder with all its contents, read-only items too, then yields. Symbolic links are
/// removed and never followed. A failure is silent.
bool FolderDelete(const std::wstring& sPath);

/// Copies a file: makes the target's folders, removes an older target (read-only ones too), copies,
/// yields. The steps before a failure are not undone. A copy of a file onto itself, in any spelling
/// and through any links, is refused before the first step.
bool DialogFileCopy(const std::wstring& sSource, const std::wstring& sTarget);

/// `DialogFileCopy`, then `FileDelete` of the source, whose result counts.
bool FileMove(const std::wstring& sSource, const std::wstring& sTarget);

/// `FileMove` under another name: a rename crosses volumes and replaces an existing target.
bool RenameFile(const std::wstring& sSource, const std::wstring& sTarget);

/// Creates the missing folders of a path, from its root on. A last element with a "." in it counts
/// as a file name and is not created. Returns true whenever it returns; throws Failure when a
/// folder cannot be created or `sPath` is empty.
bool MakeFolderPath(const std::wstring& sPath);

/// The text up to and with the last `sSeparator`, the empty text when there is none.
std::wstring ParentPath(const std::wstring& sPath, const std::wstring& sSeparator);

/// `sPath` with one `\` added unless it already ends in one.
std::wstring AppendBackslash(const std::wstring& sPath);

/// The text after the last "." (the whole of `sPath` when there is none).
std::wstring FileExtension(const std::wstring& sPath);

/// The program's one diagnostic channel: appends an entry to `sLogFile`, or to the file of the day
/// when it is empty, and shows `sMessage` in a box titled `sSource` when asked. Never fails
/// outward.
void LogWrite(const std::wstring& sMessage, const std::wstring& sSource, bool bShowBox = false,
              const std::wstring& sLogFile = {});

/// Collects the messages of `LogWrite` during its life, so that a failure can be shown with its
/// reason. It keeps the last few. While a nested one lives, only that one collects.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  void add(const std::wstring& message);
  /// The messages, oldest first, joined by line ends.
  std::wstring text() const;

 private:
  LogCapture* outer_;
  std::deque<std::wstring> messages_;
};

/// The path text of the day's log file, which need not exist.
std::wstring logFileOfToday();

/// The last entries of a log, up to `most` bytes of the file, with `\n` as line end and without
/// empty lines. Throws Failure when it cannot be read.
std::wstring readLog(const std::wstring& sLogFile, std::size_t most);

}  // namespace mdlFolderAndFile

}  // namespace orvane
