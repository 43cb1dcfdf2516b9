// The operations on files and folders, with their boxes, silences and results.

#include <csignal>
#include <filesystem>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"
#include "support/AsOrdinaryUser.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;
using namespace mdlFolderAndFile;
using testing::ElementsAre;

class FileOperations : public testing::Test {
 protected:
  FileOperations() { outputOf("chmod 777 " + quoted(station.native())); }
  std::wstring at(const std::wstring& relative) const { return station.path(relative); }
  // The box of a copy, from paths below the station.
  Box copyBox(const std::wstring& reason, const std::wstring& source,
              const std::wstring& target) const {
    return {at(reason) + L"\r" + at(source) + L"\r" + at(target), L"DialogFileCopy", BoxIcon::None};
  }

  TempStation station;
  RecordingWindow window;
};

TEST_F(FileOperations, ExistenceTests) {
  writeBytes(station.native("file"), "x");
  fs::create_directories(station.native("folder"));
  fs::create_symlink("folder", station.native("to-folder"));
  fs::create_symlink("nowhere", station.native("broken"));
  fs::create_symlink("circle", station.native("circle"));
  outputOf("mkfifo " + quoted(station.native("pipe")));

  for (const wchar_t* folder : {L"folder", L"folder\\", L"to-folder"}) {
    EXPECT_TRUE(FolderExist(at(folder)) && !FileExist(at(folder)));
  }
  EXPECT_TRUE(FileExist(at(L"file")) && !FolderExist(at(L"file")));
  for (const std::wstring& path : {at(L"broken"), at(L"circle"), at(L"pipe"), at(L"file\\below"),
                                   at(L"missing"), at(std::wstring(300, L'n')), std::wstring()}) {
    EXPECT_FALSE(FolderExist(path) || FileExist(path)) << testing::PrintToString(path);
  }
  EXPECT_TRUE(window.boxes.empty());
}

TEST_F(FileOperations, AnExistenceTestThatFailsIsToldInABox) {
  writeBytes(station.native("closed/file"), "x");
  chmod(station.native("closed").c_str(), 0);
  const std::wstring path = at(L"closed\\file");
  {
    const AsOrdinaryUser user;
    EXPECT_FALSE(FolderExist(path));
    EXPECT_FALSE(FileExist(path));
  }
  EXPECT_THAT(window.boxes, ElementsAre(Box{L"FolderExist Err:Permission denied Path:" + path,
                                            kApplicationTitle, BoxIcon::None},
                                        Box{L"FileExist Err:Permission denied FileName:" + path,
                                            kApplicationTitle, BoxIcon::None}));
}

TEST_F(FileOperations, DeletesAreForcedAndSilent) {
  writeBytes(station.native("read-only"), "x");
  chmod(station.native("read-only").c_str(), 0400);
  writeBytes(station.native("kept"), "kept");
  fs::create_symlink("kept", station.native("link"));
  EXPECT_TRUE(FileDelete(at(L"read-only")));
  EXPECT_TRUE(FileDelete(at(L"link")));
  EXPECT_EQ(window.yields, 2);

  EXPECT_FALSE(FileDelete(at(L"read-only")));
  EXPECT_FALSE(FileDelete(at(L"")));
  EXPECT_FALSE(FolderDelete(at(L"missing")));
  EXPECT_FALSE(FolderDelete(at(L"kept")));
  EXPECT_EQ(window.yields, 2);
  EXPECT_TRUE(window.boxes.empty());
  EXPECT_EQ(readBytes(station.native("kept")), "kept");
}

TEST_F(FileOperations, AFolderGoesWithAllThatIsReadOnlyAndNoLinkIsFollowed) {
  writeBytes(station.native("outside/kept"), "kept");
  {
    const AsOrdinaryUser user;
    writeBytes(station.native("doomed/a/b/file"), "x");
    writeBytes(station.native("doomed/unreadable/file"), "x");
    fs::create_directory_symlink("../../outside", station.native("doomed/a/link"));
    fs::create_symlink("gone", station.native("doomed/broken"));
    outputOf("cd " + quoted(station.native("doomed")) +
             " && chmod 400 a/b/file && chmod 500 a/b a . && chmod 0 unreadable");
    EXPECT_TRUE(FolderDelete(at(L"doomed")));
  }
  EXPECT_FALSE(fs::exists(station.native("doomed")));
  EXPECT_EQ(window.yields, 1);

  for (const wchar_t* link : {L"link", L"link\\"}) {  // with a separator at its end as well
    fs::create_directory_symlink("outside", station.native("link"));
    EXPECT_TRUE(FolderDelete(at(link)));
    EXPECT_FALSE(fs::is_symlink(station.native("link")));
  }
  EXPECT_EQ(readBytes(station.native("outside/kept")), "kept");
}

