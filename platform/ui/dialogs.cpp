#include "platform/ui/dialogs.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QMainWindow>
#include <QMessageBox>
#include <QUrl>

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
