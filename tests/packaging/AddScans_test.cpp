#include "AddScans.h"

#include <QTimer>
#include <gtest/gtest.h>

#include "batchdb/SqliteStore.h"
#include "export/ExportStation.h"

namespace orvane::test {
namespace {

class AddScansTest : public testing::Test {
 protected:
  AddScansTest() {
    station.createTable({});
    std::filesystem::create_directories(station.scan(""));
    for (int i = 1; i <= 20; ++i) {
      station.write("in/" + std::to_string(i) + ".tif", station.grayPage());
    }
    station.write("in/readme.txt", "x");
    before = ExportStation::contentOf(station.native(""));
    store.open(station.path(L"Orvane.dll"));
  }

  static QString textOf(const AddScans& dialog) {
    return dialog.findChild<QPlainTextEdit*>()->toPlainText();
  }
  static QPushButton& button(const AddScans& dialog, const QString& caption) {
    for (auto* found : dialog.findChildren<QPushButton*>()) {
      if (found->text().startsWith(caption)) return *found;
    }
    throw std::runtime_error("no button " + caption.toStdString());
  }

  ExportStation station;
  SqliteStore store;
  std::map<std::string, std::string> before;
};

TEST_F(AddScansTest, ThePlanIsShownAndNothingIsWrittenBeforeTheOperatorAgrees) {
  AddScans dialog(store, station.path(L"in"));
  EXPECT_TRUE(textOf(dialog).contains("件：in，20 页，1 至 20")) << textOf(dialog).toStdString();
  EXPECT_TRUE(textOf(dialog).contains("readme.txt：不是图像"));
  EXPECT_EQ(ExportStation::contentOf(station.native("")), before);

  auto& name = *dialog.findChild<QLineEdit*>();
  name.setText("a/b");
  emit name.editingFinished();
  EXPECT_FALSE(button(dialog, "登记").isEnabled());
  name.setText("新的");
  emit name.editingFinished();
  button(dialog, "登记").click();
  EXPECT_TRUE(textOf(dialog).contains("已登记：新的（1 件，20 页")) << textOf(dialog).toStdString();
  EXPECT_EQ(station.stateOf("新的"), "完成扫描|");
  EXPECT_EQ(readBytes(station.scan("新的/新的/7.tif")), station.grayPage());
}

TEST_F(AddScansTest, ACancelLeavesNothing) {
  AddScans dialog(store, station.path(L"in"));
  QTimer::singleShot(0, &dialog, &AddScans::reject);  // comes when the work handles events
  button(dialog, "登记").click();
  EXPECT_TRUE(textOf(dialog).contains("已取消")) << textOf(dialog).toStdString();
  EXPECT_EQ(ExportStation::contentOf(station.native("")), before);
}

}  // namespace
}  // namespace orvane::test
