#include "platform/ui/dialogs.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QMainWindow>
#include <QMessageBox>

#include "platform/ui/useraction.h"

namespace orvelin {

namespace {

/// The window that dialogs belong to, also while the user is at work in another program.
QWidget* mainWindow() {
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (widget->isVisible() && qobject_cast<QMainWindow*>(widget)) return widget;
  return nullptr;
}

}  // namespace

Ref<FolderItem> SelectFolder() {
  const DialogOpening opening;
  // Every choice begins at home: not among the photographs, when it is the destination's turn. The
  // desktop's own dialog would have no title.
  QFileDialog dialog(mainWindow(), "Choisir un dossier", QDir::homePath());
  dialog.setFileMode(QFileDialog::Directory);
  dialog.setOption(QFileDialog::ShowDirsOnly);
  dialog.setSupportedSchemes({"file"});
  dialog.setViewMode(QFileDialog::List);
  if (dialog.exec() != QDialog::Accepted) return nullptr;
  return makeRef<FolderItem>(QFile::encodeName(dialog.selectedFiles().constFirst()).toStdString());
}

void MsgBox(const std::string& text) {
  const DialogOpening opening;
  QMessageBox box(mainWindow());
  box.setTextFormat(Qt::PlainText);
  box.setText(QString::fromStdString(text).replace('\r', '\n'));
  box.exec();
}

}  // namespace orvelin
