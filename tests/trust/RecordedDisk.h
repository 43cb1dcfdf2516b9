#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "trust/disk_journal.h"

namespace orvane::test {

/// A folder, what a program changed in it, and what a power cut can leave of that.
///
/// The model is what POSIX promises; a real file system loses less. A flush of a file (fsync,
/// fdatasync) brings its content to the disk, not its name. A flush of a folder brings its entries,
/// not the content of its files. syncfs and sync bring everything. Until then every write, change
/// of size and change of an entry reaches the disk or does not, whatever the others do, and a write
/// may arrive in part. A rename is one change; between two folders, one of each, and until both are
/// flushed the old name can be left. Modes, owners and times are not modelled.
class RecordedDisk {
 public:
  /// What a power cut has left in the folder.
  struct Cut {
    std::string description;
    std::set<std::string> notes;  ///< made before the cut
    bool isAtEnd;                 ///< after everything that was recorded
  };
  using Judge = std::function<bool(const Cut&)>;

  /// Remembers the folder as it is, as flushed.
  explicit RecordedDisk(std::filesystem::path folder);
  ~RecordedDisk();
  RecordedDisk(const RecordedDisk&) = delete;
  RecordedDisk& operator=(const RecordedDisk&) = delete;

  /// Where to record what is done in the folder now.
  std::filesystem::path journal() const { return folder_.native() + ".journal"; }

  /// Cuts the power after every entry of the journal: puts into the folder what is left, calls
  /// `judge`, and stops if that returns false. It does so for several choices of what is lost of
  /// the unflushed changes: all; all but the last; and `choices` random ones. What is left is
  /// judged once. Throws if the journal does not explain what was in the folder before.
  void cutPower(int choices, const Judge& judge);

 private:
  class Inode;
  using Choice = std::function<double(std::size_t change)>;  ///< how much of it arrives, 0 to 1
  using Tree = std::map<std::string, std::string>;           ///< as of ExportStation::contentOf

  void readFolder(const std::filesystem::path& place, Inode& inode);
  void add(std::size_t number, const JournalEntry& entry, const std::string& text);
  void rename(std::size_t number, const std::string& from, const std::string& to);
  Inode& folderOf(const std::string& place) const;
  Tree treeAfter(const Choice& choice) const;

  std::filesystem::path folder_;
  std::shared_ptr<Inode> root_;
  std::map<std::uint64_t, std::shared_ptr<Inode>> inodes_;
  std::set<std::string> notes_;
};

}  // namespace orvane::test
