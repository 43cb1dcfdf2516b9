#include "trust/disk_journal.h"

#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace orvane::test {
namespace journal {
namespace {

using Kind = JournalEntry::Kind;

int file = -1;

// One write, because the threads and processes of a program share the journal.
void add(Kind kind, std::uint64_t inode, off_t offset, std::string_view text) {
  JournalEntry entry{kind, inode, static_cast<std::uint64_t>(offset), text.size()};
  const iovec pieces[] = {{&entry, sizeof entry}, {const_cast<char*>(text.data()), text.size()}};
  if (writev(file, pieces, 2) != static_cast<ssize_t>(sizeof entry + text.size())) std::abort();
}

std::uint64_t inodeOf(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 ? status.st_ino : 0;
}

}  // namespace

void open(const char* path) {
  file = ::open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (file < 0) std::abort();
}

bool isOpen() {
  return file >= 0;
}

void createdFile(int descriptor, std::string_view place) {
  add(Kind::CreateFile, inodeOf(descriptor), 0, place);
}

void createdFolder(const std::string& place) {
  struct stat status {};
  if (stat(place.c_str(), &status) != 0) std::abort();
  add(Kind::CreateFolder, status.st_ino, 0, place);
}

void removed(std::string_view place) {
  add(Kind::Remove, 0, 0, place);
}

void renamed(std::string_view from, std::string_view to) {
  add(Kind::Rename, 0, 0, std::string(from) + '\0' + std::string(to));
}

void wrote(int descriptor, const void* bytes, std::size_t size, off_t offset) {
  if (offset < 0) offset = lseek(descriptor, 0, SEEK_CUR) - static_cast<off_t>(size);
  add(Kind::Write, inodeOf(descriptor), offset, {static_cast<const char*>(bytes), size});
}

void resized(int descriptor, off_t size) {
  add(Kind::Resize, inodeOf(descriptor), size, {});
}

void flushed(int descriptor) {
  add(Kind::Flush, inodeOf(descriptor), 0, {});
}

void flushedAll() {
  add(Kind::FlushAll, 0, 0, {});
}

}  // namespace journal

void recordDisk(const char* file) {
  journal::open(file);
}

void noteInJournal(const char* text) {
  if (journal::isOpen()) journal::add(JournalEntry::Kind::Note, 0, 0, text);
}

}  // namespace orvane::test
