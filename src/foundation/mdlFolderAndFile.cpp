#include "foundation/mdlFolderAndFile.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <string>
#include <vector>

#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/durable_file.h"
#include "foundation/letter_case.h"
#include "foundation/log.h"
#include "foundation/plain_text.h"
#include "foundation/program.h"

namespace orvane {

namespace mdlFolderAndFile {
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

// Path texts.

bool MakeFolderPath(const std::wstring& sPath) {
  if (sPath.empty()) throw systemFailure(ENOENT);
  FileSystemObject& files = fileSystem();
  const std::wstring path = existingPath(sPath);
  if (hasDot(path) ? files.FileExists(path) : files.FolderExists(path)) return true;

  const std::vector<std::wstring> elements = splitAtBackslash(path);
  const bool isServerPath = path.starts_with(L"\\\\");
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
  return sPath.substr(sPath.rfind(L'.') + 1);  // without a dot: npos + 1 is 0
}

// Files and folders.

namespace {

bool failInBox(const std::wstring& text, std::wstring_view title) {
  windowServices().showBox(text, title, BoxIcon::None);
  return false;
}

std::wstring failureOfTwoPaths(const std::exception& failure, const std::wstring& sSource,
                               const std::wstring& sTarget) {
  return description(failure) + L"\r" + sSource + L"\r" + sTarget;
}

}  // namespace

bool FolderExist(const std::wstring& sPath) {
  try {
    return fileSystem().FolderExists(existingPath(sPath));
  } catch (const std::exception& failure) {
    return failInBox(L"FolderExist Err:" + description(failure) + L" Path:" + sPath,
                     kApplicationTitle);
  }
}

bool FileExist(const std::wstring& sPath) {
  try {
    return fileSystem().FileExists(existingPath(sPath));
  } catch (const std::exception& failure) {
    return failInBox(L"FileExist Err:" + description(failure) + L" FileName:" + sPath,
                     kApplicationTitle);
  }
}

bool FileDelete(const std::wstring& sPath) {
  try {
    fileSystem().DeleteFile(existingPath(sPath));
    windowServices().yield();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

bool FolderDelete(const std::wstring& sPath) {
  try {
    fileSystem().DeleteFolder(existingPath(sPath));
    windowServices().yield();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

bool DialogFileCopy(const std::wstring& sSource, const std::wstring& sTarget) {
  try {
    const std::wstring target = existingPath(sTarget);
    // A copy to itself would first delete the only original.
    if (fileSystem().IsSamePlace(sSource, target)) throw systemFailure(EEXIST, sTarget);
    MakeFolderPath(target);
    while (fileSystem().FileExists(target)) fileSystem().DeleteFile(target);
    fileSystem().CopyFile(sSource, target);
    windowServices().yield();
    return true;
  } catch (const std::exception& failure) {
    return failInBox(failureOfTwoPaths(failure, sSource, sTarget), L"DialogFileCopy");
  }
}

bool FileMove(const std::wstring& sSource, const std::wstring& sTarget) {
  try {
    if (!DialogFileCopy(sSource, sTarget)) return false;
    syncWithFolders(existingPath(sTarget));  // before the only other copy goes
    return FileDelete(sSource);
  } catch (const std::exception& failure) {
    return failInBox(failureOfTwoPaths(failure, sSource, sTarget), L"FileMove");
  }
}

bool RenameFile(const std::wstring& sSource, const std::wstring& sTarget) {
  return FileMove(sSource, sTarget);
}

void LogWrite(const std::wstring& sMessage, const std::wstring& sSource, bool bShowBox,
              const std::wstring& sLogFile) {
  writeLogEntry(sMessage, sSource, sLogFile);
  if (!bShowBox) return;
  try {
    windowServices().showBox(sMessage, sSource, BoxIcon::Critical);
  } catch (...) {  // it could not be reported anywhere
  }
}

}  // namespace mdlFolderAndFile
}  // namespace orvane
