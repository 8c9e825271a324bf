#pragma once

#include <QObject>
#include <functional>

namespace orvelin {

/// Runs what a click or a menu item asks for, failures included. While one action runs another is
/// not begun, then or afterwards, and a request to close the window waits until it has ended. The
/// pointer is the busy one meanwhile.
void performAction(const std::function<void()>& action);

/// While it lives, a dialog that the running action has opened takes the user's input, with the
/// ordinary pointer; whatever the user did before the dialog is dropped.
class DialogOpening {
 public:
  DialogOpening();
  DialogOpening(const DialogOpening&) = delete;
  DialogOpening& operator=(const DialogOpening&) = delete;
  ~DialogOpening();
};

/// The program's background task: lets the window repaint and answer the desktop, now and then.
void letDesktopIn();

/// The filter, for the application object, that keeps the user's input from a running action.
QObject& actionGate();

}  // namespace orvelin
