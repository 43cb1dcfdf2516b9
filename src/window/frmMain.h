#pragma once

#include <QWidget>
#include <functional>

#include "export/RunHost.h"
#include "imaging/ImagingControl.h"
#include "settings/ExportForm.h"
#include "window/FormBinding.h"
#include "window/NamingPreview.h"
#include "window/ProgressListView.h"
#include "window/RunTips.h"
#include "window/control_table.h"

namespace orvane {

/// A button of a toolbar, known by its key.
struct ToolbarButton {
  std::wstring Key;
};

/// The only window of the program: the options on the left, the progress list on the right. It owns
/// the export options, the six imaging instances and the list, which a run uses directly.
class frmMain final : public QWidget, public RunHost {
 public:
  /// `run` exports the batches. `endProcess` ends the process at once, even during a run.
  frmMain(std::function<void(RunHost&)> run, std::function<void()> endProcess);

  void btnRun_Click();
  void btnStop_Click();
  void btnExit_Click();
  void cmdSelectPath_Click();
  /// Not called by the program, because the window has no toolbar. Keys: "Run", "Stop",
  /// "OutputExcel", "Exit".
  void ToolbarKey_Click(const ToolbarButton& Button);

  /// Requests the run to end after the current batch.
  void StopProcess();
  /// Does nothing: there is no spreadsheet output.
  void OutputExcel_JLML();

  // Page clean-up and conversion for other hosts, with the instances and the list of the window.
  // The run does not call them. They are described in PageCleanup and DocumentConversion.
  bool ImageDocProcess(const std::wstring& sImageFilePath,
                       const std::wstring& sProcessedImageFilePath,
                       const std::wstring& sBatchErrorLogPath);
  void WriteBatchErrorLog(const std::wstring& Message, const std::wstring& FileName);
  bool ChangeToDocPDF(const std::wstring& sImageFilePath, const std::wstring& sChangedPDFFilePath,
                      const std::wstring& sBatchErrorLogPath, std::int16_t SaveFileType,
                      std::int16_t CompressionType);
  bool ChangeToPagePDF(const std::wstring& sImageFilePath, const std::wstring& sChangedPDFRootPath,
                       const std::wstring& sBatchErrorLogPath, std::int16_t SaveFileType,
                       std::int16_t CompressionType);
  bool SaveAsDocument(const std::wstring& PageFilePath, std::int16_t SaveFileType,
                      std::int16_t CompressionType, const std::wstring& SaveFilePath);
  bool SaveAsPage(const std::wstring& PageFilePath, std::int16_t SaveFileType,
                  std::int16_t CompressionType, const std::wstring& SaveRootPath);
  void SaveImage(ImagingEngine& ImgControl, const std::wstring& ImagePath, std::int16_t PageNum,
                 const std::wstring& sSaveFilePath = {}, bool bCompression = false,
                 bool bSaveMultiPage = false);
  void SavePDF(ImagingEngine& ImgControl, const std::wstring& ImagePath, std::int16_t PageNum,
               const std::wstring& sSaveFilePath = {}, bool bCompression = false,
               bool bSaveMultiPage = false);

  const ExportSettings& settings() const override { return form_.settings(); }
  std::wstring txtLiuShui() const override { return form_.text(TextBox::LiuShui); }
  std::wstring AutoMakeNewDocumentName(const std::wstring& sBatchName,
                                       const std::wstring& sDocName) const override;
  ImagingInstances imaging() override;
  ProgressList& listProcessLog() override { return listProcessLog_->view(); }
  RunProgress& progress() override { return progress_; }
  bool IsStopRequested() const override { return IsStopRequested_; }
  void setIsStopRequested(bool requested) override { IsStopRequested_ = requested; }
  void enableBtnRun(bool enabled) override;
  void RefreshRunButtons() override;

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void Form_Load();
  void Form_Resize();
  void Form_QueryUnload();
  void Form_Unload();

  void connectButtons();
  void openInTheCentre();
  void enableButton(ControlName<QPushButton> name, bool enabled);
  /// Clears the list and runs with `Frame1` to `Frame<lastFrame>` disabled.
  void runWithOptionsLocked(int lastFrame);

  std::function<void(RunHost&)> run_;
  std::function<void()> endProcess_;
  bool IsStopRequested_ = false;
  RunProgress progress_;

  ImagingControl ImgControl_;
  ImagingControl ImgCrop_;
  ImagingControl ImgDelete_;
  ImagingControl ImgInsert_;
  ImagingControl ImgMerge_;
  ImagingControl ImgPageCount_;

  ExportForm form_;
  ProgressListBox* listProcessLog_ = nullptr;
  std::unique_ptr<NamingPreview> namingPreview_;
  std::unique_ptr<FormBinding> binding_;
  std::unique_ptr<RunTips> runTips_;
};

}  // namespace orvane
