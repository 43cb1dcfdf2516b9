#include <string>

#include "foundation/WindowServices.h"
#include "foundation/ansi_text.h"
#include "foundation/local_time.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"

namespace orvane::mdlFolderAndFile {
namespace {

// An entry is one line whatever is in it: names from the disk can hold a line end.
std::wstring inOneLine(std::wstring text) {
  for (wchar_t& c : text) {
    if (c == L'\r' || c == L'\n') c = L' ';
  }
  return text;
}

std::wstring entry(const std::wstring& sMessage, const std::wstring& sSource) {
  return timeStamp() + L" " + kApplicationTitle + L" - " + inOneLine(sSource) + L":" +
         inOneLine(sMessage) + L"\r\n\r\n";
}

// A step that fails is skipped: the log is the last place where a failure is told.
template <typename Step>
void attempt(Step step) noexcept {
  try {
    step();
  } catch (...) {
  }
}

}  // namespace

void LogWrite(const std::wstring& sMessage, const std::wstring& sSource, bool bShowBox,
              const std::wstring& sLogFile) {
  attempt([&] {
    const std::wstring logFolder = programFolder() + L"\\Log";
    const std::wstring logFile =
        sLogFile.empty() ? logFolder + L"\\" + localTime("%Y%m%d") + L".log" : sLogFile;
    FileSystemObject& files = fileSystem();
    attempt([&] {
      if (!files.FolderExists(logFolder)) files.CreateFolder(logFolder);
    });
    attempt([&] {
      if (!files.FileExists(logFile)) files.CreateFile(logFile);
    });
    files.AppendFile(logFile, toAnsi(entry(sMessage, sSource)));
  });
  if (bShowBox) {
    attempt([&] { windowServices().showBox(sMessage, sSource, BoxIcon::Critical); });
  }
}

}  // namespace orvane::mdlFolderAndFile
