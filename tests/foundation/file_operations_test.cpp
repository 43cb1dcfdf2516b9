// The operations on files and folders, with their boxes, silences and results.

#include <filesystem>
#include <gmock/gmock.h>

#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"
#include "support/AsOrdinaryUser.h"
#include "support/FullDisk.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;
using namespace mdlFolderAndFile;

class FileOperations : public testing::Test {
 protected:
  FileOperations() { station.shell("chmod 777 ."); }
  std::wstring at(const std::wstring& relative) const { return station.path(relative); }
  // The box of a copy, from paths below the station.
  std::string copyBox(const std::wstring& reason, const std::wstring& source,
                      const std::wstring& target) const {
    return toUtf8(at(reason) + L"\r" + at(source) + L"\r" + at(target) + L" | DialogFileCopy\n");
  }

  TempStation station;
  RecordingWindow window;
};

TEST_F(FileOperations, ExistenceTestsTellOnlyWhatTheyCannotKnow) {
  station.shell(
      "mkdir folder closed; chmod 0 closed; echo x > file; mkfifo pipe; "
      "ln -s folder to-folder; ln -s nowhere broken; ln -s circle circle");
  for (const wchar_t* folder : {L"folder", L"folder\\", L"to-folder"}) {
    EXPECT_TRUE(FolderExist(at(folder)) && !FileExist(at(folder)));
  }
  EXPECT_TRUE(FileExist(at(L"file")) && !FolderExist(at(L"file")));
  for (const std::wstring& path : {at(L"broken"), at(L"circle"), at(L"pipe"), at(L"file\\below"),
                                   at(L"missing"), at(std::wstring(300, L'n')), std::wstring()}) {
    EXPECT_FALSE(FolderExist(path) || FileExist(path)) << toUtf8(path);
  }
  EXPECT_EQ(window.takeBoxes(), "");

  const AsOrdinaryUser user;
  const std::wstring path = at(L"closed\\file");
  EXPECT_FALSE(FolderExist(path) || FileExist(path));
  EXPECT_EQ(window.takeBoxes(),
            toUtf8(L"FolderExist Err:Permission denied Path:" + path + L" | Orvane成果导出\n" +
                   L"FileExist Err:Permission denied FileName:" + path + L" | Orvane成果导出\n"));
}

TEST_F(FileOperations, DeletesAreForcedAndSilentAndFollowNoLink) {
  station.shell("echo kept > kept; mkdir outside; ln kept outside/kept; ln -s kept link");
  {
    const AsOrdinaryUser user;
    for (const char* file : {"read-only", "doomed/a/b/file", "doomed/unreadable/file"}) {
      station.write(file, "x");
    }
    station.shell(
        "chmod 400 read-only; cd doomed; ln -s ../../outside a/link; ln -s gone broken; "
        "chmod 400 a/b/file; chmod 500 a/b a .; chmod 0 unreadable");
    EXPECT_TRUE(FileDelete(at(L"read-only")) && FileDelete(at(L"link")));
    EXPECT_TRUE(FolderDelete(at(L"doomed")));
  }
  for (const wchar_t* link : {L"link", L"link\\"}) {
    station.shell("ln -s outside link");
    EXPECT_TRUE(FolderDelete(at(link)));
  }
  EXPECT_EQ(window.yields, 5);
  EXPECT_FALSE(FileDelete(at(L"read-only")) || FileDelete(L""));
  EXPECT_FALSE(FolderDelete(at(L"missing")) || FolderDelete(at(L"kept")));
  EXPECT_EQ(window.yields, 5);
  EXPECT_EQ(window.takeBoxes(), "");
  EXPECT_EQ(station.shell("find . -mindepth 1 | sort"), "./kept\n./outside\n./outside/kept\n");
}

TEST_F(FileOperations, CopyAndMoveMakeFoldersAndReplaceTheTarget) {
  // More than one block of the copy, and not a multiple.
  station.shell(
      "seq 500000 > source.tif; cp source.tif same; echo old > old.tif; chmod 400 old.tif");
  EXPECT_TRUE(DialogFileCopy(at(L"source.tif"), at(L"a\\\\b\\new.tif")));
  EXPECT_TRUE(DialogFileCopy(at(L"source.tif"), at(L"old.tif")));
  EXPECT_EQ(window.yields, 2);
  EXPECT_TRUE(RenameFile(at(L"source.tif"), at(L"sub\\b.tif")));
  station.shell("for f in a/b/new.tif old.tif sub/b.tif; do cmp $f same || exit 1; done");
  EXPECT_FALSE(fs::exists(station.native("source.tif")));

  // The copy succeeds and the delete fails: both files stay, without a box.
  station.shell("mkdir fixed; echo c > fixed/c.tif; chmod 555 fixed");
  {
    const AsOrdinaryUser user;
    EXPECT_FALSE(FileMove(at(L"fixed\\c.tif"), at(L"d.tif")));
  }
  EXPECT_EQ(station.read("fixed/c.tif") + station.read("d.tif"), "c\nc\n");
  EXPECT_EQ(window.takeBoxes(), "");
}

