#include "window/frmMain.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QPushButton>
#include <QScreen>

#include "export/OutputNaming.h"
#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"
#include "foundation/text_encoding.h"
#include "imaging/DocumentConversion.h"
#include "imaging/PageCleanup.h"
#include "settings/stored_settings.h"
#include "window/BrowseForFolder.h"
#include "window/controls.h"
#include "window/help.h"
#include "window/list_actions.h"
#include "window/qt_text.h"

namespace orvane {
namespace {

constexpr int kListHeightShort = 10;  // the client area minus the list, in twips

// data.ini stores "?" for a character that its code page cannot represent, so the folder would not
// be found after the next start.
void warnIfNotStorable(const std::wstring& SavePath) {
  try {
    toAnsiStrict(SavePath);
  } catch (const Failure&) {
    windowServices().showBox(L"data.ini 按 GBK 编码保存，存不下这个文件夹的名称：\r" + SavePath +
                                 L"\r这一次可以照常导出，下次打开程序时要重新选择。",
                             L"提醒", BoxIcon::None);
  }
}

}  // namespace

frmMain::frmMain(std::function<void(RunHost&)> run, std::function<void()> endProcess)
    : run_(std::move(run)), endProcess_(std::move(endProcess)) {
  setObjectName(QStringLiteral("frmMain"));
  setWindowTitle(toQt(kApplicationTitle));
  buildControls(*this);
  addControlHelp(*this);
  listProcessLog_ = &control<ProgressListBox>(*this, "listProcessLog");
  namingPreview_ = std::make_unique<NamingPreview>(control<QComboBox>(*this, "cboRenameType"),
                                                   control<QPushButton>(*this, "btnRun"), form_);
  binding_ = std::make_unique<FormBinding>(*this, form_, [this] { namingPreview_->update(); });
  runTips_ =
      std::make_unique<RunTips>(*listProcessLog_, control<QPushButton>(*this, "btnStop"), *this);
  addListActions(*this, listProcessLog_->view(), form_, [this] { runTips_->toggleProgress(); });
  connectButtons();
  openInTheCentre();
  Form_Load();
}

void frmMain::connectButtons() {
  const auto connectClick = [this](ControlName<QPushButton> name, void (frmMain::*handler)()) {
    connect(&control(*this, name), &QPushButton::clicked, this,
            [this, handler] { (this->*handler)(); });
  };
  connectClick("btnRun", &frmMain::btnRun_Click);
  connectClick("btnStop", &frmMain::btnStop_Click);
  connectClick("btnExit", &frmMain::btnExit_Click);
  connectClick("cmdSelectPath", &frmMain::cmdSelectPath_Click);
}

void frmMain::openInTheCentre() {
  const QRect available = screen()->availableGeometry();
  resize(kClientSize.boundedTo(available.size()));
  QRect place = geometry();
  place.moveCenter(available.center());
  setGeometry(place);
}

void frmMain::Form_Load() {
  form_.offerAllRenameTypes();
  LoadExportSettings(form_);
  binding_->show();
  Form_Resize();
  RefreshRunButtons();
}

void frmMain::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  Form_Resize();
}

// A size that would be negative is not applied.
void frmMain::Form_Resize() {
  const int listHeight = height() * kTwipsPerPixel - kListHeightShort;
  const int listWidth = width() * kTwipsPerPixel - kListLeft;
  QSize size = listProcessLog_->size();
  if (listHeight >= 0) size.setHeight(listHeight / kTwipsPerPixel);
  if (listWidth >= 0) size.setWidth(listWidth / kTwipsPerPixel);
  listProcessLog_->resize(size);
  listProcessLog_->setVisibleHeight(height() - listProcessLog_->y());
}

void frmMain::closeEvent(QCloseEvent* event) {
  Form_QueryUnload();
  Form_Unload();
  event->accept();
}

void frmMain::Form_QueryUnload() {
  IsStopRequested_ = true;
  SaveExportSettings(form_);
}

void frmMain::Form_Unload() {
  endProcess_();
}

void frmMain::btnRun_Click() {
  runWithOptionsLocked(kOptionFrames);
}

void frmMain::btnStop_Click() {
  StopProcess();
  runTips_->acknowledgeStop();
}

void frmMain::btnExit_Click() {
  StopProcess();
  close();
}

void frmMain::cmdSelectPath_Click() {
  form_.chooseSavePath(BrowseForFolder(this, L"成果输出文件夹", form_.text(TextBox::SavePath)));
  binding_->show();
  namingPreview_->examineDisk();
  warnIfNotStorable(form_.settings().SavePath);
}

void frmMain::ToolbarKey_Click(const ToolbarButton& Button) {
  if (Button.Key == L"Run") runWithOptionsLocked(kOptionFrames - 1);
  if (Button.Key == L"Stop") StopProcess();
  if (Button.Key == L"OutputExcel") OutputExcel_JLML();
  if (Button.Key == L"Exit") btnExit_Click();
  RefreshRunButtons();
}

void frmMain::OutputExcel_JLML() {}

