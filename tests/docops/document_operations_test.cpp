#include <gmock/gmock.h>

#include "docops/DocumentHelper.h"
#include "docops/mdlDocumentHelper.h"
#include "docstore/ScanTree.h"
#include "foundation/Failure.h"
#include "imaging/RecordingEngine.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"

namespace orvane::test {
namespace {

using testing::ElementsAre;

class Item : public DispatchObject {
 public:
  explicit Item(std::wstring value, std::wstring name = L"DocumentID")
      : name_(std::move(name)), value_(std::move(value)) {}
  std::wstring property(const std::wstring& sName) const override {
    return sName == name_ ? value_ : throw Failure("no such property");
  }

 private:
  std::wstring name_, value_;
};

class DocumentOperations : public testing::Test {
 protected:
  void SetUp() override {
    gBatchFolder = station.path(L"Batchs\\B1");
    station.shell(
        "mkdir -p Batchs/B1/D1 Batchs/B1/D2 Batchs/B1/Old; cd Batchs/B1; printf 1a > D1/a.tif; "
        "printf 1b > D1/b.tif; printf 2b > D2/b.tif; printf 2c > D2/c.tif; printf x > Old/x.tif; "
        "printf 'a$b$a$' > D1/Doc.dat; printf 'b$c$' > D2/Doc.dat; printf 'x$' > Old/Doc.dat");
  }
  void TearDown() override { gBatchFolder.clear(); }

  bool merge(const std::wstring& target, const std::vector<std::wstring>& ids) {
    std::vector<Item> items;
    for (const std::wstring& id : ids) items.emplace_back(id);
    DispatchList list;
    for (const Item& item : items) list.push_back(&item);
    return mdlDocumentHelper::MergeDocument(engine, pageCount, target, &list);
  }
  // The paths in the scan tree and the bytes of every file.
  std::string scanTree() const {
    return station.shell("cd Batchs; find . | sort; grep -rH '' . | sort");
  }

