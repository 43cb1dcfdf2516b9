#include "foundation/path_text.h"

#include <cerrno>

#include "foundation/Failure.h"
#include "foundation/utf8_text.h"

namespace orvane {
namespace {

constexpr wchar_t kEscapeBase = 0xDC00;

wchar_t escaped(unsigned char byte) {
  return static_cast<wchar_t>(kEscapeBase + byte);
}

// Only bytes that `entryText` escapes have an escape, so none can bring in a separator or a NUL.
bool isEscape(wchar_t character) {
  return character == escaped('\\') ||
         (character >= kEscapeBase + 0x80 && character <= kEscapeBase + 0xFF);
}

}  // namespace

std::filesystem::path nativePath(std::wstring_view pathText) {
  std::string native;
  std::size_t plainBegin = 0;
  const auto endPlain = [&](std::size_t end) {
    native += toUtf8(pathText.substr(plainBegin, end - plainBegin));
    plainBegin = end + 1;
  };
  for (std::size_t i = 0; i < pathText.size(); ++i) {
    const wchar_t character = pathText[i];
    if (character == L'\0') throw systemFailure(EINVAL, pathText);
    if (character == L'\\') {
      endPlain(i);
      native += '/';
    } else if (isEscape(character)) {
      endPlain(i);
      native += static_cast<char>(character - kEscapeBase);
    } else if (!isUnicodeScalar(character)) {
      throw systemFailure(EILSEQ, pathText);
    }
  }
  endPlain(pathText.size());
  return native;
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
