#pragma once

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "export/ExportStation.h"
#include "export/JournalHost.h"
#include "export/OutputNaming.h"
#include "export/RunOutPutBatch.h"

namespace orvane::test {

inline std::string joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) all += text + "|";
  return all;
}

/// A station and a host whose run can be watched from its beginning to its end.
class WholeRun : public testing::Test {
 protected:
  WholeRun() {
    host.options.SavePath = station.outputText();
    host.options.ReNameFormat = kNameOfDocumentAndPage;
    host.options.ReNameSp1 = L"-";
    host.options.ReNameSp2 = L"-";
    host.options.IsCreateBatchFolder = true;
  }
  // Runs until the operator stops the run or no batch is left, and returns the lines of the list.
  std::string run() {
    host.lines.clear();
    host.journal.clear();
    orvane::RunOutPutBatch(host);
    return joined(host.lines);
  }

  ExportStation station;
  JournalHost host;
};

}  // namespace orvane::test
