#include "foundation/paths.h"

#include <cerrno>

#include "foundation/Failure.h"
#include "foundation/utf8.h"

namespace orvane {
namespace {

constexpr wchar_t kEscapeBase = 0xDC00;

wchar_t escaped(unsigned char byte) {
  return static_cast<wchar_t>(kEscapeBase + byte);
}

// Only the bytes that `entryText` escapes, so that no escape becomes a separator or a NUL.
bool isEscape(wchar_t character) {
  return character == escaped('\\') ||
         (character >= kEscapeBase + 0x80 && character <= kEscapeBase + 0xFF);
}

}  // namespace

std::string nativePath(std::wstring_view pathText) {
  std::string native;
  native.reserve(pathText.size());
  for (const wchar_t character : pathText) {
    if (character == L'\0') throw systemFailure(EINVAL, pathText);
    if (character == L'\\') {
      native += '/';
    } else if (character > 0 && character < 0x80) {
      native += static_cast<char>(character);
    } else if (isEscape(character)) {
      native += static_cast<char>(character - kEscapeBase);
    } else if (isUnicodeScalar(character)) {
      native += toUtf8({&character, 1});
    } else {
      throw systemFailure(EILSEQ, pathText);
    }
  }
  return native;
}

std::wstring nativeText(std::wstring_view pathText) {
  return fromUtf8(std::filesystem::path(nativePath(pathText)).lexically_normal().native());
}

std::wstring entryText(std::string_view entryName) {
  std::wstring text = fromUtf8(entryName, escaped);
  for (wchar_t& character : text) {
    if (character == L'\\') character = escaped('\\');
  }
  return text;
}

std::wstring pathText(const std::filesystem::path& native) {
  std::wstring text = entryText(native.native());
  for (wchar_t& character : text) {
    if (character == L'/') character = L'\\';
  }
  return text;
}

}  // namespace orvane