TEST_F(FileOperations, ACopyThatFailsLeavesWhatWasDone) {
  station.shell("echo x > source; echo old > old.tif");
  EXPECT_FALSE(DialogFileCopy(at(L"missing"), at(L"old.tif")));
  EXPECT_FALSE(RenameFile(at(L"missing"), at(L"new\\x.tif")));
  // A name without a dot becomes a folder, onto which no file can be copied.
  EXPECT_FALSE(DialogFileCopy(at(L"source"), at(L"plain")));
  EXPECT_EQ(window.takeBoxes(),
            copyBox(L"missing: No such file or directory", L"missing", L"old.tif") +
                copyBox(L"missing: No such file or directory", L"missing", L"new\\x.tif") +
                copyBox(L"plain: Is a directory", L"source", L"plain"));
  EXPECT_EQ(window.yields, 0);
  EXPECT_EQ(station.shell("ls -F; cat source"), "new/\nplain/\nsource\nx\n");
}

// The only original is never the target that a copy removes first.
TEST_F(FileOperations, ACopyOntoItselfIsRefused) {
  station.write("Batchs/B1/0001.TIF", "x");
  station.shell("echo x > source; mkdir sub; ln -s source link; ln -s . here; ln source second");
  const std::pair<std::wstring, std::wstring> cases[] = {
      {L"source", L"sub\\..\\source"},
      {L"link", L"source"},
      {L"source", L"link"},
      {L"source", L"here\\source"},
      {L"second", L"source"},
      {L"Batchs\\b1\\0001.tif", L"Batchs\\B1\\0001.TIF"},
      {L"Batchs\\B1\\0001.TIF", L"Batchs\\b1\\0001.tif"}};
  const std::string before = station.shell("ls -lR; cat source Batchs/B1/*");
  for (const auto& [source, target] : cases) {
    EXPECT_FALSE(FileMove(at(source), at(target)));
    EXPECT_EQ(window.takeBoxes(), copyBox(target + L": File exists", source, target));
    EXPECT_THROW(fileSystem().CopyFile(at(source), at(target)), Failure);
    EXPECT_EQ(station.shell("ls -lR; cat source Batchs/B1/*"), before);
  }
}

TEST_F(FileOperations, AFullDiskLeavesNoHalfCopy) {
  station.shell("head -c 2000000 /dev/zero > source.tif");
  EXPECT_FALSE((FullDisk(1'500'000), DialogFileCopy(at(L"source.tif"), at(L"target.tif"))));
  EXPECT_EQ(window.takeBoxes(),
            copyBox(L"target.tif: File too large", L"source.tif", L"target.tif"));
  EXPECT_EQ(station.shell("ls"), "source.tif\n");
}

TEST_F(FileOperations, OnlyFoldersAreListedAndOnlyFilesOfSensibleSizeRead) {
  station.shell(
      "mkdir -p tree/b tree/a/deeper tree/B tree/十 tree/一; echo x > tree/file; "
      "ln -s a tree/link; ln -s file tree/no-folder; mkfifo pipe tree/pipe; truncate -s 65M large");
  EXPECT_THAT(fileSystem().SubFolders(at(L"tree")),
              testing::ElementsAre(L"B", L"a", L"b", L"link", L"一", L"十"));
  station.shell("cd tree; rm -r B b link 一 十; ln -s gone broken; ln -s circle circle");
  EXPECT_THAT(fileSystem().SubFolders(at(L"tree")),
              testing::ElementsAre(L"a", L"broken", L"circle"))
      << "what cannot be looked at may be a folder";
  EXPECT_THROW(fileSystem().SubFolders(at(L"tree\\file")), Failure);
  for (const wchar_t* name : {L"pipe", L"large", L"", L"missing"}) {
    EXPECT_THROW(fileSystem().ReadFile(at(name)), Failure);
  }
  EXPECT_THROW(fileSystem().CopyFile(at(L"pipe"), at(L"target")), Failure);
}

}  // namespace
}  // namespace orvane::test
