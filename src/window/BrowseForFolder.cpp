#include "window/BrowseForFolder.h"

#include <QBoxLayout>
#include <QDialog>
#include <QDir>
#include <QHeaderView>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <memory>
#include <mntent.h>

#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/paths.h"
#include "window/qt_path.h"
#include "window/qt_text.h"

namespace orvane {
namespace {

constexpr int kFolder = Qt::UserRole;  // the native path of an item

// The window shows a path text, which begins with "\", and a native path begins with "/". Empty if
// the text is no path.
QString nativeFolder(const QString& typed) {
  return QDir::cleanPath(typed.startsWith(u'\\') ? toQtPath(fromQt(typed)) : typed);
}

// A folder that cannot be entered is none.
bool isFolder(const QString& path) {
  return QDir::isAbsolutePath(path) && QFileInfo(path + QStringLiteral("/.")).isDir();
}

QString nearestFolder(std::wstring path) {
  for (;;) {
    QString folder = QDir::cleanPath(toQtPath(path));
    if (isFolder(folder)) return folder;
    const std::size_t end = path.find_last_of(L"\\/");
    if (end == path.npos || end == 0) return QDir::homePath();
    path.resize(end);
  }
}

// Without hidden ones, those that cannot be examined, and names that are not UTF-8, to which Qt has
// no path: some versions of QDir list nothing in a folder with such a name.
QStringList subFolders(const QString& folder) {
  QStringList found;
  try {
    const std::wstring parent = fromQtPath(folder);
    for (const std::wstring& name : mdlFolderAndFile::fileSystem().SubFolders(parent)) {
      const QString path = toQtPath(mdlFolderAndFile::AppendBackslash(parent) + name);
      if (!name.starts_with(L'.') && !path.isEmpty() && QFileInfo(path).isDir()) found += path;
    }
  } catch (const std::exception&) {  // a folder that cannot be listed shows none
  }
  return found;
}

/// The home folder, the volumes and the root folder, each with its sub-folders. The sub-folders of
/// a folder are read when its item is expanded.
class FolderTree : public QTreeWidget {
 public:
  explicit FolderTree(QWidget* parent) : QTreeWidget(parent) {
    setHeaderHidden(true);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    setAccessibleName(QStringLiteral("文件夹"));
    connect(this, &QTreeWidget::itemExpanded, &FolderTree::fill);
    addPlace(QDir::homePath(), QStringLiteral("主文件夹"), QStyle::SP_DirHomeIcon);
    for (const QString& volume : mountedVolumes()) {
      addPlace(volume, QFileInfo(volume).fileName(), QStyle::SP_DriveHDIcon);
    }
    addPlace(QDir::rootPath(), QStringLiteral("文件系统"), QStyle::SP_ComputerIcon);
  }

  QString currentFolder() const { return folderOf(currentItem()); }

  /// Expands the folders above `folder` and makes it the current one.
  void goTo(const QString& folder) {
    QTreeWidgetItem* item = placeAbove(folder);
    QString path = folderOf(item);
    for (const QString& name : folder.mid(path.size()).split(u'/', Qt::SkipEmptyParts)) {
      path += (path.endsWith(u'/') ? QString() : QStringLiteral("/")) + name;
      item->setExpanded(true);
      item = child(item, path);
    }
    item->setExpanded(true);
    setCurrentItem(item);
    scrollToItem(item, PositionAtCenter);
  }

 protected:
  // Enter belongs to the dialog.
  void keyPressEvent(QKeyEvent* event) override {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return event->ignore();
    QTreeWidget::keyPressEvent(event);
  }

 private:
  static QString folderOf(const QTreeWidgetItem* item) {
    return item == nullptr ? QString() : item->data(0, kFolder).toString();
  }

  static void describe(QTreeWidgetItem& item, const QString& folder, const QString& name) {
    item.setText(0, name);
    item.setData(0, kFolder, folder);
    item.setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
  }

  void addPlace(const QString& folder, const QString& name, QStyle::StandardPixmap icon) {
    auto* item = new QTreeWidgetItem(this);
    describe(*item, folder, name);
    item->setIcon(0, style()->standardIcon(icon));
  }

  static QTreeWidgetItem* addChild(QTreeWidgetItem* parent, const QString& folder) {
    auto* item = new QTreeWidgetItem(parent);
    describe(*item, folder, QFileInfo(folder).fileName());
    item->setIcon(0, parent->treeWidget()->style()->standardIcon(QStyle::SP_DirIcon));
    return item;
  }

  /// The item of `folder` inside `parent`. A hidden folder, or one created after the listing, has
  /// no item yet and gets one.
  static QTreeWidgetItem* child(QTreeWidgetItem* parent, const QString& folder) {
    for (int i = 0; i < parent->childCount(); ++i) {
      if (folderOf(parent->child(i)) == folder) return parent->child(i);
    }
    return addChild(parent, folder);
  }

