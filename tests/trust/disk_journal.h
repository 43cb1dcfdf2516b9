#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <sys/types.h>

/// The journal of a disk: what a program changed below one folder and what it flushed, in order.
/// The library of faults writes it, a RecordedDisk reads it.
namespace orvane::test {

/// The fixed part of an entry; `length` bytes follow.
struct JournalEntry {
  enum class Kind : std::uint64_t {
    CreateFile,    ///< followed by the path
    CreateFolder,  ///< followed by the path
    Remove,        ///< of a name; followed by the path
    Rename,        ///< followed by both paths, with a NUL between them
    Write,         ///< followed by the bytes
    Resize,        ///< to `offset`
    Flush,         ///< of the content of a file, or of the entries of a folder
    FlushAll,
    Note,  ///< followed by its text
  };
  Kind kind;
  std::uint64_t inode, offset, length;
};

namespace journal {

/// Opens the journal of this process.
void open(const char* file);
bool isOpen();

void createdFile(int descriptor, std::string_view place);
void createdFolder(const std::string& place);
void removed(std::string_view place);
void renamed(std::string_view from, std::string_view to);
/// `offset` is negative for a write at the position of the descriptor, which is past it now.
void wrote(int descriptor, const void* bytes, std::size_t size, off_t offset);
void resized(int descriptor, off_t size);
void flushed(int descriptor);
void flushedAll();

}  // namespace journal

extern "C" {

/// Starts to record what changes below the folder that was given to `armFaults`. Flushes are
/// recorded and not made.
void recordDisk(const char* journal);

/// Adds a note, for example of what the program has promised by now. Does nothing without a
/// journal.
void noteInJournal(const char* text);
}

}  // namespace orvane::test
