#include "imaging/page/TiffMessages.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace orvane {
namespace {

// Warnings of libtiff 4.5 and libjpeg while they decode that are about the manner of writing, not
// about missing or broken pixels.
constexpr std::string_view kHarmlessWarnings[] = {
    "JPEG strip size exceeds expected dimensions",  // a last strip of full height
    "progressive mode",
    "unknown JFIF revision number",
    "Unknown Adobe color transform code",
    "Invalid SOS parameters for sequential JPEG",
    "Old-style LZW codes",
    "troublesome old-style JPEG compression mode",
    "subsampling inside JPEG data",
};

bool isHarmless(std::string_view warning) {
  return std::any_of(
      std::begin(kHarmlessWarnings), std::end(kHarmlessWarnings),
      [&](std::string_view part) { return warning.find(part) != std::string_view::npos; });
}

template <typename Text>
void print(Text& text, const char* module, const char* format, va_list values) {
  int length = 0;
  if (module != nullptr) length = std::snprintf(text.data(), text.size(), "%s: ", module);
  const auto begin = std::min<std::size_t>(length < 0 ? 0 : length, text.size() - 1);
  std::vsnprintf(text.data() + begin, text.size() - begin, format, values);
}

template <typename Text>
void keepFirst(Text& kept, const Text& text) {
  if (kept[0] == '\0') kept = text;
}

}  // namespace

void TiffMessages::clear() {
  *this = TiffMessages();
}

std::string TiffMessages::reason(const char* otherwise) const {
  if (error_[0] != '\0') return error_.data();
  if (warning_[0] != '\0') return warning_.data();
  return otherwise;
}

std::optional<std::string> TiffMessages::damage() const {
  if (damage_[0] == '\0') return std::nullopt;
  return damage_.data();
}

int TiffMessages::onError(tiff*, void* userData, const char* module, const char* format,
                          va_list values) {
  auto& messages = *static_cast<TiffMessages*>(userData);
  if (messages.error_[0] != '\0') return 1;
  print(messages.error_, module, format, values);
  keepFirst(messages.damage_, messages.error_);
  return 1;
}

int TiffMessages::onWarning(tiff*, void* userData, const char* module, const char* format,
                            va_list values) {
  auto& messages = *static_cast<TiffMessages*>(userData);
  if (messages.damage_[0] != '\0') return 1;
  Text text{};
  print(text, module, format, values);
  keepFirst(messages.warning_, text);
  if (!isHarmless(text.data())) messages.damage_ = text;
  return 1;
}

}  // namespace orvane
