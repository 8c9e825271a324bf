#include "platform/ui/runtime.h"

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QLibraryInfo>
#include <QLocale>
#include <QSettings>
#include <QTranslator>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>

#include "platform/core/background.h"
#include "platform/core/bundle.h"
#include "platform/core/failure.h"
#include "platform/core/standardstreams.h"
#include "platform/ui/dialogs.h"
#include "platform/ui/useraction.h"

namespace orvelin {

namespace {

/// The toolkit's own French. It files the names of the folder dialog's icons under the dialog.
class French : public QTranslator {
 public:
  QString translate(const char* context, const char* text, const char* comment,
                    int count) const override {
    if (QLatin1String(context) == QLatin1String("QAbstractFileIconProvider"))
      context = "QFileDialog";
    return QTranslator::translate(context, text, comment, count);
  }
};

/// Takes the toolkit's messages while it starts; the last one before it would abort is fatal.
void endWithoutDisplay(QtMsgType type, const QMessageLogContext&, const QString&) {
  if (type != QtFatalMsg) return;
  report(Failure{"Impossible d’ouvrir la fenêtre", "", "aucun écran n’est accessible"});
  std::_Exit(1);
}

struct Toolkit {
  Toolkit() : application(argc, argv) {
    qInstallMessageHandler(usualHandler);
    QCoreApplication::setApplicationName("Orvelin");
    QGuiApplication::setApplicationDisplayName("Orvelin");
    QGuiApplication::setDesktopFileName("orvelin");
    QGuiApplication::setWindowIcon(QIcon(QFile::decodeName(bundleResource("orvelin.ico").c_str())));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    if (translator.load("qtbase_fr", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
      QCoreApplication::installTranslator(&translator);
    application.installEventFilter(&actionGate());
    installBackgroundTask(&letDesktopIn);
  }
  Toolkit(const Toolkit&) = delete;
  Toolkit& operator=(const Toolkit&) = delete;
  ~Toolkit() { installBackgroundTask(nullptr); }

  // Not those of the program: the toolkit would obey options on its command line.
  int argc = 1;
  char name[8] = "orvelin";
  char* argv[2] = {name, nullptr};
  const QtMessageHandler usualHandler = qInstallMessageHandler(endWithoutDisplay);
  French translator;
  QApplication application;
  bool quitting = false;
  int status = 0;
};

std::unique_ptr<Toolkit> toolkit;

void endAfter(const std::string& failure, const std::string& advice = "") {
  report(failure);
  toolkit->status = 1;
  std::string text = "Orvelin n’a pas pu continuer et va se fermer.\r\r" + failure;
  if (!advice.empty()) text += "\r\r" + advice;
  MsgBox(text +
         "\r\rCe qui est déjà écrit reste en place. Orvelin ne touche à rien hors du dossier "
         "«\u00A0DIGIFILM\u00A0».");
  Quit();
}

}  // namespace

Runtime::Runtime() {
  secureStandardStreams();
  // The toolkit's folder dialog would keep the folders visited, and begin there the next time.
  QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, "/dev/null");
  QLocale::setDefault(QLocale(QLocale::French, QLocale::France));
  toolkit = std::make_unique<Toolkit>();
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
  afterAction([] {
    toolkit->quitting = true;
    QCoreApplication::exit();
  });
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
