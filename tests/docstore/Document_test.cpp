// Reading and writing Doc.dat in the scan tree.

#include "docstore/Document.h"

#include <cerrno>
#include <filesystem>
#include <gmock/gmock.h>
#include <memory>

#include "docstore/ScanTree.h"
#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
std::wstring pagesOf(const Document& document) {
  std::wstring pages;
  for (std::int16_t i = 1; i <= document.PageCount(); ++i) pages += document.GetPage(i) + L"|";
  return pages;
}

class DocumentOnDisk : public testing::Test {
 protected:
  DocumentOnDisk() { gBatchFolder = station.path(L"Batchs\\B1"); }
  ~DocumentOnDisk() override {
    gBatchFolder.clear();
    gFileSystem.reset();
  }
  std::wstring logged(const std::wstring& text) const {
    return L"Orvane成果导出 - Document:" + text;
  }
  std::string listing() const { return outputOf("ls -A " + quoted(dataFile.parent_path())); }

  TempStation station;
  RecordingWindow window;
  fs::path dataFile = station.native("Batchs/B1/D1/Doc.dat");
};

TEST(ScanTree, BuildersRefuseNothing) {
  gBatchFolder.clear();
  EXPECT_EQ(GetDocumentPath(L"") + GetDocDataPath(L"D1"), L"\\\\\\D1\\Doc.dat");
  gBatchFolder = L"X";
  EXPECT_EQ(GetPagePath(L"D1", L"P1"), L"X\\D1\\P1.tif");
}

TEST_F(DocumentOnDisk, LoadsWhatStandsInFrontOfEachTerminator) {
  const std::pair<std::string, std::wstring> cases[] = {
      // the bytes, and the pages with a "|" behind each
      {"A$B$C$", L"A|B|C|"},
      {"A$B$C", L"A|B|"},
      {"A", L""},
      {"A$$B$", L"A|B|"},
      {"A$   $B$", L"A|B|"},
      {"  A$ B $C$  ", L"A| B |C|"},
      {"A$\r\n", L"A|"},
      {"A$\r\nB$", L"A|\r\nB|"},
      {"$$", L""},
      {"A$A$", L"A|A|"},
      {"\xC9\xA8$\xC9\xFF$\x81$z$", L"扫|\uFFFD\uFFFD|\uFFFD|z|"}};
  Document document;
  for (const auto& [bytes, pages] : cases) {
    writeBytes(dataFile, bytes);
    EXPECT_TRUE(document.LoadDocument(L"D1")) << bytes;
    EXPECT_EQ(pagesOf(document), pages) << bytes;
    EXPECT_EQ(
        document.GetPage(0) + document.GetPage(static_cast<std::int16_t>(document.PageCount() + 1)),
        L"");
  }
  EXPECT_TRUE(station.logEntries().empty());
  for (const char* bytes : {"", "   "}) {
    writeBytes(dataFile, bytes);
    EXPECT_FALSE(document.LoadDocument(L"D1"));
    EXPECT_EQ(document.PageCount(), 0);
  }
  const std::wstring empty = logged(L"InitDocument-文档名【D1】 数据文件为空");
  EXPECT_THAT(station.logEntries(), ElementsAre(empty, empty));
}

TEST_F(DocumentOnDisk, ALoadThatFailsIsLogged) {
  Document document;
  EXPECT_FALSE(document.SaveDocument());
  EXPECT_EQ(document.GetPage(1), L"");
  EXPECT_FALSE(document.LoadDocument(L"缺"));
  EXPECT_THROW(document.PageCount(), Failure);
  EXPECT_EQ(document.DocName(), L"缺");

  std::string tooMany;
  for (int i = 0; i < 32768; ++i) tooMany += "p$";
  writeBytes(dataFile, tooMany);
  EXPECT_FALSE(document.LoadDocument(L"D1"));
  EXPECT_EQ(document.PageCount(), 32767);
  writeBytes(dataFile, tooMany.substr(2));
  EXPECT_TRUE(document.LoadDocument(L"D1"));
  EXPECT_FALSE(document.LoadDocument(L"缺"));  // the new name with the old list
  EXPECT_EQ(document.PageCount(), 32767);

  const std::wstring missing =
      logged(L"InitDocument-文档名【缺】找不到当前文档的数据文件【Doc.dat】");
  EXPECT_THAT(station.logEntries(),
              ElementsAre(logged(L"InitDocument-文档名【】文档路径不存在"),
                          logged(L"GetPage-the document has no page list"), missing,
                          logged(L"InitDocument-Value too large for defined data type"), missing));
}

