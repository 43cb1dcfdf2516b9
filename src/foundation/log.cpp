#include "foundation/log.h"

#include "foundation/FileSystemObject.h"
#include "foundation/log_files.h"
#include "foundation/program.h"
#include "foundation/text_encoding.h"

namespace orvane {
namespace {

// An entry is one line, but names on the disk can contain line ends.
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

// Ignores a failure, because a failure of the log cannot be reported anywhere else.
template <typename Step>
void attempt(Step step) noexcept {
  try {
    step();
  } catch (...) {
  }
}

constexpr std::size_t kMessagesKept = 6;

LogCapture* innermostCapture = nullptr;

}  // namespace

void writeLogEntry(const std::wstring& sMessage, const std::wstring& sSource,
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

}  // namespace orvane
