// MoveFolder, in one step of the file system: at no moment is there a half-moved folder, and a
// folder that takes the place of another is whole when its name appears.

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

#include "foundation/Failure.h"
#include "foundation/FileSystemObject.h"
#include "foundation/path_text.h"

namespace orvane {

void FileSystemObject::MoveFolder(const std::wstring& source, const std::wstring& target) {
  const std::filesystem::path from = nativePath(source);
  const std::filesystem::path to = nativePath(target);
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return;
  if (errno != EEXIST) throw systemFailure(errno, target);
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_EXCHANGE) != 0) {
    throw systemFailure(errno, target);
  }
}

}  // namespace orvane
