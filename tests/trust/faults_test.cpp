// Lets every system call of a small export, and of the document operations of a host, fail once,
// and kills the process before it.
#include "trust/faults.h"

#include <csignal>
#include <gtest/gtest.h>

#include "docops/DocumentHelper.h"
#include "docstore/Document.h"
#include "docstore/ScanTree.h"
#include "foundation/mdlFolderAndFile.h"
#include "imaging/ImagingControl.h"
#include "imaging/mdlImageProcess.h"
#include "support/RecordingWindow.h"
#include "trust/RecordedDisk.h"
#include "trust/ReferenceStation.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

constexpr int kKilled = 128 + SIGKILL;
#ifdef __SANITIZE_ADDRESS__  // a sample of the calls is enough
constexpr long kStep = 23;
constexpr int kChoices = 0;  // of what a power cut takes
#else
constexpr long kStep = 1;
constexpr int kChoices = 20;
#endif

struct Case {
  const char* name;
  unsigned kinds;
  Fault fault;
  long step;              // between two calls that are tried
  int smallest, largest;  // allowed results of the run
  unsigned workers = 0;
};

void PrintTo(const Case& c, std::ostream* stream) {
  *stream << c.name;
}

class Faults : public testing::TestWithParam<Case> {
 protected:
  Faults() {
    fs::create_directory(temporary);
    setenv("TMPDIR", temporary.c_str(), 1);
  }
  ~Faults() override { setenv("TMPDIR", temporary.parent_path().parent_path().c_str(), 1); }

  // Runs the program with a fault.
  int run(unsigned kinds, Fault fault, long at) const {
    return inChild([&] {
      armFaults(station.native().c_str(), kinds, fault, at);
      return station.work(GetParam().workers);
    });
  }

  long callsOf(unsigned kinds) const {
    station.reset();
    inChild([&] {
      armFaults(station.native().c_str(), kinds, Fault::None, 0);
      station.work(GetParam().workers);
      writeBytes(station.native("count"), std::to_string(disarmFaults()));
      return 0;
    });
    return std::stol(readBytes(station.native("count")));
  }

  ReferenceStation station;
  const fs::path temporary = station.native("tmp");
};

TEST_P(Faults, AreReportedLoseNothingAndTheNextRunFinishes) {
  const Case& c = GetParam();
  const long calls = callsOf(c.kinds);
  EXPECT_GT(calls, 50);
  int reported = 0;
  for (long at = 1; at <= calls && !HasFailure(); at += c.step * kStep) {
    SCOPED_TRACE("call " + std::to_string(at) + " of " + std::to_string(calls));
    station.reset();
    const int result = run(c.kinds, c.fault, at);
    EXPECT_GE(result, c.smallest);
    EXPECT_LE(result, c.largest);
    EXPECT_EQ(station.defects(c.largest > 1), "");
    reported += result == 0 ? 0 : 1;
    if (result != 0) {
      EXPECT_EQ(run(c.kinds & kShare, Fault::None, 0), 0);
      EXPECT_TRUE(fs::is_empty(temporary));
    }
    EXPECT_TRUE(station.isFinished()) << (result == 0 ? "nothing was reported" : "in the next run");
  }
  RecordProperty("calls", static_cast<int>(calls));
  RecordProperty("reported", reported);
}

INSTANTIATE_TEST_SUITE_P(Kinds, Faults,
                         testing::ValuesIn<Case>({
                             {"OneCall", kAll, Fault::Fail, 1, 0, 1},
                             {"FullDisk", kWrite, Fault::FailOnward, 3, 0, 1},
                             {"DiskThatIsGone", kAllButMemory, Fault::FailOnward, 8, 0, 2},
                             {"WritesInParts", kWrite, Fault::Short, 2, 0, 0},
                             {"Kill", kAllButMemory, Fault::Kill, 3, kKilled, kKilled},
                             {"OneCallOnAShare", kAllButMemory | kShare, Fault::Fail, 8, 0, 1},
                             {"KillOnAShare", kAllButMemory | kShare, Fault::Kill, 11, kKilled,
                              kKilled},
                             // The number of calls varies: the last may not come.
                             {"OneCallWithWorkers", kAll | kThread, Fault::Fail, 2, 0, 1, 2},
                             {"KillWithWorkers", kAllButMemory, Fault::Kill, 8, 0, kKilled, 2},
                         }),
                         testing::PrintToStringParamName());

struct Item : DispatchObject {
  explicit Item(std::wstring id) : id_(std::move(id)) {}
  std::wstring property(const std::wstring&) const override { return id_; }
  std::wstring id_;
};

