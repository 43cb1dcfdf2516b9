#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <cmath>

#include "Station.h"
#include "window/controls.h"

namespace orvane::test {
namespace {

class Layout : public Station {
 protected:
  /// The number of pixels of a control, or of a part of it, that are as dark as text.
  static int ink(QWidget& control, const QRect& part = {0, 0, -1, -1}) {
    const QImage image = control.grab(part).toImage();
    int dark = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) dark += qGray(image.pixel(x, y)) < 120;
    }
    return dark;
  }
};

TEST_F(Layout, ControlsHaveTheirDesignedPositions) {
  const struct {
    const char *name, *parent;
    QRect geometry;  // in pixels
  } places[] = {
      {"listProcessLog", "frmMain", {408, 9, 525, 644}},  // after the first layout
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
  for (const auto& [name, parent, geometry] : places) {
    EXPECT_EQ(find(name).geometry(), geometry) << name;
    EXPECT_EQ(find(name).parentWidget()->objectName().toStdString(), parent) << name;
    EXPECT_TRUE(find(name).isVisible()) << name;
  }
  EXPECT_FALSE(find("Frame7").isVisible());
  EXPECT_EQ(window.windowTitle().toStdString(), "Orvane成果导出");
  EXPECT_EQ(find("Label1").palette().color(QPalette::WindowText), QColor(192, 0, 0));
  for (const char* name : {"btnRun", "btnStop", "btnExit"}) {
    EXPECT_FALSE(find<QPushButton>(name).icon().isNull()) << name;
  }
}

TEST_F(Layout, EveryTextHasEnoughContrastToItsBackground) {
  const auto luminance = [](const QColor& colour) {
    const auto linear = [](double part) {
      return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
  };
  const std::pair<QPalette::ColorRole, QPalette::ColorRole> texts[] = {
      {QPalette::WindowText, QPalette::Window},        {QPalette::Text, QPalette::Base},
      {QPalette::Text, QPalette::AlternateBase},       {QPalette::ButtonText, QPalette::Button},
      {QPalette::PlaceholderText, QPalette::Base},     {QPalette::Link, QPalette::Base},
      {QPalette::ToolTipText, QPalette::ToolTipBase},  {QPalette::LinkVisited, QPalette::Base},
      {QPalette::HighlightedText, QPalette::Highlight}};
  for (const auto* control : window.findChildren<QWidget*>()) {
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
      for (const auto& [text, ground] : texts) {
        SCOPED_TRACE(control->objectName().toStdString() + " " + std::to_string(group) + " " +
                     std::to_string(text));
        const double below = luminance(control->palette().color(group, ground));
        const double written = luminance(control->palette().color(group, text));
        EXPECT_GE((std::max(below, written) + 0.05) / (std::min(below, written) + 0.05), 4.5);
        EXPECT_EQ(below > written, text != QPalette::HighlightedText) << "dark on light";
      }
    }
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
      // A larger control shows no more of the caption.
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

TEST_F(Layout, TheDigitsBoxIsInTheGapOfItsLabelInEveryFont) {
  const QFont usual = QApplication::font();
  for (const double wider : {0.0, -1.0}) {
    QFont font = usual;
    font.setLetterSpacing(QFont::AbsoluteSpacing, wider);
    QApplication::setFont(font);
    const frmMain shown{[](RunHost&) {}, [] {}};
    auto& label = *shown.findChild<QLabel*>("lblPage");
    const int whole = ink(label);
    const QRect box = shown.findChild<QLineEdit*>("txtLiuShui")->geometry();
    const QRect hidden = box.translated(-label.pos()) & label.rect();
    EXPECT_EQ(ink(label, hidden), 0);
    EXPECT_GT(ink(label, {0, 0, hidden.left(), label.height()}), whole / 3);
  }
  QApplication::setFont(usual);
}

TEST_F(Layout, TabVisitsTheControlsInOrderAndEachGroupOnce) {
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

TEST_F(Layout, TheListFollowsTheWindowAndIgnoresNegativeSizes) {
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
