#include "foundation/utf8.h"

#include <cstddef>
#include <cstdint>

namespace orvane {
namespace {

constexpr wchar_t kReplacement = 0xFFFD;

struct Sequence {
  std::size_t length;  // 0 if the bytes are malformed
  wchar_t character;
};

// The character at the front of `bytes`. Overlong forms, surrogates and values above U+10FFFF are
// malformed.
Sequence firstSequence(std::string_view bytes) {
  const auto byteAt = [bytes](std::size_t i) { return static_cast<std::uint8_t>(bytes[i]); };
  const std::uint8_t lead = byteAt(0);
  if (lead < 0x80) return {1, static_cast<wchar_t>(lead)};

  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length) return {0, 0};
  auto value = static_cast<std::uint32_t>(lead & (0x7F >> length));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byteAt(i) & 0xC0) != 0x80) return {0, 0};
    value = (value << 6) | (byteAt(i) & 0x3FU);
  }
  constexpr std::uint32_t kSmallestOfLength[] = {0, 0, 0x80, 0x800, 0x10000};
  const auto character = static_cast<wchar_t>(value);
  if (value < kSmallestOfLength[length] || !isUnicodeScalar(character)) return {0, 0};
  return {length, character};
}

}  // namespace

std::wstring fromUtf8(std::string_view bytes, wchar_t (*malformedByte)(unsigned char)) {
  std::wstring text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const Sequence sequence = firstSequence(bytes);
    if (sequence.length == 0) {
      text += malformedByte(static_cast<unsigned char>(bytes[0]));
      bytes.remove_prefix(1);
    } else {
      text += sequence.character;
      bytes.remove_prefix(sequence.length);
    }
  }
  return text;
}

std::wstring fromUtf8(std::string_view bytes) {
  return fromUtf8(bytes, [](unsigned char) { return kReplacement; });
}

std::string toUtf8(std::wstring_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (const wchar_t character : text) {
    const auto value =
        static_cast<std::uint32_t>(isUnicodeScalar(character) ? character : kReplacement);
    const auto append = [&bytes](std::uint32_t byte) { bytes += static_cast<char>(byte); };
    if (value < 0x80) {
      append(value);
    } else if (value < 0x800) {
      append(0xC0 | (value >> 6));
      append(0x80 | (value & 0x3F));
    } else if (value < 0x10000) {
      append(0xE0 | (value >> 12));
      append(0x80 | ((value >> 6) & 0x3F));
      append(0x80 | (value & 0x3F));
    } else {
      append(0xF0 | (value >> 18));
      append(0x80 | ((value >> 12) & 0x3F));
      append(0x80 | ((value >> 6) & 0x3F));
      append(0x80 | (value & 0x3F));
    }
  }
  return bytes;
}

}  // namespace orvane
