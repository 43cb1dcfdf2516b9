// Lets every system call of a small export, and of the document operations of a host, fail once,
// and kills the process before it.
#include "trust/faults.h"

#include <csignal>
#include <gtest/gtest.h>

#include "docops/DocumentHelper.h"
#include "docstore/ScanTree.h"
#include "imaging/ImagingControl.h"
#include "imaging/mdlImageProcess.h"
#include "support/RecordingWindow.h"
#include "trust/ReferenceStation.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

constexpr int kKilled = 128 + SIGKILL;
#ifdef __SANITIZE_ADDRESS__  // a sample of the calls is enough
constexpr long kStep = 23;
#else
constexpr long kStep = 1;
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
        "\\( p.tif -negate \\) m.tif");
    ImagingControl engine;
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

  ExportStation station;
  const fs::path pristine = station.native("pristine");
  RecordingWindow window;
};

TEST_F(HostFaults, LeaveTheOldStateOrTheNewOneAndTheOperationCanBeRepeated) {
  ImagingControl engine;
  const auto at = [&](const wchar_t* name) { return gBatchFolder + L"\\" + name; };
  const std::pair<const char*, std::function<bool()>> operations[] = {
      {"merge", [&] { return merge(L"N"); }},
      {"merge over an older document", [&] { return merge(L"Old"); }},
      {"delete a page of a TIFF file",
       [&] { return DocumentHelper().DeletePage(at(L"m.tif"), 1); }},
      {"delete a page of a PDF file", [&] { return DocumentHelper().DeletePage(at(L"m.pdf"), 1); }},
      {"save over the source",
       [&] { return mdlImageProcess::SaveImage(engine, at(L"p.tif"), 1, L"", false, 0, false); }}};
  for (const auto& [name, run] : operations) {
    const auto& operation = run;
    for (const Fault fault : {Fault::Fail, Fault::Kill}) {
      // Failing removals are not tried: they leave the file, as they must.
      const unsigned kinds = fault == Fault::Kill ? kAllButMemory : kAll - kRemove;
      reset();
      const auto before = seen(), treeBefore = station.scanTree();
      armFaults(station.scan("").c_str(), kinds, Fault::None, 0);
      EXPECT_TRUE(operation());
      const long calls = disarmFaults();
      const auto after = seen(), treeAfter = station.scanTree();
      EXPECT_NE(before, after);
      EXPECT_GT(calls, 8);
      for (long call = 1; call <= calls && !HasFailure(); call += kStep) {
        SCOPED_TRACE(std::string(name) + ", call " + std::to_string(call));
        reset();
        const int result = inChild([&] {
          armFaults(station.scan("").c_str(), kinds, fault, call);
          return operation() ? 0 : 1;
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
        EXPECT_TRUE(operation());
        EXPECT_TRUE(seen() == after);
      }
    }
  }
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
