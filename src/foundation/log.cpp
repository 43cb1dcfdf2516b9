#include "foundation/log.h"

#include "foundation/FileSystemObject.h"
#include "foundation/log_files.h"
#include "foundation/plain_text.h"
#include "foundation/program.h"
#include "foundation/text_encoding.h"

namespace orvane {
namespace {

// An entry is one line, but names on the disk can contain line ends.
std::wstring entry(const std::wstring& sMessage, const std::wstring& sSource) {
  return timeStamp() + L" " + kApplicationTitle + L" - " + inOneLine(sSource) + L":" +
         inOneLine(sMessage) + L"\r\n\r\n";
}

// Ignores a failure, because a failure of the log cannot be reported anywhere else.
template <typename Step>
void attempt(Step step) noexcept {
  try {
    step();
  } catch (...) {
  }
}

}  // namespace

void writeLogEntry(const std::wstring& sMessage, const std::wstring& sSource,
                   const std::wstring& sLogFile) {
  attempt([&] {
    const std::wstring logFile = sLogFile.empty() ? logFileOfToday() : sLogFile;
    FileSystemObject& files = fileSystem();
    attempt([&] {
      if (!files.FolderExists(logFolder())) files.CreateFolder(logFolder());
    });
    attempt([&] {
      if (!files.FileExists(logFile)) files.CreateFile(logFile);
    });
    files.AppendFile(logFile, toAnsi(entry(sMessage, sSource)));
  });
}

}  // namespace orvane
