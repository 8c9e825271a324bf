#pragma once

#include <sys/types.h>

#include <ctime>
#include <filesystem>
#include <functional>
#include <optional>

#include "platform/core/descriptor.h"

namespace orvelin {

/// A child process; the destructor kills it.
class ChildProcess {
 public:
  /// Starts the program without arguments. It gets `input` as stdin, `output` as stdout, and this
  /// program's stderr; no other descriptor.
  ChildProcess(const std::filesystem::path& program, const Descriptor& input,
               const Descriptor& output);
  /// Forks this program. The child calls `work` and exits with the status that it returns. Since
  /// libraries have threads, `work` may call only async-signal-safe functions.
  explicit ChildProcess(const std::function<int()>& work);
  ChildProcess() = default;
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ChildProcess(ChildProcess&&) = delete;
  ChildProcess& operator=(ChildProcess&& other) noexcept;
  ~ChildProcess();

  /// 0 if the child was started, else the `errno` of posix_spawn() or fork().
  int error() const { return error_; }
  /// CPU time used by all its threads.
  double cpuSeconds() const;
  /// Whether a thread is in uninterruptible sleep, such as a read from a slow disk.
  bool waitsForDisk() const;

  /// The exit status, up to 255; -1 if the child was killed. Empty while it is running. Call it
  /// only until it returns a status.
  std::optional<int> exitStatus();

 private:
  pid_t pid_ = 0;
  int error_ = 0;
  clockid_t cpuClock_{};
};

}  // namespace orvelin
