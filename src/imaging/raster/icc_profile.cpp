#include "imaging/raster/icc_profile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <utility>
#include <vector>

namespace orvane {
namespace {

constexpr std::size_t kHeaderBytes = 128;
constexpr std::size_t kTooManyBytes = std::size_t{4} << 20;
constexpr std::uint8_t kTooHighVersion = 5;

// Places in the header.
constexpr std::size_t kVersionPlace = 8;
constexpr std::size_t kClassPlace = 12;
constexpr std::size_t kSpacePlace = 16;
constexpr std::size_t kSignaturePlace = 36;

std::string_view signatureAt(ByteView profile, std::size_t place) {
  return {reinterpret_cast<const char*>(profile.data()) + place, 4};
}

std::uint32_t number32(ByteView profile, std::size_t place) {
  std::uint32_t number = 0;
  for (const std::uint8_t byte : profile.subspan(place, 4)) number = number << 8 | byte;
  return number;
}

// The colour space of a profile for such samples; empty for those that have none here. YCbCr
// samples and the entries of a palette are RGB in another form.
std::string_view spaceOf(Photometric photometric) {
  switch (photometric) {
    case Photometric::MinIsWhite:
    case Photometric::MinIsBlack:
      return "GRAY";
    case Photometric::Rgb:
    case Photometric::Palette:
    case Photometric::YCbCr:
      return "RGB ";
    case Photometric::Cmyk:
      return "CMYK";
  }
  return {};
}

// The tag table after the header and all that it refers to are in the profile (ICC.1 clause 6.2).
bool hasWholeTagTable(ByteView profile) {
  constexpr std::size_t kFront = kHeaderBytes + 4;
  constexpr std::size_t kEntryBytes = 12;
  if (profile.size() < kFront) return false;
  const std::size_t tags = number32(profile, kHeaderBytes);
  if (tags > (profile.size() - kFront) / kEntryBytes) return false;
  for (std::size_t entry = kFront; entry < kFront + tags * kEntryBytes; entry += kEntryBytes) {
    const std::uint64_t offset = number32(profile, entry + 4);
    if (offset + number32(profile, entry + 8) > profile.size()) return false;
  }
  return true;
}

// Four letters of a profile as they can stand in the log.
std::wstring letters(std::string_view signature) {
  std::wstring text;
  for (const char letter : signature) {
    text += letter >= ' ' && letter <= '~' ? static_cast<wchar_t>(letter) : L'?';
  }
  return text;
}

}  // namespace

std::wstring iccMisfit(ByteView profile, Photometric photometric) {
  if (profile.size() >= kTooManyBytes) return L"达到或超过4 MiB";
  if (profile.size() < kHeaderBytes || number32(profile, 0) != profile.size()) {
    return L"长度与其自述的不符";
  }
  if (signatureAt(profile, kSignaturePlace) != "acsp") return L"没有acsp标志";
  if (profile[kVersionPlace] >= kTooHighVersion) {
    return L"不支持第" + std::to_wstring(profile[kVersionPlace]) + L"版";
  }
  // These lead from one colour space to another, or name single colours.
  const std::string_view kind = signatureAt(profile, kClassPlace);
  if (kind == "link" || kind == "abst" || kind == "nmcl") {
    return L"类别" + letters(kind) + L"不描述图像";
  }
  const std::string_view space = signatureAt(profile, kSpacePlace);
  if (space != spaceOf(photometric)) return L"颜色空间" + letters(space) + L"与图像不符";
  return {};
}

std::wstring iccMisfitInPdf(ByteView profile) {
  constexpr std::string_view kClasses[] = {"scnr", "mntr", "prtr", "spac"};
  if (profile[kVersionPlace] > 2) {
    return L"PDF/A-1b不容许第" + std::to_wstring(profile[kVersionPlace]) + L"版";
  }
  const std::string_view kind = signatureAt(profile, kClassPlace);
  if (std::ranges::find(kClasses, kind) == std::end(kClasses)) {
    return L"PDF/A-1b不容许类别" + letters(kind);
  }
  return hasWholeTagTable(profile) ? L"" : L"PDF/A-1b不容许损坏的标签表";
}

namespace {

constexpr int kCurvePoints = 1024;

void put(std::string& out, std::uint32_t value, int width) {
  for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) {
    out += static_cast<char>(static_cast<std::uint8_t>(value >> shift));
  }
}

// Each number has 16 fraction bits (s15Fixed16Number).
std::string xyz(std::array<std::uint32_t, 3> fixedPoint) {
  std::string data("XYZ \0\0\0\0", 8);
  for (const std::uint32_t number : fixedPoint) put(data, number, 4);
  return data;
}

std::string text(std::string_view words) {
  std::string data("text\0\0\0\0", 8);
  return data.append(words).append(1, '\0');
}

// The text in ASCII; the Unicode and Macintosh texts are empty.
std::string descriptionText(std::string_view words) {
  std::string data("desc\0\0\0\0", 8);
  put(data, static_cast<std::uint32_t>(words.size() + 1), 4);
  return data.append(words).append(1 + 4 + 4 + 2 + 1 + 67, '\0');
}

// The transfer function of IEC 61966-2-1, from the stored value to linear light.
std::string toneCurve() {
  std::string data("curv\0\0\0\0", 8);
  put(data, kCurvePoints, 4);
  for (int i = 0; i < kCurvePoints; ++i) {
    const double stored = i / (kCurvePoints - 1.0);
    const double linear =
        stored <= 0.04045 ? stored / 12.92 : std::pow((stored + 0.055) / 1.055, 2.4);
    put(data, static_cast<std::uint32_t>(std::lround(linear * 65535)), 2);
  }
  return data;
}

std::string header(std::size_t size) {
  std::string data;
  put(data, static_cast<std::uint32_t>(size), 4);
  data.append(4, '\0');      // no preferred colour engine
  put(data, 0x02100000, 4);  // version 2.1
  data += "mntrRGB XYZ ";    // class, data space, connection space
  for (const std::uint32_t part : {2000U, 1U, 1U, 0U, 0U, 0U}) put(data, part, 2);
  data += "acsp";
  data.append(28, '\0');  // platform, flags, device, attributes, perceptual intent
  for (const std::uint32_t d50 : {0xF6D6U, 0x10000U, 0xD32DU}) put(data, d50, 4);
  return data.append(128 - data.size(), '\0');
}

}  // namespace

