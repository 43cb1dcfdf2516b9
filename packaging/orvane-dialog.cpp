// The dialogs of open-station. (A desktop does not show the output of a script.)
//   orvane-dialog message TEXT     a box
//   orvane-dialog question TEXT    a box with 是 and 否; the exit status is 0 for 是, 1 for 否
//   orvane-dialog folder TITLE     the folder chooser; prints the folder, or exits with 1
//   orvane-dialog guide            opens the operator's guide
//   orvane-dialog add STATION      asks for a folder of scans and makes a waiting batch of it

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <iostream>
#include <string_view>

#include "AddScans.h"
#include "batchdb/SqliteStore.h"
#include "foundation/Failure.h"
#include "foundation/paths.h"
#include "foundation/program.h"
#include "window/BrowseForFolder.h"
#include "window/QtWindowServices.h"
#include "window/appearance.h"
#include "window/help.h"
#include "window/qt_text.h"

namespace {

using namespace orvane;

bool isAnsweredYes(const QString& text) {
  QMessageBox box(QMessageBox::Question, toQt(kApplicationTitle), text);
  box.setTextFormat(Qt::PlainText);
  QPushButton* yes = box.addButton(QStringLiteral("是"), QMessageBox::YesRole);
  box.addButton(QStringLiteral("否"), QMessageBox::NoRole);
  box.exec();
  return box.clickedButton() == static_cast<QAbstractButton*>(yes);
}

bool printFolder(const QString& title) {
  const std::wstring folder = BrowseForFolder(nullptr, fromQt(title), {});
  if (!folder.empty()) std::cout << nativePath(folder) << '\n';
  return !folder.empty();
}

int addScans(const QString& station, WindowServices& services) {
  try {
    setProgramFolder(pathText(station.toStdString()));
    SqliteStore store;
    store.open(programFolder() + L"\\Orvane.dll");
    const std::wstring folder = BrowseForFolder(nullptr, L"选择扫描件所在的文件夹", {});
    if (folder.empty()) return 1;
    AddScans(store, folder).exec();
    return 0;
  } catch (const std::exception& failure) {
    services.showBox(description(failure), kApplicationTitle, BoxIcon::Critical);
    return 1;
  }
}

}  // namespace

int main(int argc, char** argv) {
  useUtf8Locale();
  QApplication application(argc, argv);
  applyAppearance();
  QtWindowServices services;
  installWindowServices(&services);

  const QString kind = QString::fromLocal8Bit(argc > 1 ? argv[1] : "");
  const QString text = QString::fromLocal8Bit(argc > 2 ? argv[2] : "");
  if (kind == u"message") {
    services.showBox(fromQt(text), kApplicationTitle, BoxIcon::Critical);
  } else if (kind == u"question") {
    return isAnsweredYes(text) ? 0 : 1;
  } else if (kind == u"folder") {
    return printFolder(text) ? 0 : 1;
  } else if (kind == u"guide") {
    openGuide();
  } else if (kind == u"add") {
    return addScans(text, services);
  } else {
    std::cerr << "usage: orvane-dialog message|question|folder TEXT, orvane-dialog guide, or "
                 "orvane-dialog add STATION\n";
    return 2;
  }
  return 0;
}
