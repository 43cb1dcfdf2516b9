#include "settings/mdlINI.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <vector>

#include "foundation/durable_file.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/plain_text.h"
#include "foundation/text_encoding.h"

namespace orvane::mdlINI {

std::wstring IniFilePath;

// The text of an INI file.

namespace {

// Blanks, "=", ";" and the quotes are below 0x40, where the trail byte of a pair cannot be, so they
// can be searched byte by byte. "]" and letters cannot.
constexpr std::string_view kSpaces = " \t";

bool isLeadByte(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x81 && byte <= 0xFE;
}

std::string lowerCase(std::string_view text) {
  std::string result(text);
  for (std::size_t i = 0; i < result.size(); ++i) {
    if (isLeadByte(result[i])) {
      ++i;
    } else if (result[i] >= 'A' && result[i] <= 'Z') {
      result[i] = static_cast<char>(result[i] + ('a' - 'A'));
    }
  }
  return result;
}

bool isSameName(std::string_view a, std::string_view b) {
  return lowerCase(trimmed(a, kSpaces)) == lowerCase(trimmed(b, kSpaces));
}

// One line of a file: `begin` to `end` without its line end; `next` is the begin of the next line.
struct Line {
  std::size_t begin, end, next;
  std::string_view text;  // without outer blanks
};

std::vector<Line> linesOf(std::string_view content) {
  std::vector<Line> lines;
  for (std::size_t begin = 0; begin < content.size();) {
    const std::size_t newLine = content.find('\n', begin);
    const std::size_t next = newLine == content.npos ? content.size() : newLine + 1;
    std::size_t end = newLine == content.npos ? content.size() : newLine;
    if (end > begin && content[end - 1] == '\r') --end;
    lines.push_back({begin, end, next, trimmed(content.substr(begin, end - begin), kSpaces)});
    begin = next;
  }
  return lines;
}

// The name in "[name]".
std::optional<std::string_view> sectionName(const Line& line) {
  if (!line.text.starts_with('[')) return std::nullopt;
  for (std::size_t i = 1; i < line.text.size(); ++i) {
    if (line.text[i] == ']') return line.text.substr(1, i - 1);
    if (isLeadByte(line.text[i])) ++i;
  }
  return std::nullopt;
}

bool isKey(const Line& line, std::string_view key) {
  const std::size_t equals = line.text.find('=');
  return equals != line.text.npos && !line.text.starts_with(';') &&
         isSameName(line.text.substr(0, equals), key);
}

// Where a key is, or where it must be inserted.
struct Place {
  std::optional<Line> keyLine;
  std::optional<std::size_t> sectionEnd;  // after the last non-empty line of the section
};

Place find(std::string_view content, std::string_view section, std::string_view key) {
  Place place;
  for (const Line& line : linesOf(content)) {
    const auto name = sectionName(line);
    if (name && place.sectionEnd) break;
    if (name && isSameName(*name, section)) place.sectionEnd = line.next;
    if (name || !place.sectionEnd) continue;
    if (isKey(line, key)) {
      place.keyLine = line;
      break;
    }
    if (!line.text.empty()) place.sectionEnd = line.next;
  }
  return place;
}

std::string_view lineEndOf(std::string_view content) {
  const std::size_t newLine = content.find('\n');
  const bool isBare = newLine != content.npos && (newLine == 0 || content[newLine - 1] != '\r');
  return isBare ? "\n" : "\r\n";
}

std::string_view withoutQuotes(std::string_view value) {
  const bool isQuoted = value.size() >= 2 && value.front() == value.back() &&
                        (value.front() == '"' || value.front() == '\'');
  return isQuoted ? value.substr(1, value.size() - 2) : value;
}

}  // namespace

std::string profileValue(std::string_view content, std::string_view section, std::string_view key) {
  const std::optional<Line> line = find(content, section, key).keyLine;
  if (!line) return {};
  return std::string(withoutQuotes(trimmed(line->text.substr(line->text.find('=') + 1), kSpaces)));
}

std::string withProfileValue(std::string_view content, std::string_view section,
                             std::string_view key, std::string_view value) {
  const Place place = find(content, section, key);
  std::string result(content);
  if (place.keyLine) {
    const std::size_t valueBegin = content.find('=', place.keyLine->begin) + 1;
    return result.replace(valueBegin, place.keyLine->end - valueBegin, value);
  }

  const std::string_view lineEnd = lineEndOf(content);
  const std::size_t position = place.sectionEnd.value_or(content.size());
  std::string lines;
  if (content.substr(0, position).ends_with('\r')) {  // half a line end, at the end of the file
    lines.append("\n");
  } else if (position > 0 && content[position - 1] != '\n') {
    lines.append(lineEnd);
  }
  if (!place.sectionEnd) lines.append("[").append(section).append("]").append(lineEnd);
  lines.append(key).append("=").append(value).append(lineEnd);
  return result.insert(position, lines);
}

// Keys of a file.

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