  TempStation station;
  RecordingWindow window;
  RecordingEngine engine, pageCount;
  DocumentHelper helper;
};

TEST_F(DocumentOperations, AMergedDocumentHoldsThePagesOfBothInTheirOrder) {
  const std::string before = scanTree();
  pageCount.imagError = 3;
  EXPECT_TRUE(merge(L"新", {L"D1", L"D2", L"absent"}));
  EXPECT_THAT(pageCount.calls, ElementsAre("SourceFile", "Refresh", "Picture"));
  EXPECT_TRUE(engine.calls.empty());
  // The name of D2's page b is taken; D1 lists a twice.
  EXPECT_EQ(station.shell("cd Batchs/B1/新; grep -H '' *"),
            "Doc.dat:a$b$a$b_2$c$\na.tif:1a\nb.tif:1b\nb_2.tif:2b\nc.tif:2c\n");
  station.shell("rm -r Batchs/B1/新");
  EXPECT_EQ(scanTree(), before);
  EXPECT_EQ(window.takeBoxes() + station.takeLog(), "");
}

TEST_F(DocumentOperations, AnOlderDocumentIsReplacedByAWholeOneOrKept) {
  station.shell("mv Batchs/B1/D2/c.tif .");
  const std::string before = scanTree();
  EXPECT_FALSE(merge(L"Old", {L"D1", L"D2"}));
  EXPECT_EQ(window.boxes.size(), 1U);  // the copy shows its failure
  EXPECT_EQ(scanTree(), before);
  station.shell("mv c.tif Batchs/B1/D2");
  EXPECT_TRUE(merge(L"Old", {L"D2", L"D1"}));
  EXPECT_EQ(station.shell("cd Batchs/B1; ls . Old | xargs; cat Old/Doc.dat"),
            ".: D1 D2 Old Old: Doc.dat a.tif b.tif b_2.tif c.tif\nb$c$a$b_2$a$");
}

TEST_F(DocumentOperations, AMergeTakesAnyNameAndAnyPagesOnceAndAgain) {
  std::string longest;  // with ".tif", of 255 bytes
  for (int i = 0; i < 83; ++i) longest += "字";
  const std::string shortened = ".._D1_" + longest.substr(0, 243), second = longest + "_2";
  longest += "ab";
  const struct {
    std::string setUp;
    std::wstring target;
    std::string files;  // of the new document, and its page list
  } cases[] = {{": > D2/Doc.dat", L"N", "Doc.dat a.tif b.tif : a$b$a$\n"},
               {"printf '  ' > D2/Doc.dat; printf '$' > D1/Doc.dat", L"N", "Doc.dat :\n"},
               {": > D2/Doc.dat; mkdir N; echo x > N/b.TIF", L"n",
                "Doc.dat a.tif b.TIF b_2.tif : a$b_2$a$\n"},
               {"", std::wstring(255, L'n'), "Doc.dat a.tif b.tif b_2.tif c.tif : a$b$a$b_2$c$\n"},
               {"mv D1/a.tif D1/A.TIF; mv D2/c.tif D2/A.tif; printf 'A$' > D2/Doc.dat", L"N",
                "A_2.tif Doc.dat a.tif b.tif : a$b$a$A_2$\n"},
               {"mv D1/a.tif D1/" + longest + ".tif; mv D2/b.tif D2/" + longest + ".tif; pages='" +
                    longest + "$'; printf $pages | iconv -t GBK > D1/Doc.dat; " +
                    "printf \"$pages..\\\\D1\\\\%s\" $pages | iconv -t GBK > D2/Doc.dat",
                L"N",
                shortened + ".tif Doc.dat " + second + ".tif " + longest + ".tif : " + longest +
                    "$" + second + "$" + shortened + "$\n"},
               {"printf '..\\\\D1\\\\b$c$' > D2/Doc.dat; printf 'b$' > D1/Doc.dat", L"N",
                ".._D1_b.tif Doc.dat b.tif c.tif : b$.._D1_b$c$\n"}};
  for (const auto& c : cases) {
    station.shell("rm -r Batchs");
    SetUp();
    station.shell("cd Batchs/B1; " + c.setUp);
    const std::string sources = "cd Batchs/B1; ls D1 D2; cat D1/* D2/*";
    const std::string before = station.shell(sources);
    for (int times = 0; times < 2; ++times) {
      EXPECT_TRUE(merge(c.target, {L"D1", L"D2"})) << c.files;
      if (times == 0) {
        EXPECT_EQ(station.shell("cd Batchs/B1/[Nn]*; echo $(ls -A) : $(iconv -f GBK Doc.dat)"),
                  c.files);
      }
    }
    EXPECT_EQ(station.shell(sources), before);
  }
  EXPECT_EQ(window.takeBoxes() + station.takeLog(), "");
}

TEST_F(DocumentOperations, AMergeThatCannotBeTouchesNothing) {
  station.shell("cd Batchs/B1; ln -s D2 link; echo x > file; ln -s ../elsewhere dangling");
  const std::string before = scanTree();
  EXPECT_FALSE(merge(L"", {L"D1", L"D2"}) || merge(L"N", {L"D1"}));
  EXPECT_FALSE(mdlDocumentHelper::MergeDocument(engine, pageCount, L"N", nullptr));
  EXPECT_FALSE(mdlDocumentHelper::MergeDocumentFor奇偶排序(L"N", nullptr, true));
  EXPECT_EQ(station.takeLog(), "");

  const std::string source = "Orvane成果导出:DocumentHelper-MergeDocument-";
  const Item nameless(L"D1", L"Name"), second(L"D2");
  const DispatchList wrongItem{&nameless, &second};
  EXPECT_FALSE(mdlDocumentHelper::MergeDocument(engine, pageCount, L"N", &wrongItem));
  EXPECT_EQ(station.takeLog(), source + "no such property\n");
  const auto folder = [](const std::string& name) {
    return toUtf8(gBatchFolder) + "\\" + name + "\\: ";
  };
  const struct {
    std::wstring target, second;
    std::string log;
  } cases[] = {{L"D1", L"D2", source + "D1: a document cannot be merged into itself\n"},
               {L"D2", L"D2", source + "D2: a document cannot be merged into itself\n"},
               {L"d1", L"D2", source + "d1: a document cannot be merged into itself\n"},
               {L"link", L"D2", source + "link: a document cannot be merged into itself\n"},
               {L"D1\\", L"D2", source + "D1\\: cannot name a document\n"},
               {L"..", L"D2", source + "..: cannot name a document\n"},
               {L"N", L"D2/", source + "D2/: cannot name a document\n"},
               {L"N", L"..\\B1\\D2", source + "..\\B1\\D2: cannot name a document\n"},
               {L"FILE", L"D2", source + folder("file") + "File exists\n"},
               {L"dangling", L"D2", source + folder("dangling") + "File exists\n"},
               {std::wstring(256, L'n'), L"D2",
                source + folder(std::string(256, 'n')) + "File name too long\n"},
               {L"N", L"absent", source + "文档名【absent】找不到当前文档的数据文件【Doc.dat】\n"}};
  for (const auto& c : cases) {
    for (int times = 0; times < 2; ++times) {
      EXPECT_FALSE(merge(c.target, {L"D1", c.second}));
      EXPECT_EQ(station.takeLog(), c.log);
    }
  }
  EXPECT_EQ(scanTree(), before);
}

TEST_F(DocumentOperations, OnlyADirectChildOfTheBatchIsDeleted) {
  station.shell("cd Batchs; touch keep.txt; ln -s .. B1/link");
  const std::string before = scanTree();
  for (const wchar_t* name : {L"", L".", L"..", L"D1\\..", L"..\\B1", L"D1/../D2", L"absent"}) {
    EXPECT_FALSE(helper.DeleteDocumentForDocumentID(name)) << toUtf8(name);
  }
  EXPECT_EQ(scanTree(), before);
  station.shell("chmod 400 Batchs/B1/D1");
  EXPECT_TRUE(helper.DeleteDocumentForDocumentID(L"d1"));  // as the tests for existence find it
  EXPECT_TRUE(helper.DeleteDocumentForDocumentID(L"link"));
  EXPECT_EQ(station.shell("ls Batchs Batchs/B1 | xargs"),
            "Batchs: B1 keep.txt Batchs/B1: D2 Old\n");
  gBatchFolder.clear();
  EXPECT_FALSE(helper.DeleteDocumentForDocumentID(L"D2"));
  EXPECT_EQ(station.takeLog(), "");
}

TEST_F(DocumentOperations, AFreeNameIsFoundByCounting) {
  EXPECT_EQ(helper.MakeOnlyOneFileName(L"D3"), L"D3");
  EXPECT_EQ(helper.MakeOnlyOneFileName(L"D3", 1001), L"D3");
  EXPECT_EQ(helper.MakeOnlyOneFileName(L"D1", 5), L"D1_5");
  EXPECT_EQ(helper.MakeOnlyOneFileName(L"D1", 1001), L"");
  const std::pair<int, std::wstring> cases[] = {
      {1, L"D1_2"}, {2, L"D1_3"}, {999, L"D1_1000"}, {1000, L""}};
  for (const auto& [last, free] : cases) {
    station.shell("cd Batchs/B1; mkdir -p $(seq -f D1_%.0f 1 " + std::to_string(last) + ")");
    EXPECT_EQ(helper.MakeOnlyOneFileName(L"D1"), free);
  }
  const std::wstring longest(255, L'n'), fits = longest.substr(2);
  station.shell("cd Batchs/B1; mkdir " + toUtf8(longest + L" " + fits + L"_2"));
  EXPECT_EQ(helper.MakeOnlyOneFileName(longest), fits + L"_3");
}

TEST_F(DocumentOperations, APageIsDeletedThroughTheInstanceAndItsErrorCounts) {
  engine.imagError = 4;
  EXPECT_TRUE(mdlDocumentHelper::DeletePage(engine, L"\\m.tif", -3));
  EXPECT_THAT(engine.calls, ElementsAre("SourceFile", "Refresh", "DeletePageFromFile \\m.tif -3"));

  engine.calls.clear();
  engine.imagErrorAfterDelete = 9;
  EXPECT_FALSE(mdlDocumentHelper::DeletePage(engine, L"\\m.tif", 1));
  EXPECT_THAT(engine.calls, ElementsAre("DeletePageFromFile \\m.tif 1", "SourceFile", "Refresh"));
  EXPECT_EQ(station.takeLog(), "");

  engine.throwsAt = "DeletePageFromFile";
  EXPECT_FALSE(mdlDocumentHelper::DeletePage(engine, L"\\m.tif", 1));
  EXPECT_EQ(engine.imagError, 0);
  EXPECT_EQ(station.takeLog(),
            "Orvane成果导出:DocumentHelper-DeletePage-Err:broken ImgDelete.ImagError=9\n");
}

using Calls = std::vector<std::string>;

/// A component over six recording instances.
class Component : public testing::Test {
 protected:
  enum Engine { Control, Crop, Delete, Insert, Merge, PageCount };

