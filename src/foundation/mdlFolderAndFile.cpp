#include "foundation/mdlFolderAndFile.h"

#include <cerrno>
#include <exception>

#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/existing_path.h"
#include "foundation/program.h"

namespace orvane {

std::unique_ptr<FileSystemObject> gFileSystem;

namespace mdlFolderAndFile {
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

FileSystemObject& fileSystem() {
  if (!gFileSystem) gFileSystem = std::make_unique<FileSystemObject>();
  return *gFileSystem;
}

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
    // A copy onto itself would begin with the deletion of the only original.
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
    return DialogFileCopy(sSource, sTarget) && FileDelete(sSource);
  } catch (const std::exception& failure) {
    return failInBox(failureOfTwoPaths(failure, sSource, sTarget), L"FileMove");
  }
}

bool RenameFile(const std::wstring& sSource, const std::wstring& sTarget) {
  try {
    return FileMove(sSource, sTarget);
  } catch (const std::exception& failure) {
    return failInBox(L"RenameFile Err:" + description(failure) + L" FileName:" + sSource,
                     kApplicationTitle);
  }
}

}  // namespace mdlFolderAndFile
}  // namespace orvane
