#include "platform/ui/dialogs.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QListView>
#include <QMainWindow>
#include <QMessageBox>
#include <QUrl>
#include <algorithm>
#include <filesystem>

#include "platform/core/volumes.h"
#include "platform/ui/runtime.h"

namespace orvelin {

namespace {

/// The parent of dialogs. The active window would be null while the user works in another program.
QWidget* mainWindow() {
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (widget->isVisible() && qobject_cast<QMainWindow*>(widget)) return widget;
  return nullptr;
}

/// The path of a file URL, byte by byte: QUrl::toLocalFile loses names that are not valid UTF-8.
/// Empty for another kind of URL, or another machine.
std::filesystem::path pathOf(const QUrl& url) {
  if (!url.isLocalFile() || !url.host().isEmpty()) return {};
  return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString();
}

/// Adds the removable volumes to the side bar and makes it wide enough for their names. The dialogs
/// of desktops have another side bar, which shows the volumes.
void addRemovableVolumes(QFileDialog& dialog) {
  auto* sidebar = dialog.findChild<QListView*>("sidebar");
  if (!sidebar) return;
  QList<QUrl> places = dialog.sidebarUrls();
  for (const auto& volume : removableVolumes())
    places << QUrl::fromLocalFile(QFile::decodeName(volume.c_str()));
  dialog.setSidebarUrls(places);
  const int wanted = sidebar->sizeHintForColumn(0) + 2 * sidebar->frameWidth();
  sidebar->setMinimumWidth(std::min(wanted, dialog.width() / 2));
}

}  // namespace

Ref<FolderItem> SelectFolder() {
  const Runtime::DialogScope scope;
  // Set the folder: otherwise the second dialog would start in the photo folder. Set the title:
  // some desktops have no default.
  QFileDialog dialog(mainWindow(), "Choisir un dossier", QDir::homePath());
  dialog.setFileMode(QFileDialog::Directory);
  dialog.setOption(QFileDialog::ShowDirsOnly);
  dialog.setSupportedSchemes({"file"});
  dialog.setViewMode(QFileDialog::List);
  addRemovableVolumes(dialog);
  while (dialog.exec() == QDialog::Accepted) {
    const QUrl url = dialog.selectedUrls().constFirst();
    auto folder = makeRef<FolderItem>(pathOf(url));
    if (folder->Directory()) return folder;
    // Some desktops return a path that doesn't exist. Use the text of Qt's own dialog.
    const QString notFound = QFileDialog::tr(
        "%1\nDirectory not found.\nPlease verify the correct directory name was given.");
    QMessageBox box(QMessageBox::Warning, dialog.windowTitle(), notFound.arg(url.fileName()),
                    QMessageBox::Ok, mainWindow());
    box.setTextFormat(Qt::PlainText);
    box.exec();
  }
  return nullptr;
}

void MsgBox(const std::string& text) {
  const Runtime::DialogScope scope;
  QMessageBox box(mainWindow());
  box.setTextFormat(Qt::PlainText);
  box.setText(QString::fromStdString(text).replace('\r', '\n'));
  box.exec();
}

}  // namespace orvelin
