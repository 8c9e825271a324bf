#pragma once

#include <functional>
#include <memory>

namespace orvelin {

/// Owns Qt's application object, the state of the user's action, and the exit status. main()
/// creates the only Runtime.
class Runtime {
 public:
  /// Starts Qt and installs `processPendingEvents` as the background task. Without a display, logs
  /// that and exits with status 1.
  Runtime();
  Runtime(const Runtime&) = delete;
  Runtime& operator=(const Runtime&) = delete;
  ~Runtime();

  /// The only Runtime. Aborts if there is none.
  static Runtime& current();

  /// Handles events until `quit` is called; returns at once if it was called before.
  void runEventLoop();
  /// Runs a user's action; performAction() also handles its failures. Until it returns, shows the
  /// busy pointer and discards input. Then kills the picture process. Does nothing if another
  /// action is running. `action` must not throw.
  void perform(const std::function<void()>& action);
  /// Ends the event loop, now or when the running action returns. The highest `status` of all calls
  /// becomes the exit status.
  void quit(int status = 0);
  /// Stops Qt. Returns the exit status.
  int stop();

  /// Handles Qt's events while an action runs, about every 8 ms.
  static void processPendingEvents();

  /// While this object exists, the running action has a dialog open: the dialog gets input, and the
  /// pointer is the normal one. Discards earlier input, and kills the picture process.
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
};

/// Calls Runtime::quit.
void Quit();

}  // namespace orvelin