TEST_F(DocumentOnDisk, SavesWithABackupThatIsGoneAfterwards) {
  Document created;
  EXPECT_TRUE(created.CreateDocument(L"D1"));
  EXPECT_TRUE(created.SaveDocument());
  EXPECT_EQ(window.boxes.size(), 1U);  // the first save has no file to set aside
  EXPECT_EQ(listing(), "Doc.dat\n");
  EXPECT_EQ(fs::file_size(dataFile), 0U);

  writeBytes(dataFile, "old$");
  writeBytes(dataFile.parent_path() / "Doc.datbak", "left by a crash");
  for (const wchar_t* name : {L" 扫描", L"A ", L"A "}) EXPECT_TRUE(created.AddPage(name));
  EXPECT_TRUE(created.SaveDocument());
  EXPECT_EQ(listing(), "Doc.dat\n");
  EXPECT_EQ(outputOf("iconv -f GBK -t UTF-8 " + quoted(dataFile)), " 扫描$A $A $");
  Document loaded;
  EXPECT_TRUE(loaded.LoadDocument(L"D1"));
  EXPECT_EQ(pagesOf(loaded), L"扫描|A |A |");  // the trim of the whole text
  EXPECT_EQ(window.boxes.size(), 1U);
}

// A file layer whose writes fail, or leave nothing behind.
class BrokenWriter : public FileSystemObject {
 public:
  explicit BrokenWriter(bool tells) : tells_(tells) {}
  void WriteFile(const std::wstring&, std::string_view) override {
    if (tells_) throw systemFailure(ENOSPC);
  }

 private:
  bool tells_;
};

TEST_F(DocumentOnDisk, ASaveThatFailsPutsTheOldFileBack) {
  writeBytes(dataFile, "old$");
  Document document;
  ASSERT_TRUE(document.LoadDocument(L"D1"));
  gFileSystem = std::make_unique<BrokenWriter>(true);
  EXPECT_FALSE(document.SaveDocument());
  gFileSystem = std::make_unique<BrokenWriter>(false);
  EXPECT_TRUE(document.SaveDocument());
  gFileSystem.reset();
  document.AddPage(L"好\U0001F600");
  EXPECT_FALSE(document.SaveDocument());

  EXPECT_EQ(readBytes(dataFile), "old$");
  EXPECT_EQ(listing(), "Doc.dat\n");
  EXPECT_THAT(
      station.logEntries(),
      ElementsAre(
          logged(L"SaveDocument-No space left on device"),
          logged(L"SaveDocument-U+1F600: Invalid or incomplete multibyte or wide character")));
  EXPECT_TRUE(window.boxes.empty());
}

TEST_F(DocumentOnDisk, AFileInOtherLetterCaseIsReplacedAndGetsNoSecondOneBesideIt) {
  writeBytes(station.native("Batchs/b1/D1/DOC.DAT"), "A$");
  writeBytes(station.native("Batchs/b1/D1/Doc.datbak"), "left by a crash");
  Document document;
  ASSERT_TRUE(document.LoadDocument(L"d1"));
  document.AddPage(L"B");
  EXPECT_TRUE(document.SaveDocument());
  EXPECT_EQ(outputOf("cd " + quoted(station.native("Batchs/b1/D1")) + " && ls && cat DOC.DAT"),
            "DOC.DAT\nDoc.datbak\nA$B$");

  document.AddPage(L"\U0001F600");  // the old list comes back, not what the crash has left
  EXPECT_FALSE(document.SaveDocument());
  EXPECT_EQ(readBytes(station.native("Batchs/b1/D1/DOC.DAT")), "A$B$");
}

TEST_F(DocumentOnDisk, NothingIsLostWhenNoBackupCanBeMade) {
  writeBytes(dataFile, "old$");
  Document document;
  ASSERT_TRUE(document.LoadDocument(L"D1"));
  document.AddPage(L"\U0001F600");
  fs::create_directory(dataFile.parent_path() / "Doc.datbak");  // nothing can be copied onto it
  EXPECT_FALSE(document.SaveDocument());
  EXPECT_EQ(readBytes(dataFile), "old$");
}

}  // namespace
}  // namespace orvane::test
