#pragma once

#include <functional>

namespace orvelin {

/// The toolkit, from the program's first step to its last.
class Runtime {
 public:
  Runtime(int& argc, char** argv);
  Runtime(const Runtime&) = delete;
  Runtime& operator=(const Runtime&) = delete;
  ~Runtime();

  /// Runs until the program is asked to quit; returns at once when it already was.
  void runEventLoop();
  /// Stops the toolkit and answers the program's exit status: 1 after an unhandled failure, else 0.
  int stop();
};

/// Asks the event loop to end, at once and without a question.
void Quit();

/// Runs `step`; a failure that escapes it is shown to the user and ends the program with status 1.
void handlingFailures(const std::function<void()>& step);

}  // namespace orvelin
