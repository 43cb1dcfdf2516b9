#include "trust/RecordedDisk.h"

#include <algorithm>
#include <fstream>
#include <random>
#include <stdexcept>
#include <sys/stat.h>
#include <utility>
#include <vector>

#include "export/ExportStation.h"

namespace orvane::test {

/// A file or a folder: what is flushed, and the changes since.
class RecordedDisk::Inode {
 public:
  using Entries = std::map<std::string, std::shared_ptr<Inode>>;

  struct Change {
    std::size_t number;  // of the entry of the journal
    JournalEntry::Kind kind;
    std::uint64_t offset = 0;
    std::string text = {};  // the bytes, or a name
    std::shared_ptr<Inode> named = {};
    std::string newName = {};
  };

  explicit Inode(bool folder) : isFolder(folder) {}

  const bool isFolder;
  std::string content;
  Entries entries;
  std::vector<Change> unflushed;

  void flush() {
    for (const Change& change : std::exchange(unflushed, {})) {
      apply(change, 1, content);
      apply(change, entries);
    }
  }

  std::string contentAfter(const Choice& choice) const {
    std::string after = content;
    for (const Change& change : unflushed) apply(change, choice(change.number), after);
    return after;
  }

  Entries entriesAfter(const Choice& choice) const {
    Entries after = entries;
    for (const Change& change : unflushed) {
      if (choice(change.number) == 1) apply(change, after);
    }
    return after;
  }

 private:
  using Kind = JournalEntry::Kind;

  static void apply(const Change& change, double part, std::string& bytes) {
    if (change.kind == Kind::Resize && part == 1) bytes.resize(change.offset);
    const auto size = static_cast<std::size_t>(part * static_cast<double>(change.text.size()));
    if (change.kind != Kind::Write || size == 0) return;
    bytes.resize(std::max(bytes.size(), static_cast<std::size_t>(change.offset) + size));
    bytes.replace(change.offset, size, change.text, 0, size);
  }