class HostFaults : public testing::Test {
 protected:
  HostFaults() {
    gBatchFolder = station.path(L"Batchs\\B");
    station.addDocument("B/D1", {"a", "b"});
    station.addDocument("B/D2", {"b", "c"});
    station.addDocument("B/Old", {"x", "b"});
    station.shell(
        "cd Batchs/B; convert -size 130x510 gradient: -depth 8 -compress LZW p.tif; convert p.tif "
        "\\( p.tif -negate \\) m.tif; tiff2pdf -z -o o.pdf m.tif");
    for (int page = 0; page < 2; ++page) {
      mdlImageProcess::SavePDF(engine, station.path(L"Batchs\\B\\p.tif"), 1,
                               station.path(L"Batchs\\B\\m.pdf"), false, 0, true);
    }
    fs::copy(station.scan(""), pristine, fs::copy_options::recursive);
  }
  ~HostFaults() override { gBatchFolder.clear(); }

  void reset() const {
    fs::remove_all(station.scan(""));
    fs::copy(pristine, station.scan(""), fs::copy_options::recursive);
  }

  static bool merge(const wchar_t* name) {
    const Item first(L"D1"), second(L"D2");
    const DispatchList list{&first, &second};
    return DocumentHelper().MergeDocument(name, &list);
  }

  // What a run sees: the documents with the bytes of their pages, and other files. Temporary files
  // that a killed process has left do no harm.
  std::map<std::string, std::string> seen() const {
    std::map<std::string, std::string> content;
    for (const auto& entry : fs::directory_iterator(station.scan("B"))) {
      const std::string name = entry.path().filename();
      if (entry.is_regular_file() && !name.starts_with(".orvane-")) {
        content[name] = readBytes(entry.path());
      } else if (fs::exists(entry.path() / "Doc.dat")) {
        std::istringstream list(readBytes(entry.path() / "Doc.dat"));
        content[name] = "a document";
        for (std::string page; std::getline(list, page, '$');) {
          content[name] += "|" + readBytes(entry.path() / (page + ".tif"));
        }
      }
    }
    return content;
  }

  std::set<std::string> folders() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(station.scan("B"))) {
      if (entry.is_directory()) names.insert(entry.path().filename());
    }
    return names;
  }

  struct Operation {
    const char* name;
    std::function<bool()> run;
    bool undoesFailures = true;
  };

  std::vector<Operation> operations() {
    const auto at = [](const wchar_t* name) { return gBatchFolder + L"\\" + name; };
    const auto save = [](const wchar_t* name) {
      Document document;
      return document.CreateDocument(name) && document.AddPage(L"b") && document.SaveDocument();
    };
    return {{"merge", [] { return merge(L"N"); }},
            {"merge over an older document", [] { return merge(L"Old"); }},
            {"delete a page of a TIFF file",
             [=] { return DocumentHelper().DeletePage(at(L"m.tif"), 1); }},
            {"delete a page of a PDF file",
             [=] { return DocumentHelper().DeletePage(at(L"m.pdf"), 1); }},
            {"delete a page of another program's PDF file",
             [=] { return DocumentHelper().DeletePage(at(L"o.pdf"), 1); }},
            {"save over the source",
             [=, this] {
               return mdlImageProcess::SaveImage(engine, at(L"p.tif"), 1, L"", false, 0, false);
             }},
            {"save a page list", [=] { return save(L"D1"); }},
            {"save a new page list", [=] { return save(L"New"); }, false},
            {"delete a document",
             [] { return DocumentHelper().DeleteDocumentForDocumentID(L"D1"); }, false}};
  }

  // Lets `judge` see what a power cut during the operation can leave. The note "done" says that it
  // has succeeded.
  void cutPower(const std::function<bool()>& operation, const RecordedDisk::Judge& judge) const {
    RecordedDisk disk(station.native("Batchs"));
    EXPECT_EQ(inChild([&] {
                armFaults(station.scan("").c_str(), 0, Fault::None, 0);
                recordDisk(disk.journal().c_str());
                if (!operation()) return 1;
                noteInJournal("done");
                return 0;
              }),
              0);
    disk.cutPower(kChoices, judge);
  }

  ExportStation station;
  const fs::path pristine = station.native("pristine");
  RecordingWindow window;
  ImagingControl engine;
};

