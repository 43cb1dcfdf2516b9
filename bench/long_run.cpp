// Long unattended runs: many batches, one batch that fails again and again, and a table of a
// million rows; and many short documents instead of a long one. Prints the figures. The exit status
// is 1 if one exceeds its limit.

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iostream>
#include <vector>

#include "batchdb/mdlDataBase.h"
#include "export/ExportStation.h"
#include "export/JournalHost.h"
#include "export/RunOutPutBatch.h"
#include "foundation/paths.h"
#include "foundation/program.h"
#include "settings/ExportSettings.h"

namespace {

using namespace orvane;
namespace fs = std::filesystem;

constexpr int kBatches = 500, kDocuments = 10, kPages = 10, kFailures = 100'000,
              kShortDocuments = 200;
constexpr double kMostGrowthMb = 5, kMostQueryMs = 50;

bool withinLimits = true;

void report(const std::string& what, double value, double limit) {
  std::cout << what << ": " << value << (value > limit ? "  TOO MUCH" : "") << std::endl;
  withinLimits = withinLimits && value <= limit;
}

double residentMb() {
  long total = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return static_cast<double>(resident) * 4096 / 1e6;
}

double openFiles() {
  return static_cast<double>(
      std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

double msSince(std::chrono::steady_clock::time_point begin) {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin)
      .count();
}

// Runs `passes` passes and compares the last fifth of them with the first fifth.
void run(const test::ExportStation& station, const std::string& what, int passes) {
  test::JournalHost host;
  host.options.SavePath = station.outputText();
  host.options.ReNameFormat = kNameOfDocument;
  host.options.SaveFileType = 2;
  host.options.IsMutiPage = true;
  host.options.IsCreateBatchFolder = true;
  double memory[2]{}, files[2]{}, ms[2]{};
  int done = 0;
  auto begin = std::chrono::steady_clock::now();
  host.whenLineAdded = [&](const std::string& line) {
    host.journal.clear();  // only the memory of the program is measured
    if (line != " ") return;
    ++done;
    host.lines.clear();
    if (done % (passes / 5) != 0) return;
    const int part = done == passes ? 1 : 0;
    if (part == 1 || done == passes / 5) {
      memory[part] = residentMb();
      files[part] = openFiles();
      ms[part] = msSince(begin);
    }
    begin = std::chrono::steady_clock::now();
    if (part == 1) host.setIsStopRequested(true);
  };
  RunOutPutBatch(host);
  report(what + ", passes short", passes - done, 0);
  report(what + ", growth of memory in MB", memory[1] - memory[0], kMostGrowthMb);
  report(what + ", growth of open files", files[1] - files[0], 0);
  report(what + ", time of the last fifth over that of the first", ms[1] / ms[0], 1.5);
}

void runManyBatches() {
  test::ExportStation station;
  for (int i = 0; i < kDocuments; ++i) {
    station.addDocument("../batch/D" + std::to_string(i), std::vector<std::string>(kPages, "P"));
  }
  std::vector<std::string> batches;
  fs::create_directory(station.scan(""));
  for (int i = 0; i < kBatches; ++i) {
    batches.push_back("B" + std::to_string(i));
    fs::create_directory_symlink("../batch", station.scan(batches.back()));
  }
  station.createTable(batches);
  run(station, std::to_string(kBatches) + " batches", kBatches);
  report("files missing", kBatches * kDocuments - static_cast<double>(station.outputFiles().size()),
         0);
}

void runFailingBatch() {
  test::ExportStation station;
  station.createTable({"missing"});
  run(station, std::to_string(kFailures) + " failures of one batch", kFailures);
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// Exports one batch to multi-page files in a new folder and returns the time. Nothing is deleted
// before the end, because ext4 creates files slowly for minutes after others were deleted.
double exportTime(test::ExportStation& station, const std::string& batch) {
  const std::string folder = std::to_string(
      std::distance(fs::directory_iterator(station.output()), fs::directory_iterator()));
  fs::create_directory(station.output(folder));
  station.createTable({batch});
  test::JournalHost host(workersOfMachine());
  host.options.SavePath = pathText(station.output(folder));
  host.options.ReNameFormat = kNameOfDocument;
  host.options.IsMutiPage = true;
  const auto begin = std::chrono::steady_clock::now();
  RunOutPutBatch(host);
  report(batch + ", failures", static_cast<double>(host.reasons.size()), 0);
  return msSince(begin);
}

void compareShortDocuments(const std::string& kind, int rounds, double limit) {
  test::ExportStation station;
  const fs::path pages = station.scan("one document/pages");
  fs::create_directories(pages.parent_path());
  const fs::path here = fs::read_symlink("/proc/self/exe").parent_path();
  test::outputOf(test::quoted(here / "sample-station") + " " + test::quoted(pages) + " --pages " +
                 kind + " " + std::to_string(kShortDocuments));
  for (const fs::path& page : fs::directory_iterator(pages)) {
    last_write_time(page, last_write_time(page) - std::chrono::hours(1));
    if (page.extension() != ".tif") continue;
    const fs::path document = station.scan("short documents") / page.stem();
    fs::create_directories(document);
    fs::create_hard_link(page, document / page.filename());
    test::writeBytes(document / "Doc.dat", page.stem().string() + "$");
  }
  std::vector<double> times, ratios;
  for (int round = 0; round < rounds; ++round) {
    times.push_back(exportTime(station, "one document"));
    ratios.push_back(exportTime(station, "short documents") / times.back());
  }
  std::cout << "200 pages " << kind << ", ms: " << median(times) << std::endl;
  report("200 documents of one page over one document of 200", median(ratios), limit);
}

void queryMillionRows() {
  test::ExportStation station;
  test::outputOf("sqlite3 " + test::quoted(station.native("Orvane.dll")) + " <" BATCH_TABLE);
  station.query(
      "insert into T_BatchInfo (BatchID, BatchState, CreateDate, PaperNum)"
      " with recursive n(i) as (select 1 union all select i + 1 from n where i < 1000000)"
      " select 'B' || i, iif(i % 1000, '完成成果输出', '完成扫描'),"
      " datetime(1700000000 + i * 7919 % 1000003, 'unixepoch'), 3 from n");
  Recordset record;
  mdlDataBase::OpenConnection();
  const auto begin = std::chrono::steady_clock::now();
  mdlDataBase::OpenRecordset(
      record, L"select top 1 * from T_BatchInfo where BatchState='完成扫描' order by  CreateDate",
      true);
  report("query of a million rows in ms", msSince(begin), kMostQueryMs);
  report("rows not found", 1 - record.RecordCount(), 0);
}

}  // namespace

int main() {
  keepFreedMemory();  // as the program does
  runManyBatches();
  runFailingBatch();
  queryMillionRows();
  compareShortDocuments("g4", 15, 1.1);
  compareShortDocuments("colour-jpeg", 5, 1.1);
  return withinLimits ? 0 : 1;
}
