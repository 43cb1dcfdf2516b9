#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include "docops/DocumentHelper.h"
#include "docops/mdlDocumentHelper.h"
#include "docstore/ScanTree.h"
#include "foundation/Failure.h"
#include "imaging/RecordingEngine.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

using Lines = std::vector<std::wstring>;

const std::wstring kLogSource = L"Orvane成果导出 - Orvane成果导出:DocumentHelper-";

class Item : public DispatchObject {
 public:
  Item(std::wstring name, std::wstring value) : name_(std::move(name)), value_(std::move(value)) {}
  explicit Item(std::wstring documentID) : Item(L"DocumentID", std::move(documentID)) {}
  std::wstring property(const std::wstring& sName) const override {
    if (sName != name_) throw Failure("no such property");
    return value_;
  }

 private:
  std::wstring name_, value_;
};

class DocumentOperations : public testing::Test {
 protected:
  TempStation station;
  RecordingWindow window;
  RecordingEngine engine;
  RecordingEngine pageCount;
  DocumentHelper helper;

  void SetUp() override {
    gBatchFolder = station.path(L"Batchs\\B1");
    addDocument("D1", "a$b$a$", {"a", "b"});
    addDocument("D2", "b$c$", {"b", "c"});
  }
  void TearDown() override { gBatchFolder.clear(); }

  std::filesystem::path document(const std::string& name) const {
    return station.native("Batchs/B1/" + name);
  }

  void addDocument(const std::string& name, const std::string& pageList,
                   const std::vector<std::string>& pages) {
    writeBytes(document(name) / "Doc.dat", pageList);
    for (const std::string& page : pages) {
      writeBytes(document(name) / (page + ".tif"), name + " page " + page);
    }
  }

  bool merge(const std::wstring& target, const std::vector<std::wstring>& ids) {
    std::vector<Item> items;
    for (const std::wstring& id : ids) items.emplace_back(id);
    DispatchList list;
    for (const Item& item : items) list.push_back(&item);
    return mdlDocumentHelper::MergeDocument(engine, pageCount, target, &list);
  }

  std::string treeSum() const {
    return outputOf("cd " + quoted(station.native("Batchs")) +
                    " && find . -type f | LC_ALL=C sort | xargs -d '\\n' sha256sum; find . | sort");
  }
};

TEST_F(DocumentOperations, AMergedDocumentHoldsThePagesOfBothInTheirOrder) {
  const std::string before = treeSum();
  pageCount.imagError = 3;
  EXPECT_TRUE(merge(L"新", {L"D1", L"D2", L"absent"}));
  EXPECT_EQ(pageCount.calls, (std::vector<std::string>{"SourceFile", "Refresh", "Picture"}));
  EXPECT_TRUE(engine.calls.empty());

  // D2's page b finds its name taken; D1's a stands twice.
  EXPECT_EQ(readBytes(document("新") / "Doc.dat"), "a$b$a$b_2$c$");
  const std::map<std::string, std::string> pages{
      {"a", "D1 page a"}, {"b", "D1 page b"}, {"b_2", "D2 page b"}, {"c", "D2 page c"}};
  for (const auto& [name, bytes] : pages) {
    EXPECT_EQ(readBytes(document("新") / (name + ".tif")), bytes);
  }
  EXPECT_EQ(outputOf("ls " + quoted(document("新")) + " | wc -l"), "5\n");
  std::filesystem::remove_all(document("新"));
  EXPECT_EQ(treeSum(), before);
  EXPECT_TRUE(window.boxes.empty());
  EXPECT_TRUE(station.logEntries().empty());
}

TEST_F(DocumentOperations, AnOlderDocumentIsReplacedByAWholeOneOrKept) {
  addDocument("Old", "x$", {"x"});
  const std::string before = treeSum();
  std::filesystem::remove(document("D2") / "c.tif");
  EXPECT_FALSE(merge(L"Old", {L"D1", L"D2"}));
  EXPECT_EQ(window.boxes.size(), 1U);  // the copy tells its failure
  writeBytes(document("D2") / "c.tif", "D2 page c");
  EXPECT_EQ(treeSum(), before);
  EXPECT_TRUE(merge(L"Old", {L"D2", L"D1"}));
  EXPECT_EQ(readBytes(document("Old") / "Doc.dat"), "b$c$a$b_2$a$");
  EXPECT_FALSE(std::filesystem::exists(document("Old") / "x.tif"));
  EXPECT_EQ(outputOf("ls " + quoted(station.native("Batchs/B1"))), "D1\nD2\nOld\n");
}

