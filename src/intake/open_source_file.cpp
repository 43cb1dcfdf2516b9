#include "intake/open_source_file.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
#include "foundation/plain_text.h"
#include "intake/OnePageScan.h"
#include "intake/PdfScan.h"
#include "intake/TiffScan.h"
#include "intake/jpeg_page.h"
#include "intake/png_page.h"

namespace orvane {
namespace {

using namespace std::string_view_literals;

// A PDF file may begin with other bytes, but not with more than these (ISO 32000-1 annex H.3.4.1).
constexpr std::size_t kFrontBytes = 1024;

std::string frontOf(const std::wstring& path) {
  const FileDescriptor file = FileDescriptor::openRegularFile(path);
  std::string front(kFrontBytes + "%PDF-"sv.size() - 1, '\0');
  front.resize(file.readAt(0, {reinterpret_cast<std::uint8_t*>(front.data()), front.size()}));
  return front;
}

bool isTiff(std::string_view front) {
  return front.starts_with("II*\0"sv) || front.starts_with("MM\0*"sv) ||
         front.starts_with("II+\0"sv) || front.starts_with("MM\0+"sv);
}

bool isBitmap(std::string_view front) {
  constexpr std::size_t kReserved = 6;  // four bytes that are 0
  return front.starts_with("BM") && front.size() > 26 && front.substr(kReserved, 4) == "\0\0\0\0"sv;
}

bool isHeif(std::string_view front) {
  constexpr std::array kBrands{"heic"sv, "heix"sv, "hevc"sv, "hevx"sv, "heim"sv,
                               "heis"sv, "mif1"sv, "msf1"sv, "avif"sv};
  if (front.size() < 12 || front.substr(4, 4) != "ftyp") return false;
  return std::ranges::find(kBrands, front.substr(8, 4)) != kBrands.end();
}

// The name of a kind of image that is not taken; null for any other file.
const wchar_t* nameOfOtherKind(std::string_view front) {
  if (front.starts_with("\0\0\0\x0CjP  \r\n\x87\n"sv)) return L"JPEG 2000";
  if (front.starts_with("\xFF\x4F\xFF\x51"sv)) return L"JPEG 2000";
  if (front.starts_with("\x97JB2\r\n\x1A\n"sv)) return L"JBIG2";
  if (front.starts_with("GIF87a") || front.starts_with("GIF89a")) return L"GIF";
  if (front.starts_with("RIFF") && front.size() >= 12 && front.substr(8, 4) == "WEBP") {
    return L"WebP";
  }
  if (isHeif(front)) return L"HEIF";
  if (isBitmap(front)) return L"BMP";
  return nullptr;
}

bool isNamedLikeImage(const std::wstring& path) {
  constexpr std::array kExtensions{L"tif"sv, L"tiff"sv, L"jpg"sv,  L"jpeg"sv, L"png"sv,
                                   L"pdf"sv, L"jp2"sv,  L"j2k"sv,  L"jb2"sv,  L"jbig2"sv,
                                   L"bmp"sv, L"gif"sv,  L"webp"sv, L"heic"sv, L"heif"sv};
  const std::size_t dot = path.find_last_of(L".\\");
  if (dot == std::wstring::npos || path[dot] != L'.') return false;
  const std::wstring extension = asciiLowerCase(path.substr(dot + 1));
  return std::ranges::find(kExtensions, std::wstring_view(extension)) != kExtensions.end();
}

template <typename RequireHead, typename Encode>
std::unique_ptr<SourceFile> onePage(const std::wstring& path, RequireHead head, Encode encode) {
  return std::make_unique<OnePageScan>(path, OnePageScan::Kind{head, encode});
}

EncodedImage pageOfJpegFile(ByteView file) {
  return jpegPage(file, kMeaningInFile);
}

}  // namespace

std::unique_ptr<SourceFile> openSourceFile(const std::wstring& path) {
  const std::string front = frontOf(path);
  if (isTiff(front)) return openTiffScan(path);
  if (front.starts_with("\xFF\xD8\xFF")) return onePage(path, readJpegSummary, pageOfJpegFile);
  if (front.starts_with("\x89PNG\r\n\x1A\n")) return onePage(path, requirePng, pngPage);
  if (const wchar_t* kind = nameOfOtherKind(front)) {
    throw Failure(std::wstring(kind) + L" 图像不能登记");
  }
  if (front.find("%PDF-") != std::string::npos) return openPdfScan(path);
  if (!isNamedLikeImage(path)) return nullptr;
  throw Failure(front.empty() ? L"文件是空的" : L"不是图像文件：内容与扩展名不符");
}

}  // namespace orvane
