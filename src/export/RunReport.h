#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace orvane {

/// What was written for a document or a batch, and how that ended.
struct ReportRow {
  std::wstring batch;
  std::wstring document{};
  std::int64_t pages = 0;
  std::int64_t files = 0;
  std::uint64_t bytes = 0;
  std::chrono::duration<double> time{};
  bool isExported = false;
  std::wstring reason{};  ///< of a failure, or what else is to be known
};

/// The record of one run, for whoever gets its files: `Log\YYYYMMDD-HHMMSS.txt` beside the logs,
/// named after the moment of its first row. UTF-8, lines end in CR LF, columns are separated by
/// tabs: a head line, a row for each document, and a sum for each batch. Every row is in the file
/// when the next document begins.
///
/// A batch that fails comes back at once, perhaps all night. A pass whose rows are those of the
/// failed pass before it, the seconds apart, is only counted: a row tells the 1st, 10th, 100th ...
/// repetition, and their number when something else follows.
///
/// Nothing is thrown: a report that cannot be written is told in the log once, and the run goes on.
class RunReport {
 public:
  /// A document is exported or has failed.
  void addDocument(const ReportRow& row);

  /// The batch is over: its sum, in which the document is left out.
  void endBatch(const ReportRow& sum);

  /// The run is over.
  void endRun();

 private:
  template <typename Step>
  void attempt(Step step);
  void add(const ReportRow& row, const std::wstring& document);
  void writeRepetitions();
  void write(const std::wstring& line);
  static std::wstring newFile();

  std::wstring file_;  // empty before the first row
  bool hasHead_ = false;
  bool isFailureTold_ = false;
  std::vector<std::wstring> before_;  // the failed pass before this one, without times
  std::vector<std::wstring> pass_;    // this pass, without times
  std::vector<std::wstring> held_;    // its lines, as long as they are those of the pass before
  bool isRepetition_ = false;         // until the first row that differs
  std::wstring repeatedBatch_;
  std::int64_t repetitions_ = 0, repetitionsTold_ = 0;
};

}  // namespace orvane