  static void apply(const Change& change, Entries& entries) {
    if (change.kind == Kind::CreateFile) entries[change.text] = change.named;
    if (change.kind == Kind::Remove || change.kind == Kind::Rename) entries.erase(change.text);
    if (change.kind == Kind::Rename) entries[change.newName] = change.named;
  }
};

namespace {

namespace fs = std::filesystem;
using Kind = JournalEntry::Kind;

double all(std::size_t) {
  return 1;
}

std::uint64_t inodeOf(const fs::path& place) {
  struct stat status {};
  if (lstat(place.c_str(), &status) != 0) throw std::runtime_error(place.string() + " is gone");
  return status.st_ino;
}

// Without a separator at the end.
fs::path cleaned(const std::string& place) {
  const fs::path path = fs::path(place).lexically_normal();
  return path.has_filename() ? path : path.parent_path();
}

std::string nameIn(const std::string& place) {
  return cleaned(place).filename();
}

// How much of an unflushed change is there after a cut at entry `number`.
double partOf(std::size_t change, std::size_t number, int choice) {
  if (choice == 0) return 0;
  if (choice == 1) return change == number ? 1 : 0;
  std::seed_seq seed{change, number, static_cast<std::size_t>(choice)};
  std::minstd_rand random(seed);
  return std::clamp(std::uniform_real_distribution<>(-1, 2)(random), 0., 1.);
}

std::size_t fingerprint(const std::map<std::string, std::string>& tree, std::size_t notes,
                        bool isAtEnd) {
  std::string hashes = std::to_string(notes) + (isAtEnd ? "!" : "");
  for (const auto& [name, bytes] : tree) {
    hashes += "/" + name + "/" + std::to_string(std::hash<std::string>()(bytes));
  }
  return std::hash<std::string>()(hashes);
}

void put(const std::map<std::string, std::string>& tree, const fs::path& folder) {
  for (const auto& entry : fs::directory_iterator(folder)) fs::remove_all(entry.path());
  for (const auto& [name, bytes] : tree) {
    if (bytes == ExportStation::kFolder) {
      fs::create_directory(folder / name);
    } else {
      writeBytes(folder / name, bytes);
    }
  }
}

}  // namespace

RecordedDisk::RecordedDisk(fs::path folder)
    : folder_(std::move(folder)), root_(std::make_shared<Inode>(true)) {
  inodes_[inodeOf(folder_)] = root_;
  readFolder(folder_, *root_);
  fs::remove(journal());
}

RecordedDisk::~RecordedDisk() {
  std::error_code ignored;
  fs::remove(journal(), ignored);
}

void RecordedDisk::readFolder(const fs::path& place, Inode& folder) {
  for (const auto& entry : fs::directory_iterator(place)) {
    const auto found = std::make_shared<Inode>(entry.is_directory());
    folder.entries[entry.path().filename()] = inodes_[inodeOf(entry.path())] = found;
    if (found->isFolder) {
      readFolder(entry.path(), *found);
    } else {
      found->content = readBytes(entry.path());
    }
  }
}

void RecordedDisk::cutPower(int choices, const Judge& judge) {
  const Tree seen = ExportStation::contentOf(folder_);
  std::ifstream entries(journal(), std::ios::binary);
  if (entries.peek() == std::ifstream::traits_type::eof()) {
    throw std::runtime_error("nothing was recorded");
  }
  std::set<std::size_t> judged;
  JournalEntry entry{};
  for (std::size_t number = 1; entries.read(reinterpret_cast<char*>(&entry), sizeof entry);
       ++number) {
    std::string text(entry.length, '\0');
    entries.read(text.data(), static_cast<std::streamsize>(text.size()));
    add(number, entry, text);
    const bool isAtEnd = entries.peek() == std::ifstream::traits_type::eof();
    if (isAtEnd && treeAfter(all) != seen) throw std::runtime_error("a change was not recorded");
    for (int choice = 0; choice < choices + 2; ++choice) {
      const Tree left =
          treeAfter([&](std::size_t change) { return partOf(change, number, choice); });
      if (!judged.insert(fingerprint(left, notes_.size(), isAtEnd)).second) continue;
      put(left, folder_);
      const std::string description =
          "after entry " + std::to_string(number) + ", choice " + std::to_string(choice);
      if (!judge({description, notes_, isAtEnd})) return;
    }
  }
}

void RecordedDisk::add(std::size_t number, const JournalEntry& entry, const std::string& text) {
  switch (entry.kind) {
    case Kind::CreateFile:
    case Kind::CreateFolder: {
      const auto created = std::make_shared<Inode>(entry.kind == Kind::CreateFolder);
      inodes_[entry.inode] = created;
      folderOf(text).unflushed.push_back({number, Kind::CreateFile, 0, nameIn(text), created});
      return;
    }
    case Kind::Remove:
      folderOf(text).unflushed.push_back({number, Kind::Remove, 0, nameIn(text)});
      return;
    case Kind::Rename:
      rename(number, text.substr(0, text.find('\0')), text.substr(text.find('\0') + 1));
      return;
    case Kind::Write:
    case Kind::Resize:
      inodes_.at(entry.inode)->unflushed.push_back({number, entry.kind, entry.offset, text});
      return;
    case Kind::Flush:
      inodes_.at(entry.inode)->flush();
      return;
    case Kind::FlushAll:
      for (const auto& [key, inode] : inodes_) inode->flush();
      return;
    case Kind::Note:
      notes_.insert(text);
      return;
  }
}

void RecordedDisk::rename(std::size_t number, const std::string& from, const std::string& to) {
  Inode& folder = folderOf(from);
  Inode& newFolder = folderOf(to);
  const auto named = folder.entriesAfter(all).at(nameIn(from));
  if (&folder == &newFolder) {
    folder.unflushed.push_back({number, Kind::Rename, 0, nameIn(from), named, nameIn(to)});
    return;
  }
  folder.unflushed.push_back({number, Kind::Remove, 0, nameIn(from)});
  newFolder.unflushed.push_back({number, Kind::CreateFile, 0, nameIn(to), named});
}

RecordedDisk::Inode& RecordedDisk::folderOf(const std::string& place) const {
  std::shared_ptr<Inode> inode = root_;
  const fs::path folder = cleaned(place).parent_path();
  for (const fs::path& name : folder.lexically_relative(folder_)) {
    if (name != ".") inode = inode->entriesAfter(all).at(name);
  }
  return *inode;
}

RecordedDisk::Tree RecordedDisk::treeAfter(const Choice& choice) const {
  Tree tree;
  const std::function<void(const fs::path&, const Inode&)> addFolder = [&](const fs::path& place,
                                                                           const Inode& folder) {
    for (const auto& [name, inode] : folder.entriesAfter(choice)) {
      tree[place / name] = inode->isFolder ? ExportStation::kFolder : inode->contentAfter(choice);
      if (inode->isFolder) addFolder(place / name, *inode);
    }
  };
  addFolder("", *root_);
  return tree;
}

}  // namespace orvane::test
