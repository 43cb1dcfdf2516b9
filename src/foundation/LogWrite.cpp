#include <algorithm>
#include <cerrno>
#include <string>
#include <unistd.h>

#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
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

constexpr std::size_t kMessagesKept = 6;

LogCapture* innermostCapture = nullptr;

std::wstring logFolder() {
  return programFolder() + L"\\Log";
}

}  // namespace

void LogWrite(const std::wstring& sMessage, const std::wstring& sSource, bool bShowBox,
              const std::wstring& sLogFile) {
  attempt([&] {
    if (innermostCapture != nullptr) innermostCapture->add(sMessage);
  });
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
  if (bShowBox) {
    attempt([&] { windowServices().showBox(sMessage, sSource, BoxIcon::Critical); });
  }
}

LogCapture::LogCapture() : outer_(innermostCapture) {
  innermostCapture = this;
}

LogCapture::~LogCapture() {
  innermostCapture = outer_;
}

void LogCapture::add(const std::wstring& message) {
  messages_.push_back(message);
  if (messages_.size() > kMessagesKept) messages_.pop_front();
}

std::wstring LogCapture::text() const {
  std::wstring text;
  for (const std::wstring& message : messages_) {
    text += (text.empty() ? L"" : L"\n") + inOneLine(message);
  }
  return text;
}

std::wstring logFileOfToday() {
  return logFolder() + L"\\" + localTime("%Y%m%d") + L".log";
}

// A night of failures makes a file of any size, so that only its end is read. No byte of a Chinese
// character is a line end.
std::wstring readLog(const std::wstring& sLogFile, std::size_t most) {
  const FileDescriptor file = FileDescriptor::openRegularFile(sLogFile);
  const off_t size = lseek(file.number(), 0, SEEK_END);
  const off_t start = std::max<off_t>(0, size - static_cast<off_t>(most));
  if (size < 0 || lseek(file.number(), start, SEEK_SET) < 0) throw systemFailure(errno, sLogFile);
  std::string bytes(most, '\0');
  std::size_t length = 0;
  while (length < most) {
    const std::size_t count = file.read(bytes.data() + length, most - length);
    if (count == 0) break;
    length += count;
  }
  bytes.resize(length);
  if (start > 0) bytes.erase(0, bytes.find('\n') + 1);

  std::wstring text;
  for (const wchar_t c : fromAnsi(bytes)) {
    if (c == L'\r' || (c == L'\n' && (text.empty() || text.ends_with(L'\n')))) continue;
    text += c;
  }
  return text;
}

}  // namespace orvane::mdlFolderAndFile
