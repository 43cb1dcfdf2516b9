#include "foundation/text_encoding.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iconv.h>

#include "foundation/Failure.h"

namespace orvane {
namespace {

// An iconv descriptor. Each conversion opens its own, so threads do not share one.
class Converter {
 public:
  Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {
    if (handle_ == reinterpret_cast<iconv_t>(-1)) throw systemFailure(errno);
  }
  ~Converter() { iconv_close(handle_); }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  // Converts up to the end of the input, or up to a malformed sequence or a character that the
  // target encoding does not have. Returns the number of bytes of `input` that were converted.
  std::size_t convert(std::string_view input, std::string& output) {
    char* in = const_cast<char*>(input.data());  // iconv takes char** and changes only the pointer
    std::size_t inLeft = input.size();
    for (;;) {
      char buffer[4096];
      char* out = buffer;
      std::size_t outLeft = sizeof buffer;
      const std::size_t result = iconv(handle_, &in, &inLeft, &out, &outLeft);
      const int error = errno;
      output.append(buffer, sizeof buffer - outLeft);
      if (result != static_cast<std::size_t>(-1) || error != E2BIG) break;
    }
    return input.size() - inLeft;
  }

 private:
  iconv_t handle_;
};

constexpr const char* kAnsiCodePage = "CP936";
constexpr const char* kWideText = "WCHAR_T";

std::string_view bytesOf(std::wstring_view text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

void appendWide(std::wstring& text, const std::string& bytes) {
  const std::size_t oldSize = text.size();
  text.resize(oldSize + bytes.size() / sizeof(wchar_t));
  bytes.copy(reinterpret_cast<char*>(text.data() + oldSize), bytes.size());
}

// The length of the malformed sequence at the front of `bytes`: 2 for a well-formed pair without a
// character, otherwise 1. A byte that cannot end a pair belongs to the following text.
std::size_t malformedLength(std::string_view bytes) {
  if (bytes.size() < 2) return 1;
  const auto lead = static_cast<unsigned char>(bytes[0]);
  const auto trail = static_cast<unsigned char>(bytes[1]);
  const bool isPair =
      lead >= 0x81 && lead <= 0xFE && trail >= 0x40 && trail <= 0xFE && trail != 0x7F;
  return isPair ? 2 : 1;
}

// "U+1F600", because the log cannot show the character itself.
std::wstring codePointName(wchar_t character) {
  char digits[9];
  const int length = std::snprintf(digits, sizeof digits, "%04X", static_cast<unsigned>(character));
  return L"U+" + std::wstring(digits, digits + length);
}

}  // namespace

std::wstring fromAnsi(std::string_view bytes) {
  std::wstring text;
  Converter converter(kWideText, kAnsiCodePage);
  while (!bytes.empty()) {
    std::string wide;
    bytes.remove_prefix(converter.convert(bytes, wide));
    appendWide(text, wide);
    if (bytes.empty()) break;
    text += L'\uFFFD';
    bytes.remove_prefix(malformedLength(bytes));
  }
  return text;
}

std::string toAnsi(std::wstring_view text) {
  std::string bytes;
  Converter converter(kAnsiCodePage, kWideText);
  while (!text.empty()) {
    text.remove_prefix(converter.convert(bytesOf(text), bytes) / sizeof(wchar_t));
    if (text.empty()) break;
    bytes += '?';
    text.remove_prefix(1);
  }
  return bytes;
}

std::string toAnsiStrict(std::wstring_view text) {
  std::string bytes;
  Converter converter(kAnsiCodePage, kWideText);
  const std::size_t converted = converter.convert(bytesOf(text), bytes) / sizeof(wchar_t);
  if (converted < text.size()) throw systemFailure(EILSEQ, codePointName(text[converted]));
  return bytes;
}

}  // namespace orvane
