#include "platform/ui/runtime.h"

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QLibraryInfo>
#include <QLocale>
#include <QSettings>
#include <QTranslator>
#include <exception>
#include <iostream>
#include <memory>
#include <new>

#include "platform/core/background.h"
#include "platform/core/bundle.h"
#include "platform/core/failure.h"
#include "platform/ui/dialogs.h"
#include "platform/ui/useraction.h"

namespace orvelin {

namespace {

/// The toolkit's own French, which keeps under the folder dialog's name what its icons are called.
class French : public QTranslator {
 public:
  QString translate(const char* context, const char* text, const char* comment,
                    int count) const override {
    if (QLatin1String(context) == QLatin1String("QAbstractFileIconProvider"))
      context = "QFileDialog";
    return QTranslator::translate(context, text, comment, count);
  }
};

struct Toolkit {
  Toolkit(int& argc, char** argv) : application(argc, argv) {
    QCoreApplication::setApplicationName("Orvelin");
    QGuiApplication::setApplicationDisplayName("Orvelin");
    QGuiApplication::setDesktopFileName("orvelin");
    QGuiApplication::setWindowIcon(QIcon(QFile::decodeName(bundleResource("orvelin.png").c_str())));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    if (translator.load("qtbase_fr", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
      QCoreApplication::installTranslator(&translator);
    application.installEventFilter(&actionGate());
    installBackgroundTask(&letDesktopIn);
  }
  ~Toolkit() { installBackgroundTask(nullptr); }

  French translator;
  QApplication application;
  bool quitting = false;
  int status = 0;
};

std::unique_ptr<Toolkit> toolkit;

void endAfter(const std::string& failure, const std::string& advice = "") {
  std::cerr << "Orvelin\u00A0: " + failure + "\n";
  toolkit->status = 1;
  std::string text = "Orvelin n'a pas pu continuer et va se fermer.\r\r" + failure;
  if (!advice.empty()) text += "\r\r" + advice;
  MsgBox(text +
         "\r\rCe qui est déjà écrit reste en place. Orvelin ne touche à rien hors du dossier "
         "«\u00A0DIGIFILM\u00A0».");
  Quit();
}

}  // namespace

Runtime::Runtime(int& argc, char** argv) {
  // The toolkit's folder dialog would keep the folders visited, and begin there the next time.
  QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, "/dev/null");
  QLocale::setDefault(QLocale(QLocale::French, QLocale::France));
  toolkit = std::make_unique<Toolkit>(argc, argv);
}

Runtime::~Runtime() { toolkit.reset(); }

void Runtime::runEventLoop() {
  if (!toolkit->quitting) QApplication::exec();
}

int Runtime::stop() {
  const int status = toolkit->status;
  toolkit.reset();
  return status;
}

void Quit() {
  toolkit->quitting = true;
  QCoreApplication::exit();
}

void handlingFailures(const std::function<void()>& step) try {
  step();
} catch (const NilObjectException& failure) {
  endAfter(failure.what(), failure.advice());
} catch (const std::bad_alloc&) {
  endAfter("Mémoire insuffisante.");
} catch (const std::exception& failure) {
  endAfter(failure.what());
}

}  // namespace orvelin
