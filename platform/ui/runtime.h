#pragma once

#include <functional>

namespace orvelin {

/// The toolkit, from the program's first step to its last. Without a display, making one ends the
/// program with status 1.
class Runtime {
 public:
  Runtime();
  Runtime(const Runtime&) = delete;
  Runtime& operator=(const Runtime&) = delete;
  ~Runtime();

  /// Runs until the program is asked to quit; returns at once when it already was.
  void runEventLoop();
  /// Stops the toolkit. Returns the program's exit status: 1 after an unhandled failure, else 0.
  int stop();
};

/// Ends the event loop, without a question; once the running action has ended, if there is one.
void Quit();

/// Runs `step`; a failure that escapes it is shown to the user and ends the program with status 1.
void handlingFailures(const std::function<void()>& step);

}  // namespace orvelin
