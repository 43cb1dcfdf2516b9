// The tools that make a station, with the power cut after each of their changes.
#include <gtest/gtest.h>

#include "export/ExportStation.h"
#include "trust/RecordedDisk.h"

namespace orvane::test {
namespace {

struct Tool {
  const char* name;
  const char* command;
  const char* database;  // on the disk
};

void PrintTo(const Tool& tool, std::ostream* stream) {
  *stream << tool.name;
}

class Tools : public testing::TestWithParam<Tool> {
 protected:
  // No tool can create a Jet database, so scripts stand in for those that read one.
  Tools() {
    station.shell("mkdir -p tools/lib disk/old; cp '" TOOLS "/new-station' '" TOOLS
                  "/import-database' '" EMPTY_DATABASE
                  "' tools; echo program > tools/orvane-export; echo library > tools/lib/x.so");
    const std::pair<std::string, std::string> readers[] = {
        {"mdb-tables", "echo T_BatchInfo"},
        {"mdb-schema",
         "printf '\\t`%s` varchar,\\n' BatchID BatchState CreateDate PaperNum Remark"},
        {"mdb-export", "printf '%s\\n' BatchID,BatchState,CreateDate,PaperNum,Remark 'B,,,1,x'"},
        {"mdb-count", "echo 1"}};
    for (const auto& [name, text] : readers) station.write("tools/" + name, "#!/bin/sh\n" + text);
    station.shell("chmod +x tools/mdb-*");
  }

  void run(const std::string& environment = "") const {
    station.shell("export PATH=\"$PWD/tools:$PATH\" " + environment + "; tools/" +
                  GetParam().command);
  }

  TempStation station;
};

TEST_P(Tools, APowerCutLeavesAWholeStationOrTheToolCanBeRepeated) {
  const std::filesystem::path folder = station.native("disk");
  RecordedDisk disk(folder);
  run("LD_LIBRARY_PATH='" FAULTS_FOLDER "' LD_PRELOAD=" FAULTS " JOURNAL_FILE=" +
      quoted(disk.journal()) + " JOURNAL_FOLDER=" + quoted(folder));
  const auto whole = ExportStation::contentOf(folder);
  disk.cutPower(3, [&](const RecordedDisk::Cut& cut) {
    SCOPED_TRACE(cut.description);
    const bool isMade = ExportStation::contentOf(folder).contains(GetParam().database);
    EXPECT_TRUE(isMade || !cut.isAtEnd);
    if (!isMade) run();
    const auto left = ExportStation::contentOf(folder);
    EXPECT_TRUE(std::ranges::includes(left, whole));
    return !HasFailure();
  });
}

INSTANTIATE_TEST_SUITE_P(
    Each, Tools,
    testing::ValuesIn<Tool>(
        {{"NewStation", "new-station \"$PWD/disk/new/er\"", "new/er/Orvane.dll"},
         {"NewStationInAFolder", "new-station \"$PWD/disk/old\"", "old/Orvane.dll"},
         {"ImportDatabase", "import-database tools/lib/x.so \"$PWD/disk/old\"", "old/Orvane.dll"}}),
    testing::PrintToStringParamName());

}  // namespace
}  // namespace orvane::test
