#pragma once

#include <sys/types.h>

#include <ctime>
#include <filesystem>

#include "platform/core/descriptor.h"

namespace orvelin {

/// A child process; the destructor kills it. Start children only with this class: it reaps every
/// child of the program that has exited.
class ChildProcess {
 public:
  /// Starts the program without arguments. It gets `input` as stdin, `output` as stdout, and this
  /// program's stderr; no other descriptor.
  ChildProcess(const std::filesystem::path& program, const Descriptor& input,
               const Descriptor& output);
  ChildProcess() = default;
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ChildProcess(ChildProcess&&) = delete;
  ChildProcess& operator=(ChildProcess&& other) noexcept;
  ~ChildProcess();

  /// 0 if the program was started, else the `errno` of posix_spawn().
  int error() const { return error_; }
  /// CPU time used by all its threads.
  double cpuSeconds() const;
  /// Whether a thread is in uninterruptible sleep, such as a read from a slow disk.
  bool waitsForDisk() const;

 private:
  pid_t pid_ = 0;
  int error_ = 0;
  clockid_t cpuClock_{};
};

}  // namespace orvelin
