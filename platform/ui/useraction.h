#pragma once

#include <QObject>
#include <functional>

namespace orvelin {

/// Runs the action of a click or a menu item and handles its failures. While it runs, input is
/// discarded, the pointer is the busy one, and another action is not begun, then or afterwards.
void performAction(const std::function<void()>& action);

/// Runs `step` once the running action has ended; at once when none runs. Replaces an earlier step
/// that still waits.
void afterAction(const std::function<void()>& step);

/// While it lives, a dialog that the running action has opened takes the user's input, with the
/// ordinary pointer; input from before the dialog is discarded.
class DialogOpening {
 public:
  DialogOpening();
  DialogOpening(const DialogOpening&) = delete;
  DialogOpening& operator=(const DialogOpening&) = delete;
  ~DialogOpening();
};

/// The program's background task: lets the window repaint and answer the desktop, now and then.
void letDesktopIn();

/// The event filter for the application object that discards input while an action runs.
QObject& actionGate();

}  // namespace orvelin
