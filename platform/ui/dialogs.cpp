#include "platform/ui/dialogs.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QMessageBox>

#include "platform/ui/useraction.h"

namespace orvelin {

Ref<FolderItem> SelectFolder() {
  const DialogOpening opening;
  QFileDialog dialog(QApplication::activeWindow());
  dialog.setFileMode(QFileDialog::Directory);
  dialog.setOption(QFileDialog::ShowDirsOnly);
  dialog.setViewMode(QFileDialog::List);
  if (dialog.exec() != QDialog::Accepted) return nullptr;
  return makeRef<FolderItem>(QFile::encodeName(dialog.selectedFiles().constFirst()).toStdString());
}

void MsgBox(const std::string& text) {
  const DialogOpening opening;
  QMessageBox box(QApplication::activeWindow());
  box.setTextFormat(Qt::PlainText);
  box.setText(QString::fromStdString(text).replace('\r', '\n'));
  box.exec();
}

}  // namespace orvelin
