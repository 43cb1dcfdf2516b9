#include "trust/ReferenceStation.h"

#include <iterator>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

#include "export/JournalHost.h"
#include "export/RunOutPutBatch.h"
#include "settings/ExportForm.h"
#include "settings/stored_settings.h"
#include "trust/disk_journal.h"

namespace orvane::test {

ReferenceStation::ReferenceStation() {
  const std::string sheet = "convert -size 240x300 gradient: -density 200 ";
  const std::string pages[] = {
      outputOf(sheet + "-ordered-dither o8x8 -monochrome -compress group4 tif:-"),
      outputOf(sheet + "-depth 8 -compress none tif:-"),
      outputOf(sheet + "-type TrueColor -compress jpeg tif:-")};
  std::vector<std::string> batches;
  for (int i = 0; i < kBatches; ++i) {
    const std::string batch = "B" + std::to_string(i);
    const auto document =
        scan(batch) / (batch + "D");  // so that every output name begins with the batch
    batches.push_back(batch);
    for (const char* name : {"1/P0", "1/P1", "2/P2"}) {
      writeBytes(document.string() + name + ".tif", pages[name[3] - '0']);
    }
    writeBytes(document.string() + "1/Doc.dat", "P0$P1$");
    writeBytes(document.string() + "2/Doc.dat", "P2$");
  }
  createTable(batches);
  writeBytes(native("data.ini"),
             "; kept\r\n[Setting]\r\nPerName=x\r\nSavePath=" + toUtf8(outputText()) +
                 "\r\n[Commit]\r\nSaveFileType=2\r\nIsMutiPage=True\r\nCompressionType=1\r\n"
                 "CompressionRatios=2\r\nReNameFormat=" +
                 toAnsi(kNameOfDocument) +
                 "\r\nReNameSp1=+\r\nReNameSp2=_\r\nIsCreateDocFolder=False\r\n"
                 "IsCreateBatchFolder=True\r\n");
  database_ = readBytes(native("Orvane.dll"));
  settings_ = readBytes(native("data.ini"));
  shell("find Batchs -name '*.tif' -exec touch -d '1 hour ago' {} +");  // a new one is not prepared
  scans_ = scanTree();
  if (inChild([this] { return work(); }) != 0) throw std::runtime_error("the reference run failed");
  outputs_ = outputTree();
  finishedSettings_ = readBytes(native("data.ini"));
}

void ReferenceStation::reset() const {
  for (const char* name : {"output", "Log", "Orvane.dll-journal"}) {
    std::filesystem::remove_all(native(name));
  }
  std::filesystem::create_directory(output());
  writeBytes(native("Orvane.dll"), database_);
  writeBytes(native("data.ini"), settings_);
}

ExportSettings ReferenceStation::formOf(int batch) const {
  const struct {
    std::int16_t fileType;
    bool multiPage;
    std::int16_t compressionType;
    bool batchFolder, documentFolder;
  } forms[kBatches] = {{0, false, 0, true, true},
                       {0, true, 1, true, false},
                       {1, false, 0, false, true},
                       {2, true, 0, true, false},
                       {1, true, 1, false, false}};
  ExportSettings settings;
  settings.SaveFileType = forms[batch].fileType;
  settings.IsMutiPage = forms[batch].multiPage;
  settings.CompressionType = forms[batch].compressionType;
  settings.IsCreateBatchFolder = forms[batch].batchFolder;
  settings.IsCreateDocFolder = forms[batch].documentFolder;
  settings.ReNameFormat = kNameOfDocumentAndPage;
  settings.SavePath = outputText();
  return settings;
}

int ReferenceStation::work(unsigned workers) const {
  JournalHost host(workers);
  bool failed = false, broken = false;
  int passes = 0;
  std::string batch;
  ExportForm form;
  LoadExportSettings(form);
  host.options.SavePath = outputText();
  host.whenLineAdded = [&](const std::string& line) {
    if (line.ends_with("开始导出...")) {
      batch = line.substr(std::string("档案：").size(), 2);
      host.options = formOf(batch[1] - '0');
      if (++passes == 2 * kBatches)
        host.setIsStopRequested(true);  // a failing batch is tried forever
    } else if (line.find("失败") != line.npos) {
      failed = true;
      broken = broken || !outputsAreComplete();
    } else if (line == "档案导出成果成功！") {
      noteInJournal(batch.c_str());
    }
  };
  RunOutPutBatch(host);
  SaveExportSettings(form);
  if (broken) return 2;
  return failed || !host.window.boxes.empty() ? 1 : 0;
}

bool ReferenceStation::outputsAreComplete() const {
  for (const auto& [name, bytes] : outputTree()) {
    if (!outputs_.contains(name) || outputs_.at(name) != bytes) return false;
  }
  return true;
}

std::string ReferenceStation::defects(bool wasKilled) const {
  std::string found;
  if (scanTree() != scans_) found += "the scans changed; ";
  const std::string settings = readBytes(native("data.ini"));
  if (settings != settings_ && settings != finishedSettings_) found += "data.ini: " + settings;
  if (!wasKilled && !outputsAreComplete()) found += "an incomplete file is left; ";
  for (const std::wstring& entry : logEntries()) {
    const std::string line = toUtf8(entry);
    const bool isNoMemory = line.find("Cannot allocate memory") != line.npos;
    if (line.find("std::") != line.npos || (isNoMemory && line.find(".tif: ") == line.npos)) {
      found += "an unclear log entry: " + line;
    }
  }
  const std::string states = query(
      "pragma integrity_check; select BatchID from T_BatchInfo where BatchState='完成成果输出'");
  if (!states.starts_with("ok\n")) found += "the database: " + states;
  const auto outputs = outputTree();
  for (const auto& [name, bytes] : outputs_) {
    const bool isExported = states.find(name.substr(0, 2)) != states.npos;
    const bool isComplete = outputs.contains(name) && outputs.at(name) == bytes;
    if (isExported && !isComplete) found += name + " is not complete; ";
  }
  return found;
}

bool ReferenceStation::isFinished() const {
  return outputTree() == outputs_ && readBytes(native("data.ini")) == finishedSettings_ &&
         exportedBatches().size() == kBatches;
}

std::set<std::string> ReferenceStation::exportedBatches() const {
  std::istringstream rows(query("select BatchID from T_BatchInfo where BatchState='完成成果输出'"));
  return {std::istream_iterator<std::string>(rows), {}};
}

int inChild(const std::function<int()>& work) {
  const pid_t child = fork();
  if (child == 0) _exit(work());
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace orvane::test
