#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>

#include "foundation/FileSystemObject.h"

namespace orvane {

/// The module's file-system object: made at first use, living to the end of the process.
extern std::unique_ptr<FileSystemObject> gFileSystem;

/// The path and file utilities. Unless said otherwise an operation tells a failure in a box with
/// one OK button and no icon, and answers false; nothing is logged. Paths are path texts; what is
/// in the scan tree is found in any letter case (see existing_path.h).
namespace mdlFolderAndFile {

/// `gFileSystem`, made now if this is its first use.
FileSystemObject& fileSystem();

/// True when the folder exists.
bool FolderExist(const std::wstring& sPath);

/// True when the file exists.
bool FileExist(const std::wstring& sPath);

/// Deletes a file, a read-only one too, then yields. A failure is silent.
bool FileDelete(const std::wstring& sPath);

/// Deletes a folder with all that is in it, read-only items too, then yields. Symbolic links are
/// removed and never followed. A failure is silent.
bool FolderDelete(const std::wstring& sPath);

/// Copies a file: makes the target's folders, removes an older target (read-only ones too), copies,
/// yields. What was done before a failure stays done. A copy of a file onto itself, in whatever
/// spelling and through whatever links, is refused before anything is done.
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

/// The text behind the last "." (the whole of `sPath` when there is none).
std::wstring FileExtension(const std::wstring& sPath);

/// The program's one diagnostic channel: appends an entry to `sLogFile`, or to the file of the day
/// when it is empty, and shows `sMessage` in a box titled `sSource` when asked. Never fails
/// outward.
void LogWrite(const std::wstring& sMessage, const std::wstring& sSource, bool bShowBox = false,
              const std::wstring& sLogFile = {});

/// Collects the messages that `LogWrite` is given while it lives, so that the operator can be told
/// the reason of a failure where it shows. It keeps the last few. One within another takes the
/// messages of its own life to itself.
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

/// The log file of the day, a path text; it need not exist.
std::wstring logFileOfToday();

/// The last entries of a log, up to `most` bytes of the file, with `\n` as line end and without the
/// empty lines. Throws Failure when it cannot be read.
std::wstring readLog(const std::wstring& sLogFile, std::size_t most);

}  // namespace mdlFolderAndFile

}  // namespace orvane
