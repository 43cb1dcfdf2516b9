// Names of the scan tree in other letter case, and all that this must not reach.

#include "foundation/existing_path.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "foundation/mdlFolderAndFile.h"
#include "foundation/utf8_text.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"

namespace orvane::test {
namespace {

TEST(ExistingPath, FindsTheScanTreeInAnyLetterCaseAndNothingElse) {
  const TempStation station;
  for (const char* file :
       {"Batchs/B1/D1/DOC.DAT", "Batchs/B1/D1/0001.TIF", "Batchs/B1/d1/x.tif",
        "Batchs/B1/D1/two.Tif", "Batchs/B1/D1/two.TIF", "Batchs/B1/D1/ÄЖ扫Ａ.tif",
        "Batchs/B1/D1/back\\Slash.tif", "Batchs/B2/only.tif", "BATCHS/B3/x.tif", "Batchs2/B1/X.tif",
        "output/X.tif"}) {
    writeBytes(station.native(file), file);
  }
  std::filesystem::create_symlink("nowhere", station.native("Batchs/B1/D1/link.tif"));
  writeBytes(station.native("Batchs/B1/D1/LINK.tif"), "");
  const std::pair<std::wstring, std::wstring> cases[] = {
      // what is asked for, and what is found
      {L"Batchs\\B1\\D1\\0001.tif", L"Batchs\\B1\\D1\\0001.TIF"},
      {L"Batchs\\b1\\D1\\Doc.dat", L"Batchs\\B1\\D1\\DOC.DAT"},
      {L"Batchs\\b1\\\\d1/X.TIF", L"Batchs\\B1\\\\d1/x.tif"},
      {L"Batchs\\b2\\", L"Batchs\\B2\\"},
      {L"Batchs\\b1\\.\\d1", L"Batchs\\B1\\.\\d1"},
      {L"Batchs\\B1\\d1\\0001.tif", L"Batchs\\B1\\d1\\0001.tif"},  // d1 is there, so it is meant
      {L"Batchs\\B1\\D1\\TWO.tif", L"Batchs\\B1\\D1\\two.TIF"},    // the first in order of names
      {L"Batchs\\B1\\D1\\two.Tif", L"Batchs\\B1\\D1\\two.Tif"},
      {L"Batchs\\B1\\D1\\äж扫ａ.TIF", L"Batchs\\B1\\D1\\ÄЖ扫Ａ.tif"},
      {L"Batchs\\B1\\D1\\back\xDC5Cslash.tif", L"Batchs\\B1\\D1\\back\xDC5CSlash.tif"},
      {L"Batchs\\B1\\D1\\link.tif", L"Batchs\\B1\\D1\\link.tif"},  // a link to nothing is there too
      {L"Batchs\\B1\\D1\\0001.ti", L"Batchs\\B1\\D1\\0001.ti"},
      {L"Batchs\\b2\\..\\..\\output\\x.tif", L"Batchs\\b2\\..\\..\\output\\x.tif"},
      {L"Batchs2\\b1\\x.tif", L"Batchs2\\b1\\x.tif"},
      {L"output\\x.tif", L"output\\x.tif"}};
  for (const auto& [asked, found] : cases) {
    EXPECT_EQ(existingPath(station.path(asked)), station.path(found)) << toUtf8(asked);
  }
  std::filesystem::remove_all(station.native("Batchs"));
  EXPECT_EQ(existingPath(station.path(L"Batchs\\b3\\x.TIF")), station.path(L"BATCHS\\B3\\x.tif"));
}

TEST(ExistingPath, ReadsByAnyCaseAndWritesByTheNameGiven) {
  const TempStation station;
  RecordingWindow window;
  using namespace mdlFolderAndFile;
  const std::wstring upper = station.path(L"Batchs\\B1\\D1\\P.TIF");
  const std::wstring lower = station.path(L"Batchs\\B1\\D1\\p.tif");
  writeBytes(station.native("Batchs/B1/D1/P.TIF"), "upper");
  EXPECT_TRUE(FolderExist(station.path(L"Batchs\\b1\\d1")) && FileExist(lower));
  EXPECT_EQ(fileSystem().ReadFile(lower), "upper");
  EXPECT_EQ(fileSystem().SubFolders(station.path(L"Batchs\\b1")).size(), 1U);

  EXPECT_FALSE(FileDelete(lower));
  EXPECT_FALSE(FolderDelete(station.path(L"Batchs\\b1")));
  EXPECT_TRUE(DialogFileCopy(lower, station.path(L"copy.tif")));
  writeBytes(station.native("new.tif"), "new");
  EXPECT_TRUE(DialogFileCopy(station.path(L"new.tif"), lower));
  EXPECT_EQ(readBytes(station.native("copy.tif")), "upper");
  EXPECT_EQ(fileSystem().ReadFile(upper) + fileSystem().ReadFile(lower), "uppernew");
  EXPECT_TRUE(window.boxes.empty());
}

}  // namespace
}  // namespace orvane::test
