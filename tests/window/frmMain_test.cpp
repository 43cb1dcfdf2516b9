#include "window/frmMain.h"

#include <QDialog>
#include <QDir>
#include <QDropEvent>
#include <QInputDialog>
#include <QMimeData>
#include <QTest>
#include <QTimer>
#include <QToolTip>
#include <QTreeWidget>

#include "Station.h"
#include "support/AsOrdinaryUser.h"
#include "window/BrowseForFolder.h"

namespace orvane::test {
namespace {

class FrmMain : public Station {
 protected:
  /// The enabled buttons and frames, for example "Run Exit 1 2 3 4 5 6 ".
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
  /// Opens the folder chooser, checks its title and calls `act` with it.
  void inChooser(const std::function<void(QDialog&)>& act) {
    bool seen = false;
    QTimer::singleShot(0, [&] {
      auto* chooser = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(chooser, nullptr);
      seen = true;
      EXPECT_EQ(chooser->windowTitle().toStdString(), "成果输出文件夹");
      act(*chooser);
      if (chooser->isVisible()) chooser->reject();
    });
    click("cmdSelectPath");
    EXPECT_TRUE(seen);
  }
  static QAbstractButton& buttonOf(const QWidget& dialog, const char* text) {
    for (auto* button : dialog.findChildren<QAbstractButton*>()) {
      if (button->text() == QString::fromUtf8(text)) return *button;
    }
    throw std::runtime_error(text);
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
  click("optSaveFileType_0");  // already selected
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
}

TEST_F(FrmMain, TheWheelChangesTheNamingOnlyWhileTheListHasTheFocus) {
  window.show();
  window.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  const auto turnWheel = [&] {
    const QPointF place = names().rect().center();
    QWheelEvent notch(place, names().mapToGlobal(place), {}, {0, -120}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&names(), &notch);
    return window.AutoMakeNewDocumentName(L"B1", L"D1");
  };
  EXPECT_EQ(turnWheel(), L"D1");
  EXPECT_FALSE(names().hasFocus());
  names().setFocus();
  EXPECT_EQ(turnWheel(), L"") << "the next pattern is the page number";
}

TEST_F(FrmMain, TypingOrDroppingTextDoesNotChangeTheOutputFolder) {
  auto& field = find<QPlainTextEdit>("txtSavePath");
  QMimeData dropped;
  dropped.setText("/dropped");
  QTest::keyClicks(&field, "/typed");
  QDragEnterEvent enter({5, 5}, Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
  QDropEvent drop({5, 5}, Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
  for (QEvent* event : std::initializer_list<QEvent*>{&enter, &drop}) {
    QApplication::sendEvent(field.viewport(), event);
  }
  EXPECT_EQ(field.toPlainText().toStdString(), "");
  EXPECT_EQ(field.palette().color(QPalette::Base), window.palette().color(QPalette::Window));
  EXPECT_FALSE(field.acceptDrops()) << "the pointer would offer a drop";
}

TEST_F(FrmMain, ARunLocksTheOptionsAndClearsTheListAndAFailureUnlocksThem) {
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

TEST_F(FrmMain, TheFolderChooserSetsTheOutputFolderAndACancelClearsIt) {
  folder.shell("mkdir -p 成果/旧 성과 成果/.新");
  QString opensAt = QDir::homePath();
  for (const std::wstring name : {L"成果", L"성과", L"成果\\旧", L"成果\\.新"}) {
    const QString wanted = QString::fromStdString(nativePath(folder.path(name)));
    inChooser([&](QDialog& chooser) {
      auto& path = *chooser.findChild<QLineEdit*>();
      EXPECT_EQ(path.text().toStdString(), opensAt.toStdString());
      path.setText(wanted + "/x");
      EXPECT_FALSE(buttonOf(chooser, "确定").isEnabled()) << "no such folder";
      path.setText(wanted + "/");
      buttonOf(chooser, "确定").click();
    });
    EXPECT_EQ(window.settings().SavePath, folder.path(name) + L"\\");
    EXPECT_THAT(
        services.takeBoxes(),
        testing::MatchesRegex(name != L"성과" ? "" : "data.ini .*성과.*重新选择。 \\| 提醒\n"));
    opensAt = wanted;
  }
  folder.shell("rmdir 成果/.新");
  inChooser([&](QDialog& chooser) {
    EXPECT_EQ(chooser.findChild<QLineEdit*>()->text().toStdString(), folder.native("成果"));
  });
  EXPECT_EQ(window.settings().SavePath, L"");
  EXPECT_EQ(find<QPlainTextEdit>("txtSavePath").toPlainText().toStdWString(),
            folder.path(L"成果\\.新\\"));
}

TEST_F(FrmMain, TheKeysOfTheMenuOpenTheOutputFolderAndTheGuideAndReportAFailure) {
  window.show();
  folder.shell("mkdir 成果 bin none");
  const auto tip = [] { return QToolTip::isVisible() ? QToolTip::text().toStdString() : ""; };
  const auto press = [&](const char* key) {
    QToolTip::hideText();
    EXPECT_TRUE(QTest::qWaitFor([&] { return tip().empty(); }));
    window.activateWindow();
    EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == &window; }));
    QTest::keySequence(&window, QKeySequence(key));
  };
  const auto tells = [&](const std::string& text) {
    return QTest::qWaitFor([&] { return tip().find(text) != std::string::npos; });
  };
  press("Ctrl+O");
  EXPECT_TRUE(tells("还没有选择成果输出文件夹。"));
  press("F1");
  EXPECT_TRUE(tells("找不到操作手册。"));
  inChooser([&](QDialog& chooser) {
    chooser.findChild<QLineEdit*>()->setText(QString::fromStdString(folder.native("成果")));
    buttonOf(chooser, "确定").click();
  });
  folder.write("doc/operator-guide.zh.html", "手册");

  // A desktop whose xdg-open ends with a given status.
  const QByteArray searchPath = qgetenv("PATH");
  qputenv("PATH", folder.native("bin").c_str() + (":" + searchPath));
  for (const int status : {0, 4, 1}) {
    folder.write("bin/xdg-open", "#!/bin/sh\necho \"$1\" >>" + quoted(folder.native("opened")) +
                                     "\nexit " + std::to_string(status) + "\n");
    folder.shell("rm -f opened; chmod +x bin/xdg-open");
    const std::string files[] = {folder.native("成果").string() + "/",
                                 folder.native("doc/operator-guide.zh.html")};
    const char* const keys[] = {"Ctrl+O", "F1"};
    for (const int i : {0, 1}) {
      press(keys[i]);
      EXPECT_TRUE(QTest::qWaitFor(
          [&] { return folder.read("opened").find(files[i] + "\n") != std::string::npos; }));
      if (status == 0) continue;
      EXPECT_TRUE(tells("打不开 " + files[i] + "：" +
                        (status == 4 ? "桌面上没有能打开它的程序。" : "xdg-open 失败（1）。")))
          << tip();
    }
  }
  folder.write("bin/xdg-open", "#!/no/such/program");
  press("F1");
  EXPECT_TRUE(tells("打不开 ")) << "it cannot be started";
  qputenv("PATH", folder.native("none").c_str());
  press("F1");
  EXPECT_TRUE(tells("桌面上没有能打开它的程序。")) << "there is no xdg-open";
  qputenv("PATH", searchPath);
  folder.shell("rmdir 成果");
  press("Ctrl+O");
  EXPECT_TRUE(tells("成果输出文件夹不在了")) << tip();
  EXPECT_EQ(services.takeBoxes(), "") << "a box would block a run";
}

TEST_F(FrmMain, TheFolderChooserTakesThePathThatTheWindowShowsAndNoFolderThatItCannotReach) {
  folder.shell(
      "chmod 755 .; mkdir -p 成果/旧 locked; chmod 0 locked; mkdir 成果/$(printf '\\272\\303')");
  inChooser([&](QDialog& chooser) {
    auto& path = *chooser.findChild<QLineEdit*>();
    auto& accept = buttonOf(chooser, "确定");
    const QString shown = QString::fromStdWString(folder.path(L"成果\\"));
    for (const QString& text :
         {shown.chopped(2), QStringLiteral("成果"), QStringLiteral("\\") + QChar(0), QString()}) {
      path.setText(text);
      EXPECT_FALSE(accept.isEnabled()) << text.toStdString();
    }
    {
      const AsOrdinaryUser user;
      path.setText(QString::fromStdString(folder.native("locked")));
      EXPECT_FALSE(accept.isEnabled()) << "it cannot be entered";
      path.setText(shown);
      EXPECT_TRUE(accept.isEnabled());
    }
    accept.click();
  });
  EXPECT_EQ(window.settings().SavePath, folder.path(L"成果\\"));
  inChooser([&](QDialog& chooser) {
    const auto* item = chooser.findChild<QTreeWidget*>()->currentItem();
    ASSERT_EQ(item->text(0).toStdString(), "成果");
    ASSERT_EQ(item->childCount(), 1) << "a name that is not UTF-8 leads nowhere";
    EXPECT_EQ(item->child(0)->text(0).toStdString(), "旧");
  });
}

TEST_F(FrmMain, TheFolderChooserCreatesFoldersAndCannotDeleteOrRenameThem) {
  folder.shell("mkdir -p 成果/旧/件");
  inChooser([&](QDialog& chooser) {
    chooser.findChild<QLineEdit*>()->setText(QString::fromStdString(folder.native("成果/旧")));
    buttonOf(chooser, "确定").click();
  });
  inChooser([&](QDialog& chooser) {
    auto& tree = *chooser.findChild<QTreeWidget*>();
    ASSERT_EQ(tree.currentItem()->text(0).toStdString(), "旧");
    for (const Qt::Key key : {Qt::Key_Delete, Qt::Key_F2, Qt::Key_Backspace}) {
      QTest::keyClick(&tree, key);
    }
    QTest::mouseClick(tree.viewport(), Qt::RightButton, {},
                      tree.visualItemRect(tree.currentItem()).center());
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    EXPECT_EQ(QApplication::activeModalWidget(), &chooser);
    EXPECT_EQ(chooser.findChildren<QLineEdit*>().size(), 1) << "a name can be edited";
    EXPECT_FALSE(tree.dragEnabled() || tree.viewport()->acceptDrops());
    for (int i = 0; i < 2; ++i) {
      tree.setCurrentItem(tree.findItems("旧", Qt::MatchExactly | Qt::MatchRecursive).front());
      QTimer::singleShot(0, [] {
        auto* asked = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
        asked->setTextValue("新");
        asked->accept();
      });
      buttonOf(chooser, "新建文件夹").click();
    }
    EXPECT_THAT(services.takeBoxes(), testing::MatchesRegex("新建文件夹失败：.*: File exists.*\n"));
    tree.setCurrentItem(tree.findItems("新", Qt::MatchExactly | Qt::MatchRecursive).front());
    buttonOf(chooser, "确定").click();
  });
  EXPECT_EQ(window.settings().SavePath, folder.path(L"成果\\旧\\新\\"));
  EXPECT_EQ(folder.shell("find 成果 | LC_ALL=C sort"), "成果\n成果/旧\n成果/旧/件\n成果/旧/新\n");
}

TEST_F(FrmMain, TheFolderChooserListsTheMountedVolumes) {
  folder.write("mounts",
               "/dev/sda1 / ext4 rw 0 0\nproc /proc proc rw 0 0\n/dev/sdc1 /media/user/二\\0401 "
               "exfat rw 0 0\n//nas/a /mnt cifs rw 0 0\nnas:/b /run/media/b nfs rw 0 0\n"
               "/dev/sdd1 /mnt/c ext4 rw 0 0\ntmpfs /run/user/0 tmpfs rw 0 0\n"
               "none /mntx tmpfs rw 0 0\n/dev/sdf1 /media/user/\xBA\xC3 vfat rw 0 0\n/dev/sde1 "
               "/mnt/c ext4 rw 0 0\n");
  EXPECT_EQ(mountedVolumes(folder.native("mounts").c_str()).join("|").toStdString(),
            "/media/user/二 1|/mnt|/run/media/b|/mnt/c")
      << "no path of Qt leads to a name that is not UTF-8";
}

}  // namespace
}  // namespace orvane::test
