#include <ctime>
#include <string>

#include "foundation/WindowServices.h"
#include "foundation/ansi_text.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"

namespace orvane::mdlFolderAndFile {
namespace {

// The local time now, in a mask of strftime that asks for digits only.
std::wstring localTime(const char* mask) {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  tzset();  // localtime_r need not look at a time zone that has changed
  localtime_r(&now, &parts);
  char digits[32];
  const std::size_t length = std::strftime(digits, sizeof digits, mask, &parts);
  return {digits, digits + length};
}

// An entry is one line whatever is in it: names from the disk can hold a line end.
std::wstring inOneLine(std::wstring text) {
  for (wchar_t& c : text) {
    if (c == L'\r' || c == L'\n') c = L' ';
  }
  return text;
}

std::wstring entry(const std::wstring& sMessage, const std::wstring& sSource) {
  return localTime("%Y-%m-%d %H:%M:%S") + L" " + kApplicationTitle + L" - " + inOneLine(sSource) +
         L":" + inOneLine(sMessage) + L"\r\n\r\n";
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
