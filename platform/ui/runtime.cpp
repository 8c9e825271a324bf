#include "platform/ui/runtime.h"

#include <QApplication>
#include <QEvent>
#include <QFile>
#include <QIcon>
#include <QLibraryInfo>
#include <QLocale>
#include <QSettings>
#include <QTranslator>
#include <algorithm>
#include <cstdlib>
#include <ctime>

#include "platform/core/background.h"
#include "platform/core/bundle.h"
#include "platform/core/failure.h"
#include "platform/core/pictureprocess.h"
#include "platform/core/standardstreams.h"

namespace orvelin {

namespace {

Runtime* currentRuntime = nullptr;

/// Qt's French translation.
class French : public QTranslator {
 public:
  QString translate(const char* context, const char* text, const char* comment,
                    int count) const override {
    // The texts of the file icons are translated in the context of the file dialog.
    if (QLatin1String(context) == QLatin1String("QAbstractFileIconProvider"))
      context = "QFileDialog";
    return QTranslator::translate(context, text, comment, count);
  }
};

/// Message handler during start-up, when a fatal message means that there is no display.
void exitWithoutDisplay(QtMsgType type, const QMessageLogContext&, const QString&) {
  if (type != QtFatalMsg) return;
  report(Failure{"Impossible d’ouvrir la fenêtre", "", "aucun écran n’est accessible"});
  std::_Exit(1);
}

void showBusy(bool busy) {
  if (busy)
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  else
    QGuiApplication::restoreOverrideCursor();
}

/// Discards all input so far, including what the window system has not delivered yet.
void discardPendingInput() {
  QGuiApplication::sync();
  QCoreApplication::processEvents();
}

}  // namespace

/// Discards input while an action runs, except for its dialogs.
class Runtime::InputFilter : public QObject {
 public:
  explicit InputFilter(const Runtime& runtime) : runtime_(runtime) {}

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (!runtime_.acting_ || runtime_.dialogs_ > 0) return false;
    // Let Enter through like Leave, which Qt doesn't count as input: otherwise the button under the
    // pointer would not be highlighted after the action.
    if (event->type() == QEvent::Enter) return false;
    return event->isInputEvent() || event->type() == QEvent::Shortcut;
  }

 private:
  const Runtime& runtime_;
};

struct Runtime::Toolkit {
  explicit Toolkit(const Runtime& runtime) : application(argc, argv), filter(runtime) {
    qInstallMessageHandler(defaultHandler);
    QCoreApplication::setApplicationName("Orvelin");
    QGuiApplication::setApplicationDisplayName("Orvelin");
    QGuiApplication::setDesktopFileName("orvelin");
    QGuiApplication::setWindowIcon(QIcon(QFile::decodeName(bundleResource("orvelin.ico").c_str())));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    if (translator.load("qtbase_fr", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
      QCoreApplication::installTranslator(&translator);
    application.installEventFilter(&filter);
  }

  // Not the arguments of main(): Qt would accept options in them.
  int argc = 1;
  char name[8] = "orvelin";
  char* argv[2] = {name, nullptr};
  const QtMessageHandler defaultHandler = qInstallMessageHandler(exitWithoutDisplay);
  French translator;
  QApplication application;
  InputFilter filter;
};

Runtime::Runtime() {
  secureStandardStreams();
  // Otherwise Qt's folder dialog would save the visited folders and start there next time.
  QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, "/dev/null");
  QLocale::setDefault(QLocale(QLocale::French, QLocale::France));
  toolkit_ = std::make_unique<Toolkit>(*this);
  currentRuntime = this;
  installBackgroundTask(processPendingEvents);
}

Runtime::~Runtime() { stop(); }

Runtime& Runtime::current() {
  if (!currentRuntime) std::abort();
  return *currentRuntime;
}

void Runtime::runEventLoop() {
  if (!quitting_) QApplication::exec();
}

void Runtime::perform(const std::function<void()>& action) {
  if (acting_) return;
  acting_ = true;
  showBusy(true);
  action();
  endPictureProcess();
  discardPendingInput();
  showBusy(false);
  acting_ = false;
  if (quitting_) QCoreApplication::exit();
}

void Runtime::quit(int status) {
  status_ = std::max(status_, status);
  quitting_ = true;
  if (!acting_) QCoreApplication::exit();
}

int Runtime::stop() {
  installBackgroundTask(nullptr);
  currentRuntime = nullptr;
  toolkit_.reset();
  return status_;
}

void Runtime::processPendingEvents() {
  // The coarse clock costs nanoseconds, processing events microseconds.
  constexpr long interval = 8'000'000;
  static std::timespec last{};
  std::timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  if (now.tv_sec == last.tv_sec && now.tv_nsec - last.tv_nsec < interval) return;
  last = now;
  if (current().acting_) QCoreApplication::processEvents();
}

Runtime::DialogScope::DialogScope() : runtime_(current()) {
  endPictureProcess();
  if (runtime_.acting_) {
    discardPendingInput();
    showBusy(false);
  }
  ++runtime_.dialogs_;
}

Runtime::DialogScope::~DialogScope() {
  --runtime_.dialogs_;
  if (runtime_.acting_) showBusy(true);
}

void Quit() { Runtime::current().quit(); }

}  // namespace orvelin
