#pragma once

#include <chrono>
#include <cstdint>
#include <set>
#include <string>

#include "export/RunHost.h"
#include "export/RunReport.h"
#include "foundation/Outcome.h"

namespace orvane {

/// Observes the export of one batch and decides nothing. Each step is told where the operator looks
/// for it: in the list, in the progress, in the report of the run, and findings also in the log.
class BatchRecorder {
 public:
  /// Lists the begin of the batch.
  /// @param loggedFindings  the log lines about findings that the run has written so far.
  BatchRecorder(RunHost& host, RunReport& report, std::set<std::wstring>& loggedFindings,
                std::wstring BatchID);

  /// `PaperNum` is the number of pages that the table states.
  void beginBatch(std::int16_t PaperNum);

  /// The folder of the scans is missing, which ends the batch.
  void endWithoutScans(const std::wstring& reason);

  /// The run has failed in this batch. `left` is what is left of the files of this pass.
  void endWithRun(const OutputSum& left, const std::wstring& reason);

  void beginDocument(const std::wstring& DocumentID);
  void beginPage(int page, int pageCount) { host_.progress().beginPage(page, pageCount); }
  void endPage() { host_.progress().endPage(); }
  /// A file of the document is complete.
  void addFile(int pages, std::uint64_t bytes) { row_.output += {pages, 1, bytes}; }
  /// Reports the document, and lists one that was exported.
  void endDocument(const Outcome& outcome);
  /// Lists the failed document. `kept` tells why the folder of the batch was kept, if it was.
  void listFailedDocument(const std::wstring& kept);

  /// Draws the lines that have not been drawn yet, before something that takes long.
  void drawLines() { host_.listProcessLog().refreshNow(); }

  /// The folder of the failed batch was deleted.
  void outputDeleted();
  /// The folder of the failed batch was kept.
  void outputKept(const std::wstring& reason);
  /// Something unusual about the files of the batch: "这一批<finding>".
  void addFinding(const std::wstring& finding);
  /// What the operator should do about a finding.
  void addAdvice(const std::wstring& advice);

  /// The files of the batch are being brought to the disk.
  void beginSync() { host_.progress().beginSync(); }
  /// Lists whether the batch, of which every document was exported, has got its new state.
  void listEnd(const Outcome& outcome);

  /// Reports the batch. `left` is what is left of the files of this pass.
  void reportBatch(const OutputSum& left);
  /// The run continues with the next batch.
  void endBatch(bool isExported);

 private:
  using Clock = std::chrono::steady_clock;

  void list(const std::wstring& line, const std::wstring& reason = {});
  void addReason(const std::wstring& reason);

  RunHost& host_;
  RunReport& report_;
  std::set<std::wstring>& loggedFindings_;
  const std::wstring BatchID_;
  Clock::time_point start_{}, startOfDocument_{};
  ReportRow row_{}, sum_{};  // of the current document, and of the batch
  std::wstring findings_;    // for the operator, one in a line
};

}  // namespace orvane
