#include "platform/ui/useraction.h"

#include <QApplication>
#include <QEvent>
#include <ctime>
#include <utility>

#include "platform/core/pictureprocess.h"
#include "platform/ui/runtime.h"

namespace orvelin {

namespace {

class ActionGate : public QObject {
 public:
  bool busy = false;
  int dialogs = 0;
  std::function<void()> afterwards;

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (!busy || dialogs > 0) return false;
    // Enter does nothing but pair with Leave, which is no input event: a button without it would
    // not light up under the pointer afterwards.
    if (event->type() == QEvent::Enter) return false;
    return event->isInputEvent() || event->type() == QEvent::Shortcut;
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

/// Fetches from the window system, and discards, all input up to now.
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
  endPictureProcess();
  dropInput();
  showBusy(false);
  gate().busy = false;
  if (const auto step = std::exchange(gate().afterwards, nullptr)) step();
}

void afterAction(const std::function<void()>& step) {
  if (gate().busy)
    gate().afterwards = step;
  else
    step();
}

DialogOpening::DialogOpening() {
  endPictureProcess();
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
  constexpr long interval = 8'000'000;
  static timespec last{};
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  if (now.tv_sec == last.tv_sec && now.tv_nsec - last.tv_nsec < interval) return;
  last = now;
  if (gate().busy) QCoreApplication::processEvents();
}

}  // namespace orvelin
