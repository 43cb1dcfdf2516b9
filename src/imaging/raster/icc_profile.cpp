#include "imaging/raster/icc_profile.h"

#include <algorithm>
#include <iterator>

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

}  // namespace orvane
