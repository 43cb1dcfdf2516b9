// Folders of a path, names of the scan tree in other letter case, and path texts.

#include "foundation/paths.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "foundation/Failure.h"
#include "foundation/Place.h"
#include "foundation/letter_case.h"
#include "foundation/mdlFolderAndFile.h"
#include "support/AsOrdinaryUser.h"
#include "support/TempStation.h"

namespace orvane::test {
namespace {

using namespace mdlFolderAndFile;

TEST(Paths, MakeFolderPathCreatesWhatIsMissing) {
  const std::pair<std::wstring, std::string> cases[] = {
      {L"out\\a\\page.tif", "./out ./out/a"},
      {L"out\\a\\b", "./out ./out/a ./out/a/b"},
      {L"out\\v1.2", "./out"},             // a dot in the last element: a file name
      {L"v1.2\\b", "./v1.2 ./v1.2/b"},     // in a middle one it is not
      {L"out\\\\\\a\\", "./out ./out/a"},  // doubled separators and one at the end
      {L"out\\.\\a", "./out ./out/a"}};
  for (const auto& [path, created] : cases) {
    const TempStation station;
    EXPECT_TRUE(MakeFolderPath(station.path(path)));
    EXPECT_TRUE(MakeFolderPath(station.path(path)));  // there is nothing to do
    EXPECT_EQ(station.shell("find . -mindepth 1 | sort | xargs"), created + "\n");
    // On a server the first folder plays the share: it is neither tested nor created.
    station.shell("rm -r *");
    EXPECT_TRUE(MakeFolderPath(L"\\" + station.path(path)));
    EXPECT_EQ(station.shell("find . -mindepth 1 | sort | xargs"), created + "\n");
  }
}

TEST(Paths, MakeFolderPathPassesFailuresOn) {
  const TempStation station;
  station.write("file", "x");
  for (const std::wstring& path :
       {std::wstring(), station.path(L"file\\below"), std::wstring(L"\\\\no-server\\share\\x")}) {
    EXPECT_THROW(MakeFolderPath(path), Failure) << toUtf8(path);
  }
  EXPECT_TRUE(MakeFolderPath(L"bare-name") && MakeFolderPath(L"\\\\no-server"));
  EXPECT_FALSE(std::filesystem::exists("bare-name"));
}

TEST(Paths, TextOperations) {
  EXPECT_EQ(ParentPath(L"D:\\a\\b.tif", L"\\"), L"D:\\a\\");
  EXPECT_EQ(ParentPath(L"name", L"\\"), L"");
  EXPECT_EQ(ParentPath(L"oneXtwoxthree", L"X"), L"oneXtwox");
  EXPECT_EQ(AppendBackslash(L"") + AppendBackslash(L"D:") + AppendBackslash(L"D:\\"),
            L"\\D:\\D:\\");
  EXPECT_EQ(FileExtension(L"a.b.tif"), L"tif");
  EXPECT_EQ(FileExtension(L"D:\\v1.2\\name"), L"2\\name");
  EXPECT_EQ(FileExtension(L"name") + FileExtension(L"name."), L"name");
}

TEST(Paths, TheScanTreeIsFoundInAnyLetterCaseAndNothingElse) {
  const TempStation station;
  for (const char* file :
       {"Batchs/B1/D1/DOC.DAT", "Batchs/B1/d1/x.tif", "Batchs/B1/D1/two.Tif",
        "Batchs/B1/D1/two.TIF", "Batchs/B1/D1/ÄЖ扫Ａ.tif", "Batchs/B1/D1/back\\Slash.tif",
        "Batchs/B1/D1/LINK.tif", "Batchs/B2/x", "BATCHS/B3/x.tif", "Batchs2/B1/X", "output/X"}) {
    station.write(file, file);
  }
  std::filesystem::create_symlink("nowhere", station.native("Batchs/B1/D1/link.tif"));
  const std::pair<std::wstring, std::wstring> cases[] = {
      {L"Batchs\\b1\\D1\\Doc.dat", L"Batchs\\B1\\D1\\DOC.DAT"},
      {L"Batchs\\b1\\\\d1/X.TIF", L"Batchs\\B1\\\\d1/x.tif"},
      {L"Batchs\\b2\\", L"Batchs\\B2\\"},
      {L"Batchs\\b1\\.\\d1", L"Batchs\\B1\\.\\d1"},
      {L"Batchs\\B1\\D1\\TWO.tif", L"Batchs\\B1\\D1\\two.TIF"},  // the first in order of names
      {L"Batchs\\B1\\D1\\äж扫ａ.TIF", L"Batchs\\B1\\D1\\ÄЖ扫Ａ.tif"},
      {L"Batchs\\B1\\D1\\back\xDC5Cslash.tif", L"Batchs\\B1\\D1\\back\xDC5CSlash.tif"}};
  for (const auto& [asked, found] : cases) {
    EXPECT_EQ(existingPath(station.path(asked)), station.path(found)) << toUtf8(asked);
  }
  for (const wchar_t* asked :
       {L"Batchs\\B1\\D1\\two.Tif", L"Batchs\\B1\\D1\\link.tif",      // there, as they are written
        L"Batchs\\B1\\d1\\Doc.dat",                                   // d1 is there, so it is meant
        L"Batchs\\B1\\D1\\Doc.da", L"Batchs\\b2\\..\\..\\output\\x",  // not there
        L"Batchs2\\b1\\x", L"output\\x"}) {
    EXPECT_EQ(existingPath(station.path(asked)), station.path(asked)) << toUtf8(asked);
  }
  // So it is by what deletes and moves.
  EXPECT_TRUE(RenameFile(station.path(L"Batchs\\b1\\d1\\X.TIF"), station.path(L"output\\y.tif")));
  EXPECT_TRUE(FileDelete(station.path(L"Batchs\\B1\\D1\\Doc.dat")));
  EXPECT_TRUE(FolderDelete(station.path(L"Batchs\\b2")));
  EXPECT_EQ(station.shell("find Batchs/B? output -iname 'doc.*' -o -name '[xXyY]*'"),
            "output/y.tif\noutput/X\n");
  station.shell("rm -r Batchs");
  EXPECT_EQ(existingPath(station.path(L"Batchs\\b3\\x.TIF")), station.path(L"BATCHS\\B3\\x.tif"));
}

TEST(Paths, APlaceThatCannotBeExaminedIsAFailureThatNamesThePath) {
  const auto reason = [](const std::wstring& path) {
    try {
      return resolvedPlace(path).path();
    } catch (const Failure& failure) {
      return std::string(failure.what());
    }
  };
  {
    const AsOrdinaryUser user;
    EXPECT_EQ(reason(L"\\proc\\1\\cwd\\a"), "\\proc\\1\\cwd\\a: Permission denied") << "a link";
  }
  const std::filesystem::path before = std::filesystem::current_path();
  {
    const TempStation station;
    std::filesystem::current_path(station.native("."));
    station.shell("rmdir \"$PWD\"");
    EXPECT_EQ(reason(L"a"), "a: No such file or directory") << "the working directory is gone";
    std::filesystem::current_path(before);
  }
}

TEST(Paths, EveryNameOnTheDiskComesBackByteForByte) {
  const TempStation station;
  for (const std::string name :
       {"扫描 件", "back\\slash", "latin\xE9", "\xED\xB2\x80", "a\xF0\x9F"}) {
    const std::wstring text = station.path() + L"\\" + entryText(name);
    EXPECT_EQ(text.rfind(L'\\'), station.path().size());
    writeBytes(nativePath(text), name);
    EXPECT_EQ(station.read(name), name);
    EXPECT_EQ(pathText(station.native(name)), text);
  }
  EXPECT_EQ(nativePath(L"\\a\\\\b\\..\\c/d\\"), "/a//b/../c/d/");
  // A NUL would cut the path; the others are no escape of a name and could smuggle in a separator.
  for (const std::wstring& text : {std::wstring(L"a\0b", 3), std::wstring(L"a\xDC2F"),
                                   std::wstring(L"\xDC00"), std::wstring(L"\xD83D")}) {
    EXPECT_THROW(nativePath(text), Failure);
  }
}

}  // namespace
}  // namespace orvane::test
