// A document's page list: Doc.dat in the scan tree, and the editing in memory.

#include "docstore/Document.h"

#include <cerrno>
#include <gtest/gtest.h>

#include "docstore/ScanTree.h"
#include "foundation/Failure.h"
#include "foundation/FileSystemObject.h"
#include "foundation/mdlFolderAndFile.h"
#include "support/AsOrdinaryUser.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"
#include "support/failure_of.h"

namespace orvane::test {
namespace {

class DocumentTest : public testing::Test {
 protected:
  DocumentTest() { gBatchFolder = station.path(L"Batchs\\B1"); }
  ~DocumentTest() override {
    gBatchFolder.clear();
    gFileSystem.reset();
  }
  // The pages, each followed by "|".
  std::string pages() const {
    std::string pages;
    for (std::int16_t i = 1; i <= document.PageCount(); ++i) {
      pages += toUtf8(document.GetPage(i)) + "|";
    }
    return pages;
  }
  // The files of the document, and the bytes of its page list.
  std::string files() const { return station.shell("cd Batchs/B1/D1; ls -A | xargs; cat Doc.dat"); }

  TempStation station;
  RecordingWindow window;
  Document document;
  const std::string dataFile = "Batchs/B1/D1/Doc.dat";
};

TEST_F(DocumentTest, LoadsWhatStandsInFrontOfEachTerminator) {
  const std::pair<std::string, std::string> cases[] = {
      {"A$B$C", "A|B|"},
      {"A$$   $B$", "A|B|"},
      {"  A$ B $C$  ", "A| B |C|"},
      {"A$\r\nB$", "A|\r\nB|"},
      {"$$", ""},
      {"\xC9\xA8$\xC9\xFF$\x81$z$", "扫|\uFFFD\uFFFD|\uFFFD|z|"}};
  for (const auto& [bytes, expected] : cases) {
    station.write(dataFile, bytes);
    EXPECT_TRUE(document.LoadDocument(L"D1")) << bytes;
    EXPECT_EQ(pages(), expected) << bytes;
    const auto after = static_cast<std::int16_t>(document.PageCount() + 1);
    EXPECT_EQ(document.GetPage(0) + document.GetPage(after), L"");
  }
  EXPECT_EQ(station.takeLog(), "");
}

TEST_F(DocumentTest, ALoadThatFailsIsLogged) {
  const auto expectLogged = [&](const std::string& line) {
    EXPECT_EQ(station.takeLog(), "Document:" + line + "\n");
  };
  EXPECT_FALSE(document.SaveDocument());
  expectLogged("InitDocument-文档名【】文档路径不存在");
  EXPECT_EQ(document.GetPage(1), L"");
  expectLogged("GetPage-the document has no page list");
  EXPECT_FALSE(document.LoadDocument(L"缺"));
  expectLogged("InitDocument-文档名【缺】找不到当前文档的数据文件【Doc.dat】");
  EXPECT_THROW(document.PageCount(), Failure);
  for (const char* bytes : {"", "   "}) {
    station.write(dataFile, bytes);
    EXPECT_FALSE(document.LoadDocument(L"D1"));
    expectLogged("InitDocument-文档名【D1】 数据文件为空");
    EXPECT_EQ(document.PageCount(), 0);
  }
  station.shell("yes p$ | head -32768 | tr -d '\\n' > " + dataFile);
  EXPECT_FALSE(document.LoadDocument(L"D1"));
  expectLogged("InitDocument-Value too large for defined data type");
  EXPECT_FALSE(document.LoadDocument(L"缺"));  // the new name with the old list
  EXPECT_EQ(document.DocName(), L"缺");
  EXPECT_EQ(document.PageCount(), 32767);
}

TEST_F(DocumentTest, SavesWithABackupThatIsGoneAfterwards) {
  EXPECT_TRUE(document.CreateDocument(L"D1"));
  EXPECT_TRUE(document.SaveDocument());
  EXPECT_EQ(window.boxes.size(), 1U);  // the first save has no file to set aside
  EXPECT_EQ(files(), "Doc.dat\n");

  station.write(dataFile, "old$");
  station.write(dataFile + "bak", "left by a crash");
  for (const wchar_t* name : {L" 扫描", L"A ", L"A "}) EXPECT_TRUE(document.AddPage(name));
  EXPECT_TRUE(document.SaveDocument());
  EXPECT_EQ(files(), "Doc.dat\n \xC9\xA8\xC3\xE8$A $A $");

  station.shell("chmod 777 . Batchs/B1 Batchs/B1/D1; chmod 444 " + dataFile);
  const AsOrdinaryUser user;
  EXPECT_TRUE(document.RemovePage(1) && document.SaveDocument());
  EXPECT_EQ(files(), "Doc.dat\nA $A $");
  EXPECT_EQ(window.boxes.size(), 1U);
}

enum class Fault { WriteFails, NothingIsWritten, TestFails };

// A file layer with a fault where a page list is written, or looked for afterwards.
class FaultyFiles : public FileSystemObject {
 public:
  explicit FaultyFiles(Fault fault) : fault_(fault) {}
  void WriteFile(const std::wstring& path, std::string_view bytes) override {
    isWritten_ = true;
    if (fault_ == Fault::WriteFails) throw systemFailure(ENOSPC);
    if (fault_ == Fault::TestFails) FileSystemObject::WriteFile(path, bytes);
  }
  bool FileExists(const std::wstring& path) override {
    if (std::exchange(isWritten_, false) && fault_ == Fault::TestFails) throw systemFailure(EIO);
    return FileSystemObject::FileExists(path);
  }

