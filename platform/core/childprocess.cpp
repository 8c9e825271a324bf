#include "platform/core/childprocess.h"

#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <string>
#include <system_error>
#include <utility>

namespace orvelin {

ChildProcess::ChildProcess(const std::filesystem::path& program, const Descriptor& input,
                           const Descriptor& output) {
  while (::waitpid(-1, nullptr, WNOHANG) > 0) {  // reap processes that ~ChildProcess() left
  }
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, input.get(), STDIN_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, output.get(), STDOUT_FILENO);
  ::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
  std::string name = program.filename();
  char* const arguments[] = {name.data(), nullptr};
  error_ = ::posix_spawn(&pid_, program.c_str(), &actions, nullptr, arguments, environ);
  ::posix_spawn_file_actions_destroy(&actions);
  if (error_ == 0) ::clock_getcpuclockid(pid_, &cpuClock_);
}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
  std::swap(pid_, other.pid_);
  std::swap(error_, other.error_);
  std::swap(cpuClock_, other.cpuClock_);
  return *this;
}

ChildProcess::~ChildProcess() {
  if (pid_ == 0 || error_ != 0) return;
  ::kill(pid_, SIGKILL);
  // A process in a read from a failed disk can't be killed, so wait 10 ms at most. The next
  // ChildProcess reaps it.
  for (int waits = 0; waits < 10 && ::waitpid(pid_, nullptr, WNOHANG) == 0; ++waits)
    ::poll(nullptr, 0, 1);
}

double ChildProcess::cpuSeconds() const {
  timespec time{};
  ::clock_gettime(cpuClock_, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

bool ChildProcess::waitsForDisk() const {
  std::error_code error;
  std::filesystem::directory_iterator thread("/proc/" + std::to_string(pid_) + "/task", error);
  for (; !error && thread != end(thread); thread.increment(error)) {
    std::ifstream file(thread->path() / "stat");
    std::string stat;
    std::getline(file, stat);
    if (stat.find(") D ") != std::string::npos) return true;
  }
  return false;
}

}  // namespace orvelin
