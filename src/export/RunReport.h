#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "export/WrittenFiles.h"

namespace orvane {

/// The outcome of a document or a batch, and what was written for it.
struct ReportRow {
  std::wstring batch;
  std::wstring document{};
  OutputSum output{};  ///< for a document, what was written; for a batch, what is left of it
  std::chrono::duration<double> time{};
  bool isExported = false;
  std::wstring reason{};  ///< the reason of a failure, or another finding
};

/// The record of one run, in `Log\YYYYMMDD-HHMMSS.txt`, which is named after the time of its first
/// row. The encoding is UTF-8, lines end in CR LF, and columns are separated by tabs. The file has
/// a header line, one row per document and a sum per batch. Each row is written before the next
/// document begins.
///
/// A batch that fails is tried again at once, perhaps all night. A pass with the same rows as the
/// failed pass before it, apart from the times, is only counted. A row is written for the 1st,
/// 10th, 100th ... repetition, and one with their number when something else follows.
///
/// Files can be replaced or deleted after the sum of their batch was written. At the end, a row for
/// each batch whose sums do not hold any more says what is left of it.
///
/// Nothing is thrown. A report that cannot be written is logged once, and the run continues.
class RunReport {
 public:
  /// Adds a document that was exported or has failed.
  void addDocument(const ReportRow& row);

  /// Adds the sum of a batch, in which `document` is ignored, and ends the batch.
  void endBatch(const ReportRow& sum);

  /// The path of the report; empty if none could be written.
  const std::wstring& file() const { return file_; }

  /// Ends the run. `left` is what is left of its batches.
  void endRun(const std::vector<WrittenFiles::Left>& left);

 private:
  struct Told {
    OutputSum all;       // of all sums of a batch
    OutputSum lastPass;  // the last one
    bool isExported = false;
  };

  template <typename Step>
  void attempt(Step step);
  void add(const ReportRow& row, const std::wstring& document);
  void writeLeft(const std::vector<WrittenFiles::Left>& left);
  void writeRepetitions();
  void write(const std::wstring& line);
  static std::wstring newFile();

  std::wstring file_;  // empty until the first row
  bool hasHead_ = false;
  bool isFailureTold_ = false;
  std::vector<std::wstring> before_;  // the rows of the previous pass without times, if it failed
  std::vector<std::wstring> pass_;    // the rows of this pass without times
  std::vector<std::wstring> held_;    // the rows of this pass that are not written yet
  bool isRepetition_ = false;         // so far this pass has the rows of the previous one
  std::wstring repeatedBatch_;
  std::int64_t repetitions_ = 0, repetitionsTold_ = 0;
  std::map<std::wstring, Told> told_;  // by batch
};

}  // namespace orvane