void frmMain::StopProcess() {
  IsStopRequested_ = true;
}

void frmMain::runWithOptionsLocked(int lastFrame) {
  const auto lock = [&](bool locked) {
    form_.enableFrames(lastFrame, !locked);
    binding_->show();
  };
  lock(true);
  listProcessLog().clear();
  runTips_->beginRun();
  try {
    run_(*this);
  } catch (const std::exception& failure) {
    mdlFolderAndFile::LogWrite(L"btnRun_Click Err:" + description(failure), kApplicationTitle,
                               true);
    enableBtnRun(true);
    RefreshRunButtons();
  }
  runTips_->endRun();
  lock(false);
  QApplication::alert(this);  // the operator may be working in another window
}

std::wstring frmMain::AutoMakeNewDocumentName(const std::wstring& sBatchName,
                                              const std::wstring& sDocName) const {
  return documentStem(form_.renameTypeText(), sBatchName, sDocName, settings().ReNameSp1,
                      settings().ReNameSp2);
}

bool frmMain::ImageDocProcess(const std::wstring& sImageFilePath,
                              const std::wstring& sProcessedImageFilePath,
                              const std::wstring& sBatchErrorLogPath) {
  return PageCleanup(imaging(), listProcessLog())
      .ImageDocProcess(sImageFilePath, sProcessedImageFilePath, sBatchErrorLogPath);
}

void frmMain::WriteBatchErrorLog(const std::wstring& Message, const std::wstring& FileName) {
  orvane::WriteBatchErrorLog(Message, FileName);
}

bool frmMain::ChangeToDocPDF(const std::wstring& sImageFilePath,
                             const std::wstring& sChangedPDFFilePath,
                             const std::wstring& sBatchErrorLogPath, std::int16_t SaveFileType,
                             std::int16_t CompressionType) {
  return DocumentConversion(imaging(), listProcessLog())
      .ChangeToDocPDF(sImageFilePath, sChangedPDFFilePath, sBatchErrorLogPath, SaveFileType,
                      CompressionType);
}

bool frmMain::ChangeToPagePDF(const std::wstring& sImageFilePath,
                              const std::wstring& sChangedPDFRootPath,
                              const std::wstring& sBatchErrorLogPath, std::int16_t SaveFileType,
                              std::int16_t CompressionType) {
  return DocumentConversion(imaging(), listProcessLog())
      .ChangeToPagePDF(sImageFilePath, sChangedPDFRootPath, sBatchErrorLogPath, SaveFileType,
                       CompressionType);
}

bool frmMain::SaveAsDocument(const std::wstring& PageFilePath, std::int16_t SaveFileType,
                             std::int16_t CompressionType, const std::wstring& SaveFilePath) {
  return DocumentConversion(imaging(), listProcessLog())
      .SaveAsDocument(PageFilePath, SaveFileType, CompressionType, SaveFilePath);
}

bool frmMain::SaveAsPage(const std::wstring& PageFilePath, std::int16_t SaveFileType,
                         std::int16_t CompressionType, const std::wstring& SaveRootPath) {
  return DocumentConversion(imaging(), listProcessLog())
      .SaveAsPage(PageFilePath, SaveFileType, CompressionType, SaveRootPath);
}

void frmMain::SaveImage(ImagingEngine& ImgControl, const std::wstring& ImagePath,
                        std::int16_t PageNum, const std::wstring& sSaveFilePath, bool bCompression,
                        bool bSaveMultiPage) {
  DocumentConversion::SaveImage(ImgControl, ImagePath, PageNum, sSaveFilePath, bCompression,
                                bSaveMultiPage);
}

void frmMain::SavePDF(ImagingEngine& ImgControl, const std::wstring& ImagePath,
                      std::int16_t PageNum, const std::wstring& sSaveFilePath, bool bCompression,
                      bool bSaveMultiPage) {
  DocumentConversion::SavePDF(ImgControl, ImagePath, PageNum, sSaveFilePath, bCompression,
                              bSaveMultiPage);
}

ImagingInstances frmMain::imaging() {
  return {.ImgControl = ImgControl_,
          .ImgCrop = ImgCrop_,
          .ImgDelete = ImgDelete_,
          .ImgInsert = ImgInsert_,
          .ImgMerge = ImgMerge_,
          .ImgPageCount = ImgPageCount_};
}

// When a button with the focus is disabled, Qt moves the focus to the next button, which the next
// Enter would press.
void frmMain::enableButton(ControlName<QPushButton> name, bool enabled) {
  QPushButton& button = control(*this, name);
  if (!enabled && button.hasFocus()) listProcessLog_->setFocus();
  button.setEnabled(enabled);
}

void frmMain::enableBtnRun(bool enabled) {
  enableButton("btnRun", enabled);
}

void frmMain::RefreshRunButtons() {
  const bool isIdle = control<QPushButton>(*this, "btnRun").isEnabled();
  enableButton("btnExit", isIdle);
  enableButton("btnStop", !isIdle);
}

}  // namespace orvane