 private:
  Fault fault_;
  bool isWritten_ = false;
};

TEST_F(DocumentTest, ASaveThatFailsPutsTheOldFileBack) {
  station.write(dataFile, "old$");
  ASSERT_TRUE(document.LoadDocument(L"D1"));
  document.AddPage(L"new");
  for (const Fault fault : {Fault::WriteFails, Fault::NothingIsWritten, Fault::TestFails}) {
    gFileSystem = std::make_unique<FaultyFiles>(fault);
    EXPECT_EQ(document.SaveDocument(), fault != Fault::WriteFails);
    EXPECT_EQ(files(), "Doc.dat\nold$");
    EXPECT_EQ(window.takeBoxes(), fault != Fault::TestFails
                                      ? ""
                                      : "FileExist Err:Input/output error FileName:" +
                                            toUtf8(GetDocDataPath(L"D1")) + " | Orvane成果导出\n");
  }
  gFileSystem.reset();
  document.AddPage(L"好\U0001F600");
  EXPECT_FALSE(document.SaveDocument());
  EXPECT_EQ(files(), "Doc.dat\nold$");
  EXPECT_EQ(station.takeLog(),
            "Document:SaveDocument-No space left on device\nDocument:SaveDocument-U+1F600: "
            "Invalid or incomplete multibyte or wide character\n");
  EXPECT_EQ(window.takeBoxes(), "");

  station.shell("mkdir " + dataFile + "bak");  // no backup can be made: nothing can be copied there
  EXPECT_FALSE(document.SaveDocument());
  EXPECT_EQ(files(), "Doc.dat Doc.datbak\nold$");
  EXPECT_EQ(window.boxes.size(), 1U);

  document.CreateDocument(L"D2");  // is not there to be set aside, nor to be put back
  document.AddPage(L"\U0001F600");
  EXPECT_FALSE(document.SaveDocument());
  EXPECT_EQ(window.boxes.size(), 3U);
}

TEST_F(DocumentTest, AFileInOtherLetterCaseIsReplacedAndGetsNoSecondOneBesideIt) {
  station.write("Batchs/b1/D1/DOC.DAT", "A$");
  const auto save = [&](const wchar_t* page) {
    station.write("Batchs/b1/D1/Doc.datbak", "left by a crash");
    document.AddPage(page);
    return document.SaveDocument();
  };
  ASSERT_TRUE(document.LoadDocument(L"d1"));
  EXPECT_TRUE(save(L"B"));
  EXPECT_FALSE(save(L"\U0001F600"));  // the old list comes back, not what the crash has left
  EXPECT_EQ(station.shell("cd Batchs/b1/D1; ls; cat DOC.DAT"), "DOC.DAT\nA$B$");
}

TEST_F(DocumentTest, PagesAreEditedByPosition) {
  enum Edit { Add, Remove, Move };
  const struct {
    std::wstring before;  // a page for each letter
    Edit edit;
    std::int16_t position, target;
    std::string after, failure;
  } cases[] = {{L"AB", Add, -1, 0, "A|B|X|", ""},
               {L"", Add, -32768, 0, "X|", ""},
               {L"AB", Add, 1, 0, "X|A|B|", ""},
               {L"AB", Add, 3, 0, "A|B|", "AddPage-there is no page 3"},
               {L"AB", Add, 0, 0, "A|B|", "AddPage-there is no page 0"},
               {L"AB", Remove, 1, 0, "B|", ""},
               {L"AB", Remove, 0, 0, "A|B|", "RemovePage-there is no page 0"},
               {L"ABCD", Move, 3, 1, "C|A|B|D|", ""},
               {L"ABCD", Move, 1, 3, "B|A|C|D|", ""},
               {L"ABCD", Move, 1, 4, "B|C|A|D|", ""},
               {L"ABCD", Move, 2, 2, "A|B|C|D|", ""},
               {L"ABCD", Move, 0, 1, "A|B|C|D|", "MovePage-there is no page 0"}};
  for (const auto& c : cases) {
    document.CreateDocument(L"D1");
    for (const wchar_t page : c.before) document.AddPage(std::wstring(1, page));
    EXPECT_EQ(c.edit == Add      ? document.AddPage(L"X", c.position)
              : c.edit == Remove ? document.RemovePage(c.position)
                                 : document.MovePage(c.position, c.target),
              c.failure.empty());
    EXPECT_EQ(pages(), c.after);
    EXPECT_EQ(station.takeLog(), c.failure.empty() ? "" : "Document:" + c.failure + "\n");
  }
}

TEST_F(DocumentTest, PagesAreRemovedByTheirExactNameAndNotEditedWithoutAList) {
  EXPECT_FALSE(document.AddPage(L"A") || document.RemovePage(1) || document.MovePage(1, 1));
  EXPECT_EQ(document.RemovePageForName(L"A"), L"False");
  std::string log;
  for (const char* operation : {"AddPage", "RemovePage", "MovePage", "RemovePageForName"}) {
    log += std::string("Document:") + operation + "-the document has no page list\n";
  }
  EXPECT_EQ(station.takeLog(), log);
  document.CreateDocument(L"D1");
  for (const wchar_t* page : {L"A", L"A", L"a", L"A ", L"A"}) document.AddPage(page);
  EXPECT_EQ(document.RemovePageForName(L"A") + document.RemovePageForName(L"B"), L"TrueTrue");
  EXPECT_EQ(pages(), "a|A |");
}

TEST(ScanTree, BuildersRefuseNothing) {
  gBatchFolder.clear();
  EXPECT_EQ(GetDocumentPath(L"") + GetDocDataPath(L"D1"), L"\\\\\\D1\\Doc.dat");
  gBatchFolder = L"X";
  EXPECT_EQ(GetPagePath(L"D1", L"P1"), L"X\\D1\\P1.tif");
}

TEST(ScanTree, ASubFolderIsADocumentOrCertainlyNone) {
  const TempStation station;
  const std::string gone = "No such file or directory", loop = "Too many levels of symbolic links",
                    closed = "Permission denied";
  const struct {
    const char* command;  // makes D
    std::string answer;   // or the reason why there is none, after the path
  } cases[] = {{"mkdir D; touch D/Doc.dat", "yes"},
               {"mkdir D; touch D/DOC.DAT", "yes"},
               {"mkdir D E; touch E/x; ln -s ../E/x D/doc.dat", "yes"},
               {"mkdir E; touch E/Doc.dat; ln -s E D", "yes"},
               {"mkdir D; touch D/Doc.dat; chmod 111 D", "yes"},
               {"mkdir D; touch D/Doc.datbak D/1.tif", "no"},
               {"mkdir E; ln -s E D", "no"},
               {"true", "D\\: " + gone},
               {"ln -s nowhere D", "D\\: " + gone},
               {"ln -s D D", "D\\Doc.dat: " + loop},
               {"touch D", "D\\Doc.dat: Not a directory"},
               {"mkdir D; ln -s nowhere D/Doc.dat", "D\\Doc.dat: " + gone},
               {"mkdir D; ln -s DOC.dat D/DOC.dat", "D\\DOC.dat: " + loop},
               {"mkdir -p D/Doc.dat", "D\\Doc.dat: Is a directory"},
               {"mkdir D; mkfifo D/Doc.dat", "D\\Doc.dat: Invalid argument"},
               {"mkdir D; touch D/Doc.dat; chmod 0 D/Doc.dat", "D\\Doc.dat: " + closed},
               {"mkdir D; touch D/Doc.dat; chmod 0 D", "D\\Doc.dat: " + closed},
               {"mkdir D; chmod 111 D", "D\\: " + closed}};
  gBatchFolder = station.path(L"Batchs\\B");
  const std::string batch = toUtf8(gBatchFolder) + "\\";
  for (const auto& c : cases) {
    SCOPED_TRACE(c.command);
    station.shell("chmod 755 .; mkdir -p Batchs/B; cd Batchs/B; " + std::string(c.command));
    bool answer = false;
    const std::string reason = failureOf([&] {
      const AsOrdinaryUser user;
      answer = isDocument(L"D");
    });
    station.shell("chmod -R u+rwX Batchs; rm -r Batchs");  // else only root could remove it
    EXPECT_EQ(reason.empty() ? (answer ? "yes" : "no") : reason.substr(batch.size()), c.answer);
  }
}

}  // namespace
}  // namespace orvane::test