std::string srgbProfile() {
  // The white point D65 and the primaries, adapted to D50 by the linear Bradford transform.
  const std::vector<std::pair<std::string_view, std::string>> tags{
      {"desc", descriptionText("sRGB IEC61966-2.1")},
      {"cprt", text("No copyright, use freely")},
      {"wtpt", xyz({0xF351, 0x10000, 0x116CC})},
      {"rXYZ", xyz({0x6FA2, 0x38F5, 0x0390})},
      {"gXYZ", xyz({0x6299, 0xB785, 0x18DA})},
      {"bXYZ", xyz({0x24A0, 0x0F84, 0xB6CF})},
      {"rTRC", toneCurve()},
  };
  constexpr std::size_t kTableEntries = 9;  // green and blue share the curve of red
  std::string table;
  std::string data;
  put(table, kTableEntries, 4);
  const auto enter = [&](std::string_view signature, std::size_t offset, std::size_t size) {
    table.append(signature);
    put(table, static_cast<std::uint32_t>(offset), 4);
    put(table, static_cast<std::uint32_t>(size), 4);
  };
  constexpr std::size_t kDataOffset = 128 + 4 + 12 * kTableEntries;
  for (const auto& [signature, content] : tags) {
    const std::size_t offset = kDataOffset + data.size();
    enter(signature, offset, content.size());
    data.append(content).append((4 - content.size() % 4) % 4, '\0');
    if (signature != "rTRC") continue;
    enter("gTRC", offset, content.size());
    enter("bTRC", offset, content.size());
  }
  return header(kDataOffset + data.size()) + table + data;
}

}  // namespace orvane
