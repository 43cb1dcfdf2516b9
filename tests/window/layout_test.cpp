#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

#include "Station.h"
#include "window/OptionFrame.h"
#include "window/WrapButton.h"

namespace orvane::test {
namespace {

class Layout : public Station {
 protected:
  /// How many pixels of a control are as dark as text.
  static int ink(QWidget& control) {
    const QImage image = control.grab().toImage();
    int dark = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) dark += qGray(image.pixel(x, y)) < 120;
    }
    return dark;
  }
};

TEST_F(Layout, ControlsLieWhereTheyAreDesigned) {
  const struct {
    const char *name, *inside;
    QRect geometry;  // in pixels
  } places[] = {
      {"listProcessLog", "frmMain", {408, 9, 525, 644}},  // as the first layout leaves it
      {"Frame6", "frmMain", {8, 8, 393, 73}},
      {"txtSavePath", "Frame6", {8, 16, 329, 49}},
      {"Frame1", "frmMain", {8, 88, 393, 57}},
      {"optMutiPage_1", "Frame2", {208, 32, 161, 17}},
      {"optCompressionType_1", "Frame3", {16, 65, 289, 17}},
      {"Frame31", "Frame3", {136, 16, 241, 41}},
      {"cboRenameType", "Frame4", {16, 24, 369, 21}},
      {"Frame41", "Frame4", {16, 48, 369, 49}},
      {"lblBatch", "Frame41", {16, 24, 60, 12}},
      {"txtSp2", "Frame41", {216, 21, 41, 18}},
      {"txtLiuShui", "Frame41", {296, 21, 25, 19}},
      {"Label1", "Frame5", {32, 88, 337, 17}},
      {"btnRun", "frmMain", {16, 584, 97, 49}},
      {"btnExit", "frmMain", {256, 584, 97, 49}},
  };
  EXPECT_EQ(window.size(), QSize(933, 645).boundedTo(window.screen()->availableSize()));
  window.resize(933, 645);
  window.show();
  for (const auto& [name, inside, geometry] : places) {
    EXPECT_EQ(find(name).geometry(), geometry) << name;
    EXPECT_EQ(find(name).parentWidget()->objectName().toStdString(), inside) << name;
    EXPECT_TRUE(find(name).isVisible()) << name;
  }
  EXPECT_FALSE(find("Frame7").isVisible());
  EXPECT_EQ(window.windowTitle().toStdString(), "Orvane成果导出");
  EXPECT_EQ(find("Label1").palette().color(QPalette::WindowText), QColor(192, 0, 0));
  for (const char* name : {"btnRun", "btnStop", "btnExit"}) {
    EXPECT_FALSE(find<QPushButton>(name).icon().isNull()) << name;
  }
}

TEST_F(Layout, NoCaptionIsClipped) {
  window.show();
  for (auto* control : window.findChildren<QWidget*>()) {
    SCOPED_TRACE(control->objectName().toStdString());
    const int textWidth = [&](const QString& text) {
      return control->fontMetrics().horizontalAdvance(text);
    }(control->property("text").toString());
    if (qobject_cast<QLabel*>(control) || qobject_cast<QRadioButton*>(control) ||
        qobject_cast<QCheckBox*>(control)) {
      // As much is drawn in the control as in a larger one.
      const QSize size = control->size();
      const int drawn = ink(*control);
      control->resize(size + QSize(60, 40));
      EXPECT_GT(drawn, 0);
      EXPECT_EQ(drawn, ink(*control));
      control->resize(size);
    } else if (auto* wrapped = dynamic_cast<WrapButton*>(control)) {
      EXPECT_TRUE(control->rect().adjusted(3, 3, -3, -3).contains(wrapped->captionRect()));
      EXPECT_GE(wrapped->captionRect().width() * 2, textWidth);
      EXPECT_LT(wrapped->captionRect().width(), textWidth);
    } else if (auto* button = qobject_cast<QPushButton*>(control)) {
      EXPECT_LE(textWidth + button->iconSize().width() + 12, button->width());
    } else if (auto* frame = dynamic_cast<OptionFrame*>(control)) {
      EXPECT_TRUE(frame->rect().contains(frame->captionRect()));
      for (auto* child : frame->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        EXPECT_FALSE(child->geometry().intersects(frame->captionRect()));
      }
    } else if (auto* line = qobject_cast<QLineEdit*>(control)) {
      EXPECT_GE(line->height(), line->fontMetrics().height() + 4);
    } else if (auto* list = qobject_cast<QComboBox*>(control)) {
      EXPECT_LE(list->minimumSizeHint().width(), list->width());
      EXPECT_LE(list->fontMetrics().height() + 4, list->height());
    }
  }
}

TEST_F(Layout, TheNumberOfDigitsLiesInTheGapOfItsLabel) {
  QLabel& label = find<QLabel>("lblPage");
  const QRect box = find("txtLiuShui").geometry();
  const qsizetype gap = label.text().indexOf(' ');
  const qsizetype behind = label.text().lastIndexOf(' ') + 1;
  const QFontMetrics metrics = label.fontMetrics();
  EXPECT_LE(label.x() + metrics.boundingRect(label.text().left(gap)).right(), box.left());
  EXPECT_GE(label.x() + metrics.horizontalAdvance(label.text().left(behind)), box.right());
}

TEST_F(Layout, TabGoesThroughTheControlsInTheirOrderAndStopsOnceInAGroup) {
  const std::string order =
      "listProcessLog optSaveFileType_2 optSaveFileType_1 optSaveFileType_0 optMutiPage_0 "
      "optMutiPage_1 optCompressionType_1 optCompressionType_0 optCompressionRatios_2 "
      "optCompressionRatios_1 optCompressionRatios_0 txtSp1 txtSp2 cboRenameType txtLiuShui "
      "chkCreateBatchFolder chkCreateDocFolder txtSavePath cmdSelectPath btnRun btnStop btnExit ";
  std::string chain;
  QWidget* const first = &find("listProcessLog");
  QWidget* control = first;
  do {
    const std::string name = control->objectName().toStdString() + " ";
    if (name != " " && order.find(name) != order.npos) chain += name;
    control = control->nextInFocusChain();
  } while (control != first);
  EXPECT_EQ(chain, order);

  window.show();
  window.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  find("btnExit").setFocus();
  std::string stops;
  do {
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    stops += QApplication::focusWidget()->objectName().toStdString() + " ";
  } while (QApplication::focusWidget() != &find("btnExit") && stops.size() < 1000);
  EXPECT_EQ(stops,
            " optSaveFileType_0 optMutiPage_0 optCompressionType_0 optCompressionRatios_0 txtSp1 "
            "txtSp2 cboRenameType txtLiuShui chkCreateBatchFolder chkCreateDocFolder txtSavePath "
            "cmdSelectPath btnRun btnExit ");
}

TEST_F(Layout, TheListFollowsTheWindowAndRefusesNegativeMeasures) {
  window.show();
  const std::pair<QSize, QSize> steps[] = {{{933, 645}, {525, 644}}, {{1300, 800}, {892, 799}},
                                           {{407, 300}, {892, 299}}, {{409, 20}, {1, 19}},
                                           {{408, 645}, {0, 644}},   {{1, 1}, {0, 0}},
                                           {{933, 645}, {525, 644}}};
  for (const auto& [client, list] : steps) {
    window.resize(client);
    EXPECT_EQ(find("listProcessLog").size(), list) << client.width();
    EXPECT_EQ(find("listProcessLog").pos(), QPoint(408, 9));
  }
}

}  // namespace
}  // namespace orvane::test
