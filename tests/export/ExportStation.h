#pragma once

#include <chrono>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "batchdb/mdlDataBase.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {

/// A station with a real database and real pages, and a folder for the output.
class ExportStation : public TempStation {
 public:
  static constexpr const char* kFolder = "a folder";  ///< the bytes of a folder in `contentOf`

  ExportStation() {
    std::filesystem::create_directory(output());
    gConnection.reset();  // the connection to the station of an earlier test
  }

  /// Creates a new database with one waiting batch per name, oldest first.
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
    return outputOf("sqlite3 -cmd '.timeout 10000' " + quoted(native("Orvane.dll")) + " \"" + sql +
                    "\"");
  }

  /// State and remark of a batch: "完成扫描|".
  std::string stateOf(const std::string& batch) const {
    std::string row = query(
        "select BatchState, ifnull(Remark, '') from T_BatchInfo where BatchID='" + batch + "'");
    return row.substr(0, row.find('\n'));
  }

  /// Writes the document `Batchs/<document>` with these pages. A page named "missing" has no file.
  /// The others are an hour old: a new one is not prepared by other threads.
  void addDocument(const std::string& document, const std::vector<std::string>& pages) {
    std::string list;
    for (const std::string& page : pages) {
      list += page + "$";
      if (page == "missing") continue;
      const std::filesystem::path file = scan(document + "/" + page + ".tif");
      writeBytes(file, grayPage());
      last_write_time(file, last_write_time(file) - std::chrono::hours(1));
    }
    writeBytes(scan(document + "/Doc.dat"), list);
  }

  std::filesystem::path scan(const std::string& name) const { return native("Batchs/" + name); }
  std::filesystem::path output(const std::string& name = {}) const {
    return name.empty() ? native("output") : native("output/" + name);
  }
  std::wstring outputText() const { return path(L"output"); }

  /// The paths of all files of the output folder, relative to it.
  std::set<std::string> outputFiles() const {
    std::set<std::string> files;
    for (const auto& [name, bytes] : contentOf(output())) {
      if (bytes != kFolder) files.insert(name);
    }
    return files;
  }

  /// The whole scan tree, with the bytes of every file.
  std::map<std::string, std::string> scanTree() const { return contentOf(native("Batchs")); }

  std::map<std::string, std::string> outputTree() const { return contentOf(output()); }

  /// Every entry below a folder, with the bytes of the files.
  static std::map<std::string, std::string> contentOf(const std::filesystem::path& folder) {
    std::map<std::string, std::string> content;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
      content[entry.path().lexically_relative(folder).string()] =
          entry.is_directory() ? kFolder : readBytes(entry.path());
    }
    return content;
  }

  static const std::string& grayPage() {
    static const std::string bytes =
        outputOf("convert -size 40x30 gradient: -depth 8 -density 200 -units PixelsPerInch tif:-");
    return bytes;
  }
};

}  // namespace orvane::test
