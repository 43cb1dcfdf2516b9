#include "window/frmMain.h"

#include <QFileDialog>
#include <QTimer>

#include "Station.h"
#include "support/command.h"

namespace orvane::test {
namespace {

class FrmMain : public Station {
 protected:
  /// The buttons of a group that are set.
  std::string selected(const std::string& group, int buttons) {
    std::string set;
    for (int i = 0; i < buttons; ++i) {
      const std::string name = group + "_" + std::to_string(i);
      if (find<QAbstractButton>(name.c_str()).isChecked()) set += std::to_string(i);
    }
    return set;
  }
  /// The buttons and frames that are enabled, such as "run exit 123456".
  std::string enabled() {
    std::string names;
    if (isEnabled("btnRun")) names += "run ";
    if (isEnabled("btnStop")) names += "stop ";
    if (isEnabled("btnExit")) names += "exit ";
    for (const char* frame : {"Frame1", "Frame2", "Frame3", "Frame4", "Frame5", "Frame6"}) {
      if (isEnabled(frame)) names += frame[5];
    }
    return names;
  }
  std::string savedLine(const std::string& key) {
    return outputOf("iconv -f GBK -t UTF-8 " + quoted(folder.native("data.ini")) +
                    " | tr -d '\\r' | grep '^" + key + "='");
  }
  QComboBox& names() { return find<QComboBox>("cboRenameType"); }
};

TEST_F(FrmMain, ClicksReachTheSettingsAndTheControlsThatDependOnThem) {
  EXPECT_EQ(selected("optMutiPage", 2), "0");
  EXPECT_EQ(names().currentText().toStdString(), "档案（件）名称");
  EXPECT_EQ(window.AutoMakeNewDocumentName(L"B1", L"D1"), L"D1");

  click("optMutiPage_1");
  EXPECT_EQ(selected("optMutiPage", 2), "1");
  EXPECT_TRUE(window.settings().IsMutiPage);
  EXPECT_EQ(names().count(), 2);
  EXPECT_EQ(names().currentIndex(), -1);
  EXPECT_EQ(window.AutoMakeNewDocumentName(L"B1", L"D1"), L"");

  names().setCurrentIndex(1);
  emit names().activated(1);
  find<QLineEdit>("txtSp1").setText("=");
  EXPECT_EQ(window.AutoMakeNewDocumentName(L"B1", L"D1"), L"B1=D1");

  click("optSaveFileType_0");  // the one that is set
  EXPECT_EQ(names().count(), 5);
  EXPECT_EQ(names().currentIndex(), -1);

  click("optCompressionType_1");
  click("optCompressionRatios_2");
  EXPECT_EQ(selected("optCompressionType", 2), "1");
  EXPECT_EQ(selected("optCompressionRatios", 3), "2");
  EXPECT_EQ(selected("optSaveFileType", 3), "0");
  EXPECT_EQ(window.settings().CompressionRatios, 2);
  EXPECT_EQ(enabled(), "run exit 12356");

  click("chkCreateDocFolder");
  find<QPlainTextEdit>("txtSavePath").setPlainText("/typed");
  click("optCompressionType_0");
  EXPECT_TRUE(window.settings().IsCreateDocFolder);
  EXPECT_EQ(window.settings().SavePath, L"");
  EXPECT_EQ(find<QPlainTextEdit>("txtSavePath").toPlainText().toStdString(), "/typed");
}

TEST_F(FrmMain, ARunLocksTheOptionsAndClearsTheList) {
  click("optCompressionType_1");
  window.listProcessLog().addItem(L"old");
  run = [&](RunHost& host) {
    EXPECT_EQ(enabled(), "run exit ");
    EXPECT_EQ(dynamic_cast<ProgressListView&>(window.listProcessLog()).model()->rowCount(), 0);
    host.enableBtnRun(false);
    host.RefreshRunButtons();
    EXPECT_EQ(enabled(), "stop ");
    click("btnStop");
    EXPECT_TRUE(host.IsStopRequested());
    EXPECT_EQ(enabled(), "stop ");
    host.enableBtnRun(true);
    host.RefreshRunButtons();
  };
  click("btnRun");
  EXPECT_EQ(enabled(), "run exit 123456");
}

TEST_F(FrmMain, AFailureThatLeavesARunBringsTheWindowBack) {
  run = [&](RunHost& host) {
    host.enableBtnRun(false);
    host.RefreshRunButtons();
    throw std::runtime_error("disk gone");
  };
  click("btnRun");
  EXPECT_EQ(enabled(), "run exit 123456");
  ASSERT_EQ(folder.logEntries().size(), 1U);
  EXPECT_THAT(services.boxes, testing::SizeIs(1));
}

TEST_F(FrmMain, ToolbarKeysActLikeTheButtons) {
  int runs = 0;
  int ends = 0;
  run = [&](RunHost&) {
    ++runs;
    EXPECT_EQ(enabled(), "run exit 6");
  };
  endProcess = [&] { ++ends; };
  struct Case {
    const wchar_t* key;
    int runs, ends;
    bool stops;
  };
  const Case cases[] = {{L"Run", 1, 0, false},         {L"HelpMe", 1, 0, false},
                        {L"OutputExcel", 1, 0, false}, {L"", 1, 0, false},
                        {L"Stop", 1, 0, true},         {L"Exit", 1, 1, true}};
  for (const auto& [key, wantedRuns, wantedEnds, stops] : cases) {
    window.setIsStopRequested(false);
    window.ToolbarKey_Click({key});
    EXPECT_EQ(runs, wantedRuns);
    EXPECT_EQ(ends, wantedEnds);
    EXPECT_EQ(window.IsStopRequested(), stops);
    EXPECT_EQ(enabled(), "run exit 123456");
  }
}

TEST_F(FrmMain, EveryWayOfClosingSavesTheSettingsFirst) {
  std::vector<std::string> saved;
  endProcess = [&] {
    EXPECT_TRUE(window.IsStopRequested());
    saved.push_back(savedLine("SaveFileType"));
  };
  click("optSaveFileType_2");
  click("btnExit");
  click("optSaveFileType_1");
  window.setIsStopRequested(false);
  window.close();
  EXPECT_THAT(saved, testing::ElementsAre("SaveFileType=2\n", "SaveFileType=1\n"));
}

TEST_F(FrmMain, TheCloseBoxInMidRunEndsTheProcessInsideTheYield) {
  endProcess = [&] {
    std::fprintf(stderr, "saved %s", savedLine("LiuShuiHao").c_str());
    std::_Exit(7);
  };
  run = [&](RunHost& host) {
    host.enableBtnRun(false);
    host.RefreshRunButtons();
    QTimer::singleShot(0, &window, &QWidget::close);
    while (true) QCoreApplication::processEvents();
  };
  window.show();
  find<QLineEdit>("txtLiuShui").setText("6");
  EXPECT_EXIT(click("btnRun"), testing::ExitedWithCode(7), "saved LiuShuiHao=6\n");
}

TEST_F(FrmMain, TheFolderChooserSetsTheOutputFolderAndACancelEmptiesIt) {
  std::filesystem::create_directory(folder.native("成果"));
  const auto choose = [&](bool accept) {
    QTimer::singleShot(0, [&, accept] {
      auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      EXPECT_EQ(dialog->windowTitle().toStdString(), "成果输出文件夹");
      EXPECT_EQ(dialog->fileMode(), QFileDialog::Directory);
      dialog->setDirectory(QString::fromStdString(folder.native().string()));
      dialog->selectFile("成果");
      QMetaObject::invokeMethod(dialog, accept ? "accept" : "reject");
    });
    click("cmdSelectPath");
  };
  const std::wstring chosen = folder.path(L"成果") + L"\\";
  choose(true);
  EXPECT_EQ(window.settings().SavePath, chosen);
  choose(false);
  EXPECT_EQ(window.settings().SavePath, L"");
  EXPECT_EQ(find<QPlainTextEdit>("txtSavePath").toPlainText().toStdWString(), chosen);
}

}  // namespace
}  // namespace orvane::test
