#include "window/frmMain.h"

#include <QFileDialog>
#include <QHeaderView>
#include <QTimer>
#include <set>

#include "Station.h"

namespace orvane::test {
namespace {

class FrmMain : public Station {
 protected:
  /// The buttons and frames that are enabled: "Run Exit 1 2 3 4 5 6 ".
  std::string enabled() {
    std::string names;
    for (const std::string name : {"btnRun", "btnStop", "btnExit", "Frame1", "Frame2", "Frame3",
                                   "Frame4", "Frame5", "Frame6"}) {
      if (isEnabled(name.c_str())) names += name.substr(name[0] == 'b' ? 3 : 5) + " ";
    }
    return names;
  }
  std::string savedLine(const std::string& key) const {
    return folder.shell("iconv -f GBK -t UTF-8 data.ini | tr -d '\\r' | grep '^" + key + "='");
  }
  /// What the buttons, menus, lists and headings of a window say.
  static std::set<std::string> textsOf(const QWidget& dialog) {
    std::set<std::string> texts;
    for (const auto* button : dialog.findChildren<QAbstractButton*>()) {
      texts.insert({button->text().toStdString(), button->toolTip().toStdString()});
    }
    for (const auto* entry : dialog.findChildren<QAction*>()) {
      texts.insert(entry->text().toStdString());
    }
    for (const auto* heading : dialog.findChildren<QHeaderView*>()) {
      for (int i = 0; i < heading->count(); ++i) {
        texts.insert(heading->model()->headerData(i, Qt::Horizontal).toString().toStdString());
      }
    }
    texts.insert(dialog.findChild<QComboBox*>("fileTypeCombo")->currentText().toStdString());
    return texts;
  }
  QComboBox& names() { return find<QComboBox>("cboRenameType"); }
};

TEST_F(FrmMain, ClicksReachTheSettingsAndTheControlsThatDependOnThem) {
  EXPECT_EQ(names().currentText().toStdString(), "档案（件）名称");
  EXPECT_EQ(window.AutoMakeNewDocumentName(L"B1", L"D1"), L"D1");
  click("optMutiPage_1");
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

  for (const char* name :
       {"optCompressionType_1", "optCompressionRatios_2", "chkCreateDocFolder"}) {
    click(name);
  }
  std::string set;
  for (const auto* button : window.findChildren<QAbstractButton*>(QRegularExpression("^opt"))) {
    if (button->isChecked()) set += button->objectName().toStdString() + " ";
  }
  EXPECT_EQ(set, "optSaveFileType_0 optMutiPage_1 optCompressionType_1 optCompressionRatios_2 ");
  EXPECT_EQ(window.settings().CompressionRatios, 2);
  EXPECT_EQ(window.settings().CompressionType, 1);
  EXPECT_TRUE(window.settings().IsCreateDocFolder);
  EXPECT_EQ(enabled(), "Run Exit 1 2 3 5 6 ");
  find<QPlainTextEdit>("txtSavePath").setPlainText("/typed");
  EXPECT_EQ(window.settings().SavePath, L"");
}

TEST_F(FrmMain, ARunLocksTheOptionsAndClearsTheListAndAFailureBringsTheWindowBack) {
  for (const bool fails : {false, true}) {
    click("optCompressionType_1");
    window.listProcessLog().addItem(L"old");
    run = [&](RunHost& host) {
      EXPECT_EQ(enabled(), "Run Exit ");
      EXPECT_EQ(dynamic_cast<ProgressListView&>(window.listProcessLog()).model()->rowCount(), 0);
      host.enableBtnRun(false);
      host.RefreshRunButtons();
      EXPECT_EQ(enabled(), "Stop ");
      click("btnStop");
      EXPECT_TRUE(host.IsStopRequested());
      EXPECT_EQ(enabled(), "Stop ");
      if (fails) throw std::runtime_error("disk gone");
      host.enableBtnRun(true);
      host.RefreshRunButtons();
    };
    click("btnRun");
    EXPECT_EQ(enabled(), "Run Exit 1 2 3 4 5 6 ");
    EXPECT_EQ(services.takeBoxes(),
              fails ? "btnRun_Click Err:disk gone | Orvane成果导出 | !\n" : "");
    EXPECT_EQ(folder.takeLog(), fails ? "Orvane成果导出:btnRun_Click Err:disk gone\n" : "");
  }
}

TEST_F(FrmMain, ToolbarKeysActLikeTheButtons) {
  std::string done;
  run = [&](RunHost&) { done = "ran with " + enabled(); };
  endProcess = [&] { done = "ended"; };
  const struct {
    const wchar_t* key;
    std::string done;
    bool stops;
  } cases[] = {{L"Run", "ran with Run Exit 6 ", false},
               {L"HelpMe", "", false},
               {L"OutputExcel", "", false},
               {L"", "", false},
               {L"Stop", "", true},
               {L"Exit", "ended", true}};
  for (const auto& c : cases) {
    done.clear();
    window.setIsStopRequested(false);
    window.ToolbarKey_Click({c.key});
    EXPECT_EQ(done, c.done);
    EXPECT_EQ(window.IsStopRequested(), c.stops);
    EXPECT_EQ(enabled(), "Run Exit 1 2 3 4 5 6 ");
  }
}

TEST_F(FrmMain, EveryWayOfClosingSavesTheSettingsFirst) {
  std::string saved;
  endProcess = [&] { saved += window.IsStopRequested() ? savedLine("SaveFileType") : "no stop"; };
  click("optSaveFileType_2");
  click("btnExit");
  click("optSaveFileType_1");
  window.setIsStopRequested(false);
  window.close();
  EXPECT_EQ(saved, "SaveFileType=2\nSaveFileType=1\n");
}

TEST_F(FrmMain, TheFolderChooserSetsTheOutputFolderAndACancelEmptiesIt) {
  folder.shell("mkdir 成果");
  const std::wstring chosen = folder.path(L"成果") + L"\\";
  for (const char* answer : {"accept", "reject"}) {
    QTimer::singleShot(0, [&] {
      auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      EXPECT_EQ(dialog->windowTitle().toStdString(), "成果输出文件夹");
      EXPECT_EQ(dialog->fileMode(), QFileDialog::Directory);
      for (const std::string& text : textsOf(*dialog)) {
        EXPECT_THAT(text, testing::Not(testing::ContainsRegex("[A-Za-z][a-z]"))) << "in English";
      }
      dialog->setDirectory(QString::fromStdString(folder.native().string()));
      dialog->selectFile("成果");
      QMetaObject::invokeMethod(dialog, answer);
    });
    click("cmdSelectPath");
    EXPECT_EQ(window.settings().SavePath, answer == std::string("accept") ? chosen : L"");
    EXPECT_EQ(find<QPlainTextEdit>("txtSavePath").toPlainText().toStdWString(), chosen);
  }
}

}  // namespace
}  // namespace orvane::test
