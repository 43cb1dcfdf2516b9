// The operations of FileSystemObject that move bytes.

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
#include "foundation/FileSystemObject.h"
#include "foundation/atomic_file.h"
#include "foundation/path_text.h"

namespace orvane {
namespace {

constexpr std::size_t kLargestTextFile = std::size_t{64} << 20;
constexpr std::size_t kReadBlock = std::size_t{16} << 10;
constexpr std::size_t kCopyBlock = std::size_t{1} << 20;

void copyBytes(const FileDescriptor& source, const FileDescriptor& target) {
  std::vector<char> block(kCopyBlock);
  while (const std::size_t count = source.read(block.data(), block.size())) {
    target.writeAll({block.data(), count});
  }
}

}  // namespace

void FileSystemObject::CopyFile(const std::wstring& source, const std::wstring& target) {
  if (IsSamePlace(source, target)) throw systemFailure(EEXIST, target);
  const FileDescriptor in = FileDescriptor::openRegularFile(source);
  struct stat status {};
  if (fstat(in.number(), &status) != 0) throw systemFailure(errno, source);

  FileDescriptor out(target, O_WRONLY | O_CREAT | O_TRUNC, status.st_mode & 0777);
  try {
    copyBytes(in, out);
    out.close();
  } catch (...) {
    unlink(nativePath(target).c_str());
    throw;
  }
}

std::string FileSystemObject::ReadFile(const std::wstring& path) {
  const FileDescriptor file = FileDescriptor::openRegularFile(path);
  std::string content;
  std::vector<char> block(kReadBlock);
  while (const std::size_t count = file.read(block.data(), block.size())) {
    if (content.size() + count > kLargestTextFile) throw systemFailure(EFBIG, path);
    content.append(block.data(), count);
  }
  return content;
}

void FileSystemObject::WriteFile(const std::wstring& path, std::string_view bytes) {
  replaceFile(path, bytes);
}

void FileSystemObject::CreateFile(const std::wstring& path) {
  FileDescriptor(path, O_WRONLY | O_CREAT).close();
}

void FileSystemObject::AppendFile(const std::wstring& path, std::string_view bytes) {
  FileDescriptor file(path, O_WRONLY | O_APPEND);
  file.writeAll(bytes);
  file.close();
}

}  // namespace orvane