TEST_F(FileOperations, CopyMakesFoldersAndReplacesTheTarget) {
  std::string large(3'000'000, '\0');  // more than one block of the copy, and not a multiple
  for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i * 31 >> 3);
  writeBytes(station.native("source.tif"), large);
  writeBytes(station.native("old.tif"), "old");
  chmod(station.native("old.tif").c_str(), 0400);
  for (const wchar_t* target : {L"a\\\\b\\new.tif", L"old.tif"}) {
    EXPECT_TRUE(DialogFileCopy(at(L"source.tif"), at(target)));
    outputOf("cmp " + quoted(station.native("source.tif")) + " " + quoted(nativePath(at(target))));
  }
  EXPECT_EQ(window.yields, 2);
  EXPECT_TRUE(window.boxes.empty());
}

TEST_F(FileOperations, ACopyThatFailsLeavesWhatWasDone) {
  writeBytes(station.native("old.tif"), "old");
  EXPECT_FALSE(DialogFileCopy(at(L"missing"), at(L"old.tif")));
  EXPECT_FALSE(fs::exists(station.native("old.tif")));
  EXPECT_FALSE(RenameFile(at(L"missing"), at(L"new\\x.tif")));
  EXPECT_TRUE(fs::exists(station.native("new")));

  // A name without a dot becomes a folder, onto which no file can be copied.
  writeBytes(station.native("source"), "x");
  EXPECT_FALSE(DialogFileCopy(at(L"source"), at(L"plain")));
  EXPECT_TRUE(fs::is_directory(station.native("plain")));
  // The only original is never the target that a copy removes first.
  EXPECT_FALSE(FileMove(at(L"source"), at(L"new\\..\\source")));
  EXPECT_EQ(readBytes(station.native("source")), "x");

  EXPECT_THAT(window.boxes,
              ElementsAre(copyBox(L"missing: No such file or directory", L"missing", L"old.tif"),
                          copyBox(L"missing: No such file or directory", L"missing", L"new\\x.tif"),
                          copyBox(L"plain: Is a directory", L"source", L"plain"),
                          copyBox(L"new\\..\\source: File exists", L"source", L"new\\..\\source")));
  EXPECT_EQ(window.yields, 0);
}

TEST_F(FileOperations, AFullDiskLeavesNoHalfCopy) {
  outputOf("head -c 2000000 /dev/zero > " + quoted(station.native("source.tif")));
  rlimit old{};
  getrlimit(RLIMIT_FSIZE, &old);
  const rlimit small{1'500'000, old.rlim_max};
  signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  EXPECT_FALSE(DialogFileCopy(at(L"source.tif"), at(L"target.tif")));
  setrlimit(RLIMIT_FSIZE, &old);
  EXPECT_THAT(window.boxes,
              ElementsAre(copyBox(L"target.tif: File too large", L"source.tif", L"target.tif")));
  EXPECT_FALSE(fs::exists(station.native("target.tif")));
}

TEST_F(FileOperations, MoveTakesTheSourceAway) {
  writeBytes(station.native("a.tif"), "a");
  EXPECT_TRUE(RenameFile(at(L"a.tif"), at(L"sub\\b.tif")));
  EXPECT_FALSE(fs::exists(station.native("a.tif")));
  EXPECT_EQ(readBytes(station.native("sub/b.tif")), "a");

  // A copy that worked with a delete that failed: both files stay, and nothing is told.
  fs::create_directory(station.native("fixed"));
  writeBytes(station.native("fixed/c.tif"), "c");
  chmod(station.native("fixed").c_str(), 0555);
  {
    const AsOrdinaryUser user;
    EXPECT_FALSE(FileMove(at(L"fixed\\c.tif"), at(L"d.tif")));
  }
  EXPECT_EQ(readBytes(station.native("fixed/c.tif")) + readBytes(station.native("d.tif")), "cc");
  EXPECT_TRUE(window.boxes.empty());
}

TEST_F(FileOperations, SubFoldersInOrderOfTheirNames) {
  for (const char* name : {"b", "a", "B", "十", "一", "a/deeper"}) {
    fs::create_directories(station.native("tree") / name);
  }
  writeBytes(station.native("tree/file"), "x");
  fs::create_directory_symlink("a", station.native("tree/link"));
  fs::create_symlink("gone", station.native("tree/broken"));
  EXPECT_THAT(fileSystem().SubFolders(at(L"tree")),
              ElementsAre(L"B", L"a", L"b", L"link", L"一", L"十"));
  EXPECT_THROW(fileSystem().SubFolders(at(L"tree\\file")), Failure);
}

TEST_F(FileOperations, OnlyRegularFilesOfSensibleSizeAreRead) {
  outputOf("mkfifo " + quoted(station.native("pipe")) + "; truncate -s 65M " +
           quoted(station.native("large")));
  for (const wchar_t* name : {L"pipe", L"large", L"", L"missing"}) {
    EXPECT_THROW(fileSystem().ReadFile(at(name)), Failure);
  }
  EXPECT_THROW(fileSystem().CopyFile(at(L"pipe"), at(L"target")), Failure);
}

}  // namespace
}  // namespace orvane::test
