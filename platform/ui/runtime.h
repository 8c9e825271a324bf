#pragma once

#include <ctime>
#include <functional>
#include <memory>

namespace orvelin {

/// The toolkit, the user's action that is running, and the exit status. One object exists, from the
/// first step of the program to the last.
class Runtime {
 public:
  /// Starts the toolkit and installs `processPendingEvents` as the background task. Without a
  /// display, logs that and exits with status 1.
  Runtime();
  Runtime(const Runtime&) = delete;
  Runtime& operator=(const Runtime&) = delete;
  ~Runtime();

  /// The object that exists. Aborts if there is none.
  static Runtime& current();

  /// Handles events until `quit` is called; returns at once if it was called before.
  void runEventLoop();
  /// Runs the action of a click or a menu item, with the busy pointer. Discards all input until it
  /// has ended. Does nothing if an action is running already. `action` must not throw.
  void perform(const std::function<void()>& action);
  /// Ends the event loop, after the running action if there is one. The program exits with the
  /// highest `status` of all calls.
  void quit(int status = 0);
  /// Stops the toolkit. Returns the exit status.
  int stop();

  /// While an action runs, lets the window repaint and answer the desktop. Returns within
  /// nanoseconds if it did so a few milliseconds ago.
  void processPendingEvents();

  /// While it exists, the dialogs of the running action get input, with the ordinary pointer. Input
  /// from before is discarded.
  class DialogScope {
   public:
    DialogScope();
    DialogScope(const DialogScope&) = delete;
    DialogScope& operator=(const DialogScope&) = delete;
    ~DialogScope();

   private:
    Runtime& runtime_;
  };

 private:
  class InputFilter;
  struct Toolkit;

  std::unique_ptr<Toolkit> toolkit_;
  bool acting_ = false;
  int dialogs_ = 0;
  bool quitting_ = false;
  int status_ = 0;
  std::timespec lastEvents_{};
};

/// Quits the program with status 0, after the running action if there is one.
void Quit();

}  // namespace orvelin