TEST_F(DocumentOperations, AMergeThatCannotBeTouchesNothing) {
  const std::string before = treeSum();
  EXPECT_FALSE(merge(L"", {L"D1", L"D2"}));
  EXPECT_FALSE(merge(L"N", {L"D1"}));
  EXPECT_FALSE(mdlDocumentHelper::MergeDocument(engine, pageCount, L"N", nullptr));
  EXPECT_FALSE(mdlDocumentHelper::MergeDocumentFor奇偶排序(L"N", nullptr, true));
  EXPECT_TRUE(station.logEntries().empty());

  const Item nameless(L"Name", L"D1");
  const Item second(L"D2");
  const DispatchList wrongItem{&nameless, &second};
  EXPECT_FALSE(mdlDocumentHelper::MergeDocument(engine, pageCount, L"N", &wrongItem));
  EXPECT_FALSE(merge(L"D1", {L"D1", L"D2"}));
  EXPECT_FALSE(merge(L"D2", {L"D1", L"D2"}));
  EXPECT_FALSE(merge(L"..", {L"D1", L"D2"}));
  EXPECT_FALSE(merge(L"N", {L"D1", L"absent"}));
  const Lines log = station.logEntries();
  ASSERT_EQ(log.size(), 6U);  // the missing document also has the line of its page list
  EXPECT_EQ(log[0], kLogSource + L"MergeDocument-no such property");
  for (const std::size_t i : {1U, 2U, 3U, 5U}) {
    EXPECT_EQ(log[i].rfind(kLogSource + L"MergeDocument-", 0), 0U) << toUtf8(log[i]);
  }
  EXPECT_EQ(treeSum(), before);
}

TEST_F(DocumentOperations, OnlyADirectChildOfTheBatchIsDeleted) {
  writeBytes(station.native("Batchs/keep.txt"), "x");
  std::filesystem::create_directory_symlink(station.native("Batchs"), document("link"));
  const std::string before = treeSum();
  for (const wchar_t* name : {L"", L".", L"..", L"D1\\..", L"..\\B1", L"D1/../D2", L"absent"}) {
    EXPECT_FALSE(helper.DeleteDocumentForDocumentID(name)) << toUtf8(name);
  }
  EXPECT_EQ(treeSum(), before);
  std::filesystem::permissions(document("D1"), std::filesystem::perms::owner_read);
  EXPECT_TRUE(helper.DeleteDocumentForDocumentID(L"D1"));
  EXPECT_TRUE(helper.DeleteDocumentForDocumentID(L"link"));
  EXPECT_EQ(outputOf("ls " + quoted(station.native("Batchs/B1"))), "D2\n");
  EXPECT_EQ(readBytes(station.native("Batchs/keep.txt")), "x");
  gBatchFolder.clear();
  EXPECT_FALSE(helper.DeleteDocumentForDocumentID(L"D2"));
  EXPECT_TRUE(station.logEntries().empty());
}

TEST_F(DocumentOperations, AFreeNameIsFoundByCounting) {
  EXPECT_EQ(helper.MakeOnlyOneFileName(L"D3"), L"D3");
  EXPECT_EQ(helper.MakeOnlyOneFileName(L"D1"), L"D1_2");
  std::filesystem::create_directory(document("D1_2"));
  EXPECT_EQ(helper.MakeOnlyOneFileName(L"D1"), L"D1_3");
  EXPECT_EQ(helper.MakeOnlyOneFileName(L"D1", 5), L"D1_5");
  EXPECT_EQ(helper.MakeOnlyOneFileName(L"D1", 1001), L"");
  EXPECT_EQ(helper.MakeOnlyOneFileName(L"D9", 1001), L"D9");
  for (int i = 3; i < 1000; ++i)
    std::filesystem::create_directory(document("D1_" + std::to_string(i)));
  EXPECT_EQ(helper.MakeOnlyOneFileName(L"D1"), L"D1_1000");
  std::filesystem::create_directory(document("D1_1000"));
  EXPECT_EQ(helper.MakeOnlyOneFileName(L"D1"), L"");
}

TEST_F(DocumentOperations, APageIsDeletedThroughTheInstanceAndItsErrorCounts) {
  using Calls = std::vector<std::string>;
  engine.imagError = 4;
  EXPECT_TRUE(mdlDocumentHelper::DeletePage(engine, L"\\m.tif", -3));
  EXPECT_EQ(engine.calls, (Calls{"SourceFile", "Refresh", "DeletePageFromFile \\m.tif -3"}));

  engine.calls.clear();
  engine.imagErrorAfterDelete = 9;
  EXPECT_FALSE(mdlDocumentHelper::DeletePage(engine, L"\\m.tif", 1));
  EXPECT_EQ(engine.calls, (Calls{"DeletePageFromFile \\m.tif 1", "SourceFile", "Refresh"}));
  EXPECT_TRUE(station.logEntries().empty());

  engine.throwsAt = "DeletePageFromFile";
  EXPECT_FALSE(mdlDocumentHelper::DeletePage(engine, L"\\m.tif", 1));
  EXPECT_EQ(engine.imagError, 0);
  EXPECT_EQ(station.logEntries(),
            Lines{kLogSource + L"DeletePage-Err:broken ImgDelete.ImagError=9"});
}

}  // namespace
}  // namespace orvane::test
