#pragma once

#include <functional>
#include <string>
#include <vector>

#include "export/OutputNaming.h"
#include "export/RunHost.h"
#include "foundation/text_encoding.h"
#include "imaging/ImagingControl.h"
#include "support/RecordingWindow.h"

namespace orvane::test {

/// The host of a run without a window. Its journal has what the operator would see, in order.
class JournalHost final : public RunHost, private ProgressList {
 public:
  /// Pages are prepared by `workers` threads. Without any, the yields of a run are always the same.
  explicit JournalHost(unsigned workers = 0) {
    engines_[0].setWorkers(workers);
    window.onYield = [this] {
      if (journal.empty() || journal.back() != "yield") journal.push_back("yield");
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
  RunProgress& progress() override { return runProgress; }
  bool IsStopRequested() const override { return stopRequested_; }
  void setIsStopRequested(bool requested) override { stopRequested_ = requested; }
  void enableBtnRun(bool enabled) override {
    journal.push_back(enabled ? "btnRun on" : "btnRun off");
  }
  void RefreshRunButtons() override { journal.push_back("buttons"); }

  ExportSettings options;
  std::wstring pageNumberWidth = L"3";
  bool stopAfterBatch = false;         ///< the operator presses 停止 at the end of a batch
  std::function<void()> whenYielding;  ///< what the operator does during a yield
  std::function<void(const std::string&)> whenLineAdded;
  RunProgress runProgress;
  RecordingWindow window;
  std::vector<std::string> journal;  ///< successive yields are one entry
  std::vector<std::string> lines;
  std::vector<std::string> reasons;  ///< of the lines that have one

 private:
  void addItem(std::wstring_view line) override {
    lines.push_back(toUtf8(line));
    journal.push_back("line " + lines.back());
    if (whenLineAdded) whenLineAdded(lines.back());
    if (stopAfterBatch && line == L" ") stopRequested_ = true;
  }
  void addItemWithReason(std::wstring_view line, std::wstring_view reason) override {
    if (!reason.empty()) reasons.push_back(toUtf8(reason));
    addItem(line);
  }
  void clear() override { lines.clear(); }
  void refresh() override {
    isPutOff_ = false;
    journal.push_back("repaint");
  }
  void refreshInTime() override {
    isPutOff_ = true;
    journal.push_back("put off");
  }
  void refreshNow() override {
    if (isPutOff_) refresh();
  }

  ImagingControl engines_[6];
  bool stopRequested_ = false;
  bool isPutOff_ = false;  // a repaint
};

}  // namespace orvane::test
