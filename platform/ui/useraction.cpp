#include "platform/ui/useraction.h"

#include <QApplication>
#include <QEvent>
#include <ctime>
#include <utility>

#include "platform/ui/runtime.h"

namespace orvelin {

namespace {

class ActionGate : public QObject {
 public:
  bool busy = false;
  int dialogs = 0;
  bool closeAsked = false;

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (!busy || dialogs > 0) return false;
    switch (event->type()) {
      case QEvent::MouseButtonPress:
      case QEvent::MouseButtonRelease:
      case QEvent::MouseButtonDblClick:
      case QEvent::Wheel:
      case QEvent::KeyPress:
      case QEvent::KeyRelease:
      case QEvent::ShortcutOverride:
      case QEvent::Shortcut:
      case QEvent::ContextMenu:
      case QEvent::TouchBegin:
      case QEvent::TouchUpdate:
      case QEvent::TouchEnd:
      case QEvent::TabletPress:
      case QEvent::TabletRelease:
        return true;
      case QEvent::Close:
      case QEvent::Quit:
        closeAsked = true;
        event->ignore();
        return true;
      default:
        return false;
    }
  }
};

ActionGate& gate() {
  static ActionGate gate;
  return gate;
}

void showBusy(bool busy) {
  if (busy)
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  else
    QGuiApplication::restoreOverrideCursor();
}

/// Takes in, and drops, all that the user has done up to now: the window system is asked for it.
void dropInput() {
  QGuiApplication::sync();
  QCoreApplication::processEvents();
}

}  // namespace

QObject& actionGate() { return gate(); }

void performAction(const std::function<void()>& action) {
  if (gate().busy) return;
  gate().busy = true;
  showBusy(true);
  handlingFailures(action);
  dropInput();
  showBusy(false);
  gate().busy = false;
  if (std::exchange(gate().closeAsked, false)) QApplication::closeAllWindows();
}

DialogOpening::DialogOpening() {
  if (gate().busy) {
    dropInput();
    showBusy(false);
  }
  ++gate().dialogs;
}

DialogOpening::~DialogOpening() {
  --gate().dialogs;
  if (gate().busy) showBusy(true);
}

void letDesktopIn() {
  // The coarse clock costs a few nanoseconds, a look at the window system microseconds.
  constexpr long interval = 20'000'000;
  static timespec last{};
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  if (now.tv_sec == last.tv_sec && now.tv_nsec - last.tv_nsec < interval) return;
  last = now;
  if (gate().busy) QCoreApplication::processEvents();
}

}  // namespace orvelin