TEST_F(HostFaults, LeaveTheOldStateOrTheNewOneAndTheOperationCanBeRepeated) {
  for (const Operation& operation : operations()) {
    for (const Fault fault : {Fault::Fail, Fault::Kill}) {
      if (fault == Fault::Fail && !operation.undoesFailures) continue;
      // Failing removals are not tried: they leave the file, as they must.
      const unsigned kinds = fault == Fault::Kill ? kAllButMemory : kAll - kRemove;
      reset();
      const auto before = seen(), treeBefore = station.scanTree();
      armFaults(station.scan("").c_str(), kinds, Fault::None, 0);
      EXPECT_TRUE(operation.run());
      const long calls = disarmFaults();
      const auto after = seen(), treeAfter = station.scanTree();
      EXPECT_NE(before, after);
      EXPECT_GT(calls, 6);
      for (long call = 1; call <= calls && !HasFailure(); call += kStep) {
        SCOPED_TRACE(std::string(operation.name) + ", call " + std::to_string(call));
        reset();
        const int result = inChild([&] {
          armFaults(station.scan("").c_str(), kinds, fault, call);
          return operation.run() ? 0 : 1;
        });
        const auto left = seen();
        EXPECT_TRUE(left == before || left == after);
        if (fault == Fault::Fail) {
          EXPECT_TRUE(station.scanTree() == (result == 0 ? treeAfter : treeBefore));
          EXPECT_EQ(station.takeLog().find("std::"), std::string::npos);
        } else {
          EXPECT_EQ(result, kKilled);
        }
        if (left != before) continue;
        EXPECT_TRUE(operation.run());
        EXPECT_TRUE(seen() == after);
      }
    }
  }
}

TEST_F(HostFaults, APowerCutLeavesTheOldStateOrTheNewOneThatWasReported) {
  for (const Operation& operation : operations()) {
    reset();
    const auto before = seen();
    EXPECT_TRUE(operation.run());
    const auto after = seen();
    const auto foldersAfter = folders();
    reset();
    cutPower(operation.run, [&](const RecordedDisk::Cut& cut) {
      SCOPED_TRACE(std::string(operation.name) + ", " + cut.description);
      const auto left = seen();
      const bool isDone = cut.notes.contains("done");
      EXPECT_TRUE(left == after || (left == before && !isDone));
      EXPECT_TRUE(!isDone || folders() == foldersAfter);
      if (left == before) {
        EXPECT_TRUE(operation.run());
        EXPECT_TRUE(seen() == after);
      }
      return !HasFailure();
    });
  }
}

TEST_F(HostFaults, APowerCutLeavesAMovedFileInOneOfItsPlaces) {
  const auto file = station.scan("B/p.tif"), target = station.scan("B/new/er/p.tif");
  const std::string bytes = readBytes(file);
  const auto move = [] {
    return mdlFolderAndFile::FileMove(gBatchFolder + L"\\p.tif",
                                      gBatchFolder + L"\\new\\er\\p.tif");
  };
  cutPower(move, [&](const RecordedDisk::Cut& cut) {
    SCOPED_TRACE(cut.description);
    EXPECT_TRUE(readBytes(file) == bytes || readBytes(target) == bytes);
    return !HasFailure();
  });
}

TEST_F(HostFaults, DeletingOrNamingADocumentWithoutMemoryIsLogged) {
  armFaults(station.scan("").c_str(), kMemory, Fault::None, 0);
  const std::wstring name(20000, L'x');  // larger than the smallest allocation that can fail
  if (disarmFaults() == 0) GTEST_SKIP() << "a sanitizer allocates by itself";
  DocumentHelper helper;
  const std::pair<const char*, std::function<bool()>> operations[] = {
      {"DeleteDocumentEx-Err:", [&] { return !helper.DeleteDocumentForDocumentID(name); }},
      {"MakeOnlyOneFileName-", [&] { return helper.MakeOnlyOneFileName(name).empty(); }}};
  for (const auto& [prefix, fails] : operations) {
    armFaults(station.scan("").c_str(), kMemory, Fault::Fail, 1);
    EXPECT_TRUE(fails());
    disarmFaults();
    EXPECT_EQ(station.takeLog(),
              std::string("Orvane成果导出:DocumentHelper-") + prefix + "Cannot allocate memory\n");
  }
}

TEST(Calls, AppendingAPageOpensTheFileOnce) {
  const TempStation station;
  station.shell("mkdir out && convert -size 40x30 gradient: -depth 8 in.tif");
  ImagingControl control;
  for (const auto save : {mdlImageProcess::SaveImage, mdlImageProcess::SavePDF}) {
    for (const bool append : {false, true, true}) {
      armFaults(station.native("out").c_str(), kOpen, Fault::None, 0);
      EXPECT_TRUE(
          save(control, station.path(L"in.tif"), 1, station.path(L"out\\all"), false, 0, append));
      EXPECT_EQ(disarmFaults(), 1);
    }
  }
}

}  // namespace
}  // namespace orvane::test
