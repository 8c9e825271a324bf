#include "platform/core/childprocess.h"

#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <string>
#include <system_error>
#include <utility>

namespace orvelin {

namespace {

// Killed children that have not ended yet, and zeros. Not a vector, which could be destroyed before
// a static ChildProcess.
constinit std::array<pid_t, 16> unreaped{};

void reapKilled() {
  for (pid_t& pid : unreaped)
    if (pid != 0 && ::waitpid(pid, nullptr, WNOHANG) != 0) pid = 0;
}

}  // namespace

ChildProcess::ChildProcess(const std::filesystem::path& program, const Descriptor& input,
                           const Descriptor& output) {
  reapKilled();
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

ChildProcess::ChildProcess(const std::function<int()>& work) {
  reapKilled();
  pid_ = ::fork();
  if (pid_ == 0) ::_exit(std::min(work(), 255));
  if (pid_ < 0) error_ = errno;
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
  // A process that waits for a failed disk can't be killed, so wait 10 ms at most. A later
  // ChildProcess reaps it.
  for (int waits = 0; waits < 10; ++waits) {
    if (::waitpid(pid_, nullptr, WNOHANG) != 0) return;
    ::poll(nullptr, 0, 1);
  }
  if (auto* const place = std::ranges::find(unreaped, 0); place != unreaped.end()) *place = pid_;
}

std::optional<int> ChildProcess::exitStatus() {
  int status = 0;
  const pid_t ended = ::waitpid(pid_, &status, WNOHANG);
  if (ended == 0) return {};
  pid_ = 0;
  return ended > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
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
