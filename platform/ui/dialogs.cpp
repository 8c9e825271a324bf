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

#include "platform/core/volumes.h"
#include "platform/ui/useraction.h"

namespace orvelin {

namespace {

/// The window that dialogs belong to, also while the user is at work in another program.
QWidget* mainWindow() {
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (widget->isVisible() && qobject_cast<QMainWindow*>(widget)) return widget;
  return nullptr;
}

/// The path of a file URL, byte for byte: the toolkit's own decoding loses names that are no UTF-8.
/// Empty for a URL of another kind or machine.
std::string pathOf(const QUrl& url) {
  if (!url.isLocalFile() || !url.host().isEmpty()) return {};
  return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString();
}

/// Adds the removable volumes to the side bar, and makes it as wide as their names. A desktop's own
/// dialog has none of ours and shows the volumes by itself.
void addRemovableVolumes(QFileDialog& dialog) {
  auto* sidebar = dialog.findChild<QListView*>("sidebar");
  if (!sidebar) return;
  QList<QUrl> places = dialog.sidebarUrls();
  for (const std::string& volume : removableVolumes())
    places << QUrl::fromLocalFile(QFile::decodeName(volume.c_str()));
  dialog.setSidebarUrls(places);
  const int wanted = sidebar->sizeHintForColumn(0) + 2 * sidebar->frameWidth();
  sidebar->setMinimumWidth(std::min(wanted, dialog.width() / 2));
}

}  // namespace

Ref<FolderItem> SelectFolder() {
  const DialogOpening opening;
  // Every choice starts at home, or the second would start among the photographs. The desktop's own
  // dialog would have no title.
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
    // Some desktops return another path than the one chosen. In the words of the toolkit's dialog:
    const QString notFound = QFileDialog::tr(
        "%1\nDirectory not found.\nPlease verify the correct directory name was given.");
    QMessageBox::warning(mainWindow(), dialog.windowTitle(), notFound.arg(url.fileName()));
  }
  return nullptr;
}

void MsgBox(const std::string& text) {
  const DialogOpening opening;
  QMessageBox box(mainWindow());
  box.setTextFormat(Qt::PlainText);
  box.setText(QString::fromStdString(text).replace('\r', '\n'));
  box.exec();
}

}  // namespace orvelin
