#include <QApplication>
#include <gmock/gmock.h>

#include "window/appearance.h"

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  orvane::applyAppearance();
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
