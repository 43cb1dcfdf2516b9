#include "export/OutputPreview.h"

#include <climits>
#include <filesystem>
#include <unistd.h>

#include "export/OutputNaming.h"
#include "foundation/Failure.h"
#include "foundation/paths.h"
#include "foundation/program.h"

namespace orvane {
namespace {

constexpr const wchar_t* kSampleBatch = L"2024-0001";
constexpr const wchar_t* kSampleDocument = L"0003";
constexpr std::int16_t kSamplePage = 2;
constexpr std::size_t kLongestShown = 400;
constexpr std::size_t kMostUnits = 255;  // of UTF-16 in a name, on the disks of Windows

std::wstring shownPath(const std::wstring& path) {
  std::wstring shown = nativeText(path);
  if (shown.size() > kLongestShown) shown.replace(kLongestShown, shown.npos, L"……");
  return shown;
}

std::wstring mask(const ExportForm& form) {
  return pageNumberMask(form.text(TextBox::LiuShui));
}

std::wstring sampleFile(const ExportForm& form, const std::wstring& pattern) {
  return outputFile(form.settings(), pattern, mask(form),
                    {kSampleBatch, kSampleDocument, kSamplePage});
}

// The name of the file alone, also if it contains separators of paths.
std::wstring sampleName(const ExportForm& form, const std::wstring& pattern) {
  const ExportSettings& settings = form.settings();
  const std::wstring stem =
      documentStem(pattern, kSampleBatch, kSampleDocument, settings.ReNameSp1, settings.ReNameSp2);
  const std::wstring path =
      settings.IsMutiPage ? multiPageFilePath({}, stem, settings.SaveFileType)
                          : pageFilePath({}, stem, kSamplePage, mask(form), settings.SaveFileType);
  return path.substr(1);
}

std::wstring sampleLines(const ExportForm& form) {
  const ExportSettings& settings = form.settings();
  if (settings.SavePath.empty()) return L"还没有选择成果输出文件夹。\n";
  const std::wstring file = sampleFile(form, form.renameTypeText());
  return std::wstring(L"例：档案 ") + kSampleBatch + L" 的第 " + kSampleDocument + L" 件，第 2 页" +
         (settings.IsMutiPage ? L"在这个文件里：\n" : L"存为：\n") + shownPath(file) + L"\n";
}

std::size_t utf16Units(const std::wstring& text) {
  std::size_t units = 0;
  for (const wchar_t c : text) units += c > 0xFFFF ? 2 : 1;
  return units;
}

std::wstring lengthWarning(const ExportForm& form, const std::wstring& pattern,
                           const OutputDisk& disk) {
  const std::wstring name = sampleName(form, pattern);
  const std::size_t bytes = nativePath(name).size();
  if (bytes > disk.longestName || utf16Units(name) > kMostUnits) {
    return L"⚠ 文件名太长（" + std::to_wstring(bytes) + L" 字节，最多 " +
           std::to_wstring(disk.longestName) + L" 字节），不能导出！请缩短分割符或页码位数。\n";
  }
  if (nativePath(sampleFile(form, pattern)).size() < PATH_MAX) return {};
  return L"⚠ 文件的路径太长，不能导出！请另选输出文件夹。\n";
}

// A folder of a name after "\" is created, one after "/" is not.
std::wstring separatorWarning(const ExportForm& form, const std::wstring& pattern) {
  const ExportSettings& settings = form.settings();
  const std::wstring used = documentStem(pattern, {}, {}, settings.ReNameSp1, settings.ReNameSp2);
  if (used.find(L'/') != used.npos) return L"⚠ 分割符里有 /，不能导出！请改掉。\n";
  if (used.find(L'\\') == used.npos) return {};
  const std::filesystem::path name = nativePath(sampleName(form, pattern));
  if (*name.lexically_normal().begin() == "..") {
    return L"⚠ 分割符里有 \\ 和 ..，文件会落到输出文件夹外面，不能导出！请改掉。\n";
  }
  return L"⚠ 分割符里有 \\，文件会落到另一个文件夹里。\n";
}

std::wstring warningLines(const ExportForm& form, const std::wstring& pattern,
                          const OutputDisk& disk) {
  const std::wstring place =
      disk.isInScanTree ? L"⚠ 输出位置在扫描件文件夹（Batchs）内，不能导出！请另选输出文件夹。\n"
                        : L"";
  return place + separatorWarning(form, pattern) + lengthWarning(form, pattern, disk) +
         collisionWarning(form.settings(), pattern, mask(form));
}

}  // namespace

OutputDisk examineOutputDisk(const std::wstring& SavePath) {
  OutputDisk disk;
  if (SavePath.empty()) return disk;
  try {
    const long longest = pathconf(nativePath(SavePath).c_str(), _PC_NAME_MAX);
    if (longest > 0) disk.longestName = static_cast<std::size_t>(longest);
    disk.isInScanTree =
        resolvedPlace(SavePath).isWithin(resolvedPlace(programFolder() + L"\\Batchs"));
  } catch (const Failure&) {  // the export will report it
  }
  return disk;
}

std::wstring namingPreview(const ExportForm& form, const OutputDisk& disk) {
  const std::wstring pattern = form.renameTypeText();
  try {
    return sampleLines(form) +
           (pattern.empty() ? L"⚠ 还没有选择命名，文件名里没有档案（件）名称！\n" : L"") +
           warningLines(form, pattern, disk);
  } catch (const Failure&) {
    return L"页码位数或分割符不能用，请改正。\n";
  }
}

std::wstring exampleName(const ExportForm& form, const std::wstring& pattern,
                         const OutputDisk& disk) {
  try {
    return sampleName(form, pattern) + (warningLines(form, pattern, disk).empty() ? L"" : L" ⚠");
  } catch (const Failure&) {
    return {};
  }
}

}  // namespace orvane
