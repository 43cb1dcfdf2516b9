#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "batchdb/mdlDataBase.h"
#include "export/OutputNaming.h"
#include "export/RunHost.h"
#include "foundation/utf8_text.h"
#include "imaging/ImagingControl.h"
#include "settings/NamingPattern.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {

/// A station with a real database and real pages, and a folder for the output.
class ExportStation : public TempStation {
 public:
  ExportStation() {
    std::filesystem::create_directory(output());
    gConnection.reset();  // it leads to the station of an earlier test
  }

  /// Makes the database anew, with one waiting batch for each name, oldest first.
  void createTable(const std::vector<std::string>& batches) {
    gConnection.reset();
    std::filesystem::remove(native("Orvane.dll"));
    std::string sql =
        "create table T_BatchInfo (BatchID text, BatchState text, CreateDate text, "
        "PaperNum integer, Remark text);";
    for (std::size_t i = 0; i < batches.size(); ++i) {
      sql += "insert into T_BatchInfo values ('" + batches[i] + "', '完成扫描', '2022-04-" +
             std::to_string(10 + i) + "', 3, null);";
    }
    query(sql);
  }

  std::string query(const std::string& sql) const {
    return outputOf("sqlite3 " + quoted(native("Orvane.dll")) + " \"" + sql + "\"");
  }

  /// State and remark of a batch: "完成扫描|".
  std::string stateOf(const std::string& batch) const {
    std::string row = query(
        "select BatchState, ifnull(Remark, '') from T_BatchInfo where BatchID='" + batch + "'");
    return row.substr(0, row.find('\n'));
  }

  /// Writes `Batchs/<document>` with a Doc.dat of `pages`; a page named "missing" gets no file.
  void addDocument(const std::string& document, const std::vector<std::string>& pages) {
    std::string list;
    for (const std::string& page : pages) {
      list += page + "$";
      if (page != "missing") writeBytes(scan(document + "/" + page + ".tif"), grayPage());
    }
    writeBytes(scan(document + "/Doc.dat"), list);
  }

  std::filesystem::path scan(const std::string& name) const { return native("Batchs/" + name); }
  std::filesystem::path output(const std::string& name = {}) const {
    return name.empty() ? native("output") : native("output/" + name);
  }
  std::wstring outputText() const { return path(L"output"); }

  /// Every file of the output folder, by its path in there.
  std::set<std::string> outputFiles() const { return filesBelow(output()); }

  /// Every file of the scan tree with its content.
  std::map<std::string, std::string> scanTree() const {
    std::map<std::string, std::string> files;
    for (const std::string& name : filesBelow(native("Batchs"))) {
      files[name] = readBytes(scan(name));
    }
    return files;
  }

  static const std::string& grayPage() {
    static const std::string bytes =
        outputOf("convert -size 40x30 gradient: -depth 8 -density 200 -units PixelsPerInch tif:-");
    return bytes;
  }

 private:
  static std::set<std::string> filesBelow(const std::filesystem::path& folder) {
    std::set<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
      if (!entry.is_directory()) files.insert(entry.path().lexically_relative(folder).string());
    }
    return files;
  }
};

/// The host of a run without a window. What the operator would see goes to one journal, in order.
class JournalHost final : public RunHost, private ProgressList {
 public:
  JournalHost() {
    window.onYield = [this] {
      journal.push_back("yield");
      if (whenYielding) whenYielding();
    };
  }

  const ExportSettings& settings() const override { return options; }
  std::wstring txtLiuShui() const override { return pageNumberWidth; }
  std::wstring AutoMakeNewDocumentName(const std::wstring& sBatchName,
                                       const std::wstring& sDocName) const override {
    return documentStem(options.ReNameFormat, sBatchName, sDocName, options.ReNameSp1,
                        options.ReNameSp2);
  }
  ImagingInstances imaging() override {
    return {engines_[0], engines_[1], engines_[2], engines_[3], engines_[4], engines_[5]};
  }
  ProgressList& listProcessLog() override { return *this; }
  bool IsStopRequested() const override { return stopRequested_; }
  void setIsStopRequested(bool requested) override { stopRequested_ = requested; }
  void enableBtnRun(bool enabled) override {
    journal.push_back(enabled ? "btnRun on" : "btnRun off");
  }
  void RefreshRunButtons() override { journal.push_back("buttons"); }

  ExportSettings options;
  std::wstring pageNumberWidth = L"3";
  bool stopAfterBatch = false;         ///< the operator presses stop when a batch is over
  std::function<void()> whenYielding;  ///< what the operator does meanwhile
  RecordingWindow window;
  std::vector<std::string> journal;
  std::vector<std::string> lines;

 private:
  void addItem(std::wstring_view line) override {
    lines.push_back(toUtf8(line));
    journal.push_back("line " + lines.back());
    if (stopAfterBatch && line == L" ") stopRequested_ = true;
  }
  void clear() override { lines.clear(); }
  void refresh() override { journal.push_back("repaint"); }

  ImagingControl engines_[6];
  bool stopRequested_ = false;
};

}  // namespace orvane::test
