#include <filesystem>
#include <gmock/gmock.h>

#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;
using namespace mdlFolderAndFile;

TEST(FolderPaths, MakeFolderPathCreatesWhatIsMissing) {
  const struct {
    std::wstring path;  // below the station, which is absolute
    std::string created;
  } cases[] = {{L"out\\a\\page.tif", "out out/a"},
               {L"out\\a\\b", "out out/a out/a/b"},
               {L"out\\v1.2", "out"},           // a dot in the last element: a file name
               {L"v1.2\\b", "v1.2 v1.2/b"},     // in a middle one it is not
               {L"out\\\\\\a\\", "out out/a"},  // doubled separators and one at the end
               {L"out\\.\\a", "out out/a"}};
  for (const auto& c : cases) {
    const TempStation station;
    EXPECT_TRUE(MakeFolderPath(station.path(c.path)));
    const std::string tree =
        outputOf("cd " + quoted(station.native()) +
                 " && find . -mindepth 1 -type d -printf '%P ' | xargs -n1 | sort | xargs");
    EXPECT_EQ(tree, c.created + "\n");
    EXPECT_TRUE(MakeFolderPath(station.path(c.path)));  // a second time there is nothing to do
  }
}

TEST(FolderPaths, MakeFolderPathOnAServerPathBeginsAtTheShare) {
  const TempStation station;
  // The station's first folder plays the server: it is neither tested nor created.
  EXPECT_TRUE(MakeFolderPath(L"\\" + station.path(L"x\\y")));
  EXPECT_TRUE(fs::is_directory(station.native("x/y")));
  EXPECT_TRUE(MakeFolderPath(L"\\\\no-such-server"));
  EXPECT_THROW(MakeFolderPath(L"\\\\no-such-server\\share\\x"), Failure);
}

TEST(FolderPaths, MakeFolderPathPassesFailuresOn) {
  const TempStation station;
  writeBytes(station.native("file"), "x");
  EXPECT_THROW(MakeFolderPath(L""), Failure);
  EXPECT_THROW(MakeFolderPath(station.path(L"file\\below")), Failure);
  EXPECT_TRUE(MakeFolderPath(L"bare-name"));
  EXPECT_FALSE(fs::exists("bare-name"));
}

TEST(FolderPaths, TextOperations) {
  EXPECT_EQ(ParentPath(L"D:\\a\\b.tif", L"\\"), L"D:\\a\\");
  EXPECT_EQ(ParentPath(L"D:\\a\\", L"\\"), L"D:\\a\\");
  EXPECT_EQ(ParentPath(L"name", L"\\"), L"");
  EXPECT_EQ(ParentPath(L"oneXtwoxthree", L"X"), L"oneXtwox");
  EXPECT_EQ(AppendBackslash(L""), L"\\");
  EXPECT_EQ(AppendBackslash(L"D:"), L"D:\\");
  EXPECT_EQ(AppendBackslash(L"D:\\"), L"D:\\");
  EXPECT_EQ(FileExtension(L"a.b.tif"), L"tif");
  EXPECT_EQ(FileExtension(L"D:\\v1.2\\name"), L"2\\name");
  EXPECT_EQ(FileExtension(L"name"), L"name");
  EXPECT_EQ(FileExtension(L"name."), L"");
}

}  // namespace
}  // namespace orvane::test
