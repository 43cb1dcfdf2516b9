#include "settings/mdlINI.h"

#include <algorithm>
#include <exception>

#include "foundation/durable_file.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/text_encoding.h"
#include "settings/profile_file.h"

namespace orvane::mdlINI {

std::wstring IniFilePath;

namespace {

constexpr std::size_t kLongestValue = 1023;  // bytes

// Converts a text to the code page, and sets it to what the code page can represent.
std::string throughCodePage(std::wstring& text) {
  std::string bytes = toAnsi(text.substr(0, text.find(L'\0')));
  for (char& c : bytes) {
    if (c == '\r' || c == '\n') c = '?';
  }
  text = fromAnsi(bytes);
  return bytes;
}

std::string contentOf(const std::wstring& sIniFile) {
  FileSystemObject& files = mdlFolderAndFile::fileSystem();
  return files.FileExists(sIniFile) ? files.ReadFile(sIniFile) : std::string();
}

// Cuts a value to the longest that a reader gets, without half a character at its end.
std::wstring shortened(const std::string& value) {
  if (value.size() <= kLongestValue) return fromAnsi(value);
  const std::wstring whole = fromAnsi(value.substr(0, kLongestValue));
  const bool isCut = fromAnsi(value.substr(0, kLongestValue + 1)).size() == whole.size();
  return isCut ? whole.substr(0, whole.size() - 1) : whole;
}

}  // namespace

void WriteIniValue(const std::wstring& sIniFile, std::wstring& sSection, std::wstring& sKey,
                   std::wstring& sValue) {
  try {
    const std::string section = throughCodePage(sSection);
    const std::string key = throughCodePage(sKey);
    const std::string value = throughCodePage(sValue);
    const std::string content = contentOf(sIniFile);
    const std::string changed = withProfileValue(content, section, key, value);
    if (changed != content) replaceFile(sIniFile, changed);
  } catch (const std::exception&) {
    // Not reported: see the header.
  }
}

std::wstring ReadIniValue(const std::wstring& sIniFile, std::wstring& sSection, std::wstring& sKey,
                          std::wstring& sDefault) {
  try {
    const std::string section = throughCodePage(sSection);
    const std::string key = throughCodePage(sKey);
    // This throws if the file cannot be read. The default must not overwrite a value in the file.
    std::wstring value = shortened(profileValue(contentOf(sIniFile), section, key));
    value.resize(std::min(value.find(L'\0'), value.size()));
    if (!value.empty()) return value;
    WriteIniValue(sIniFile, sSection, sKey, sDefault);
    return sDefault;
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace orvane::mdlINI
