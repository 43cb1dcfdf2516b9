#include "window/screen_fit.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <unistd.h>

#include "window/ControlTable.h"

namespace orvane {
namespace {

constexpr const char* kScale = "QT_SCALE_FACTOR";  // read once, when the application is created
constexpr const char* kFitted = "ORVANE_FITTED";   // set for the restarted process
constexpr QSize kFrame(8, 36);                     // the largest frame that desktops draw

}  // namespace

double fittingScale(QSize design, QSize available, double pixelRatio) {
  const QSize needed = design + kFrame;
  const double part = std::min(double(available.width()) / needed.width(),
                               double(available.height()) / needed.height());
  return std::min(1.0, std::max(part, 1 / pixelRatio));
}

void fitToScreen(char** argv) {
  const bool isFitted = qEnvironmentVariableIsSet(kFitted);
  qunsetenv(kFitted);
  const QSize design(kClientWidth / kTwipsPerPixel, kClientHeight / kTwipsPerPixel);
  const QScreen& screen = *QGuiApplication::primaryScreen();
  const double scale =
      fittingScale(design, screen.availableGeometry().size(), screen.devicePixelRatio());
  if (isFitted || scale >= 1) return;

  bool isNumber = false;
  const double wanted = qEnvironmentVariable(kScale).toDouble(&isNumber);
  qputenv(kScale, QByteArray::number((isNumber && wanted > 0 ? wanted : 1) * scale));
  qputenv(kFitted, "1");
  execv("/proc/self/exe", argv);
}

}  // namespace orvane