  static void fill(QTreeWidgetItem* item) {
    if (item->childCount() > 0) return;
    for (const QString& folder : subFolders(folderOf(item))) addChild(item, folder);
    if (item->childCount() == 0)
      item->setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicatorWhenChildless);
  }

  /// The top-level item with the longest path that contains `folder`. The last item, the root
  /// folder, contains every folder.
  QTreeWidgetItem* placeAbove(const QString& folder) const {
    QTreeWidgetItem* best = topLevelItem(topLevelItemCount() - 1);
    for (int i = 0; i + 1 < topLevelItemCount(); ++i) {
      const QString place = folderOf(topLevelItem(i));
      const bool leads = folder == place || folder.startsWith(place + u'/');
      if (leads && place.size() > folderOf(best).size()) best = topLevelItem(i);
    }
    return best;
  }
};

/// The tree, and below it the path that 确定 accepts, which can also be typed.
class FolderChooser : public QDialog {
 public:
  FolderChooser(QWidget* owner, const QString& title, const QString& folder)
      : QDialog(owner),
        tree_(new FolderTree(this)),
        path_(new QLineEdit(this)),
        accept_(new QPushButton(QStringLiteral("确定"), this)) {
    setWindowTitle(title);
    path_->setAccessibleName(QStringLiteral("选中的文件夹"));
    auto* create = new QPushButton(QStringLiteral("新建文件夹"), this);
    auto* cancel = new QPushButton(QStringLiteral("取消"), this);
    create->setAutoDefault(false);
    accept_->setDefault(true);
    layOut({create, accept_, cancel});
    connect(tree_, &QTreeWidget::currentItemChanged, this,
            [this] { path_->setText(tree_->currentFolder()); });
    connect(path_, &QLineEdit::textChanged, this, [this, create](const QString& path) {
      for (auto* button : {accept_, create}) button->setEnabled(isFolder(nativeFolder(path)));
    });
    connect(create, &QPushButton::clicked, this, &FolderChooser::makeFolder);
    connect(accept_, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    tree_->goTo(folder);
  }

  QString folder() const { return nativeFolder(path_->text()); }

 private:
  void layOut(std::initializer_list<QPushButton*> buttons) {
    auto* row = new QHBoxLayout;
    for (auto* button : buttons) row->addWidget(button);
    row->insertStretch(1);
    auto* column = new QVBoxLayout(this);
    column->addWidget(tree_);
    column->addWidget(path_);
    column->addLayout(row);
    resize(480, 440);
  }

  void makeFolder() {
    QInputDialog asked(this);
    asked.setWindowTitle(QStringLiteral("新建文件夹"));
    asked.setLabelText(QStringLiteral("在 %1 里新建的文件夹名称：").arg(folder()));
    asked.setOkButtonText(QStringLiteral("确定"));
    asked.setCancelButtonText(QStringLiteral("取消"));
    if (asked.exec() != Accepted || asked.textValue().isEmpty()) return;
    const QString made = QDir::cleanPath(folder() + u'/' + asked.textValue());
    try {
      mdlFolderAndFile::fileSystem().CreateFolder(fromQtPath(made));
      tree_->goTo(made);
    } catch (const std::exception& failure) {
      windowServices().showBox(L"新建文件夹失败：" + description(failure), L"新建文件夹",
                               BoxIcon::None);
    }
  }

  FolderTree* tree_;
  QLineEdit* path_;
  QPushButton* accept_;
};

}  // namespace

std::wstring BrowseForFolder(QWidget* hOwner, const std::wstring& sTitle,
                             const std::wstring& sOpenAt) {
  try {
    FolderChooser chooser(hOwner, toQt(sTitle), nearestFolder(sOpenAt));
    if (chooser.exec() != QDialog::Accepted) return {};
    return fromQtPath(chooser.folder());
  } catch (const std::exception&) {
    return {};
  }
}

QStringList mountedVolumes(const char* table) {
  QStringList volumes;
  const std::unique_ptr<FILE, int (*)(FILE*)> mounts(setmntent(table, "re"), endmntent);
  if (mounts == nullptr) return volumes;
  while (const mntent* mount = getmntent(mounts.get())) {
    const QString folder = toQtPath(pathText(mount->mnt_dir));
    for (const char* above : {"/media/", "/run/media/", "/mnt/"}) {
      if (folder.startsWith(QLatin1String(above))) volumes += folder;
    }
    if (folder == QLatin1String("/mnt")) volumes += folder;
  }
  volumes.removeDuplicates();
  return volumes;
}

}  // namespace orvane