  DocumentHelper::Engines makeEngines() {
    DocumentHelper::Engines owned;
    for (auto& engine : owned) {
      auto recording = std::make_unique<RecordingEngine>();
      engines.push_back(recording.get());
      engine = std::move(recording);
    }
    return owned;
  }
  // The calls of every instance, which are forgotten, but for the leading calls of a reset.
  std::vector<Calls> callsAfterReset() {
    std::vector<Calls> all;
    for (RecordingEngine* engine : engines) {
      Calls calls = std::exchange(engine->calls, {});
      EXPECT_GE(calls.size(), 3U);
      const auto rest = calls.begin() + std::min<std::ptrdiff_t>(3, std::ssize(calls));
      EXPECT_EQ(Calls(calls.begin(), rest), (Calls{"SourceFile", "Refresh", "Picture"}));
      all.emplace_back(rest, calls.end());
    }
    return all;
  }

  TempStation station;
  RecordingWindow window;
  std::vector<RecordingEngine*> engines;
  DocumentHelper helper{makeEngines()};
};

TEST_F(Component, EveryOperationOnPagesResetsAllInstancesFirst) {
  const std::vector<std::function<bool()>> operations{
      [&] { return helper.MergeDocument(L"", nullptr); },
      [&] { return helper.MergeDocumentFor奇偶排序(L"N", nullptr, false); },
      [&] { return helper.SaveAsDocument(L"D", 0, true, 0, 0, L"\\o", L"", L""); },
      [&] { return !helper.DeletePage(L"\\m.tif", 1); },
      [&] { return !helper.CreateThumbnailImage(L"\\m.tif", 4); },
      [&] { return helper.Terminate(), false; }};
  for (const auto& operation : operations) {
    EXPECT_FALSE(operation());
    callsAfterReset();
  }
  helper.DeleteDocumentForDocumentID(L"D");
  EXPECT_EQ(helper.MakeOnlyOneFileName(L"D"), L"D");
  for (const RecordingEngine* engine : engines) EXPECT_TRUE(engine->calls.empty());

  station.takeLog();
  engines[Merge]->throwsAt = "Refresh";  // a reset that fails is logged by Terminate alone
  EXPECT_FALSE(helper.DeletePage(L"\\m.tif", 1));
  helper.Terminate();
  EXPECT_EQ(station.takeLog(), "Orvane成果导出[DocumentHelper]:Terminate-Err:broken\n");
}

TEST_F(Component, AThumbnailThatFailsCleansUpWithoutAWord) {
  engines[Crop]->throwsAt = "ResizeImage";
  EXPECT_FALSE(helper.CreateThumbnailImage(L"\\x.tif", 4));
  const std::vector<Calls> calls = callsAfterReset();
  EXPECT_THAT(calls[Control], ElementsAre("PageNumber 1", "SourceFile \\x.tif", "CopyDIB",
                                          "SourceFile", "Picture"));
  EXPECT_THAT(calls[Crop], ElementsAre("hDIB 77", "ResizeImage 250 150", "SourceFile", "Picture"));

  // A clean-up that fails after the save is run again, and is a failure.
  engines[Crop]->throwsAt.clear();
  engines[Crop]->onSave = [&] { engines[Control]->throwsAt = "Picture"; };
  EXPECT_FALSE(helper.CreateThumbnailImage(L"\\x.tif", 4));
  for (const Calls& ofEngine : {engines[Control]->calls, engines[Crop]->calls}) {
    const Calls cleanUpTwice{"SourceFile", "Picture", "SourceFile", "Picture"};
    EXPECT_EQ(Calls(ofEngine.end() - 4, ofEngine.end()), cleanUpTwice);
  }
  EXPECT_EQ(station.takeLog(), "");
}

TEST(RealComponent, WritesAThumbnailOfPageOne) {
  const TempStation station;
  station.shell("convert -size 1003x603 xc:red -size 40x40 xc:blue -compress LZW x.tif");
  DocumentHelper helper;
  EXPECT_TRUE(helper.CreateThumbnailImage(station.path(L"x.tif"), 4));
  EXPECT_EQ(station.shell("identify -format '%m %wx%h' x.tif_B"), "JPEG 250x150");
  // In the scan tree beside the page, over an older one.
  station.shell("mkdir -p Batchs/B; cp x.tif Batchs/B/X.TIF");
  for (const wchar_t* page : {L"Batchs\\b\\X.TIF", L"Batchs\\b\\x.tif"}) {
    EXPECT_TRUE(helper.CreateThumbnailImage(station.path(page), 4));
  }
  EXPECT_EQ(station.shell("cd Batchs; ls . B | xargs; identify -format '%m %wx%h' B/X.TIF_B"),
            ".: B B: X.TIF X.TIF_B\nJPEG 250x150");
  EXPECT_FALSE(helper.CreateThumbnailImage(station.path(L"x.tif"), 2000));
  EXPECT_FALSE(helper.CreateThumbnailImage(station.path(L"absent.tif"), 2));
  station.shell(
      "tiffcp -r 603 x.tif,0 y.tif; dd if=/dev/zero of=y.tif bs=1 seek=8 count=9 conv=notrunc");
  EXPECT_FALSE(helper.CreateThumbnailImage(station.path(L"y.tif"), 4)) << "nothing to decode";
  EXPECT_FALSE(std::filesystem::exists(station.native("y.tif_B")));
  EXPECT_EQ(station.takeLog(), "");
}

}  // namespace
}  // namespace orvane::test
