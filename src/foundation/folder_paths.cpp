// The operations of mdlFolderAndFile on path texts.

#include <cerrno>
#include <vector>

#include "foundation/Failure.h"
#include "foundation/letter_case.h"
#include "foundation/mdlFolderAndFile.h"

namespace orvane::mdlFolderAndFile {
namespace {

std::vector<std::wstring> splitAtBackslash(const std::wstring& path) {
  std::vector<std::wstring> elements;
  std::size_t begin = 0;
  for (std::size_t end = path.find(L'\\'); end != path.npos; end = path.find(L'\\', begin)) {
    elements.push_back(path.substr(begin, end - begin));
    begin = end + 1;
  }
  elements.push_back(path.substr(begin));
  return elements;
}

bool hasDot(const std::wstring& text) {
  return text.find(L'.') != text.npos;
}

}  // namespace

bool MakeFolderPath(const std::wstring& sPath) {
  if (sPath.empty()) throw systemFailure(ENOENT);
  FileSystemObject& files = fileSystem();
  if (hasDot(sPath) ? files.FileExists(sPath) : files.FolderExists(sPath)) return true;

  const std::vector<std::wstring> elements = splitAtBackslash(sPath);
  const bool isServerPath = sPath.starts_with(L"\\\\");
  std::wstring current = isServerPath ? L"\\\\" + elements[2] : elements[0];
  for (std::size_t i = isServerPath ? 3 : 1; i < elements.size(); ++i) {
    current += L"\\" + elements[i];
    const bool isFileName = i + 1 == elements.size() && hasDot(elements[i]);
    if (!isFileName && !files.FolderExists(current)) files.CreateFolder(current);
  }
  return true;
}

std::wstring ParentPath(const std::wstring& sPath, const std::wstring& sSeparator) {
  const std::size_t position = asciiLowerCase(sPath).rfind(asciiLowerCase(sSeparator));
  return position == sPath.npos ? std::wstring() : sPath.substr(0, position + sSeparator.size());
}

std::wstring AppendBackslash(const std::wstring& sPath) {
  return sPath.ends_with(L'\\') ? sPath : sPath + L"\\";
}

std::wstring FileExtension(const std::wstring& sPath) {
  return sPath.substr(sPath.rfind(L'.') + 1);  // without a dot: npos + 1 is 0, so the whole
}

}  // namespace orvane::mdlFolderAndFile
