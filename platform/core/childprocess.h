#pragma once

#include <sys/types.h>

#include <ctime>
#include <filesystem>

#include "platform/core/descriptor.h"

namespace orvelin {

/// A program that runs as a child of this one. The destructor kills it. All children of the program
/// are of this class.
class ChildProcess {
 public:
  /// Starts the program without arguments. It gets `input` and `output` as its standard input and
  /// output, and stderr, but no other descriptor.
  ChildProcess(const std::filesystem::path& program, const Descriptor& input,
               const Descriptor& output);
  ChildProcess() = default;
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ChildProcess(ChildProcess&&) = delete;
  ChildProcess& operator=(ChildProcess&& other) noexcept;
  ~ChildProcess();

  /// The `errno` that kept the program from being started; 0 if it was.
  int error() const { return error_; }
  /// CPU time that all its threads have used so far.
  double cpuSeconds() const;
  /// Whether one of its threads is in a system call that can't be interrupted, such as a read from
  /// a slow disk.
  bool waitsForDisk() const;

 private:
  pid_t pid_ = 0;
  int error_ = 0;
  clockid_t cpuClock_{};
};

}  // namespace orvelin
