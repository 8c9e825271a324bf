#include "platform/core/devicesync.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <iterator>

#include "platform/core/background.h"

namespace orvelin {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int pollMilliseconds = 2;                 // every build waits at least that long
constexpr std::chrono::milliseconds interval{200};  // between starts, since fork() takes time
constexpr std::chrono::minutes maxIdle{5};

/// The error of a system call; 0 if it succeeded, or if the file system does not have the call.
int errorOf(int result) {
  const bool unsupported = errno == ENOSYS || errno == EOPNOTSUPP || errno == EINVAL;
  return result == 0 || unsupported ? 0 : errno;
}

/// Opens a file or folder. Of a new file, the owner may have the right to write only.
int opened(const char* path) {
  const int file = ::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  const bool writeOnly = file < 0 && errno == EACCES;
  return writeOnly ? ::open(path, O_WRONLY | O_NONBLOCK | O_CLOEXEC) : file;
}

/// The kernel's file of counters for the device of a file; empty if there is no block device.
std::string countersOf(const Descriptor& file) {
  struct stat status = {};
  if (::fstat(file.get(), &status) != 0) return "";
  const std::string path = "/sys/dev/block/" + std::to_string(major(status.st_dev)) + ":" +
                           std::to_string(minor(status.st_dev)) + "/stat";
  return std::ifstream(path) ? path : "";
}

}  // namespace

DeviceSync::DeviceSync(const FolderItem& folder)
    : path_(folder.Path()),
      folder_(opened(path_.c_str())),
      error_(errno),
      counters_(countersOf(folder_)) {}

void DeviceSync::start() {
  if (!isRunning() && Clock::now() - lastStart_ >= interval) fork();
}

void DeviceSync::finish(const FolderItem& file) {
  wait();
  fork(file.Path());
  if (!running_) fail(child_.error());
  wait();
}

void DeviceSync::fork(const std::string& file) {
  if (folder_.get() < 0) fail(error_);
  child_ = ChildProcess([&] {
    // Close the connection to the display: otherwise, if the program is killed, the window remains.
    ::dup2(folder_.get(), 0);
    ::close_range(1, ~0U, 0);
    const int last = file.empty() ? 0 : opened(file.c_str());
    if (last < 0) return errno;
    const int error = errorOf(::syncfs(0));
    return error != 0 || file.empty() ? error : errorOf(::fsync(last));
  });
  running_ = child_.error() == 0;
  lastStart_ = lastProgress_ = Clock::now();
}

bool DeviceSync::isRunning() {
  if (!running_) return false;
  const auto status = child_.exitStatus();
  running_ = !status;
  if (status && *status != 0) fail(*status > 0 ? *status : EINTR);
  if (const auto sectors = sectorsWritten(); counters_.empty() || sectors != lastSectors_) {
    lastSectors_ = sectors;
    lastProgress_ = Clock::now();
  }
  if (running_ && Clock::now() - lastProgress_ > maxIdle) fail(ETIMEDOUT);
  return running_;
}

void DeviceSync::wait() {
  while (isRunning()) {
    ::poll(nullptr, 0, pollMilliseconds);
    RuntimeBackgroundTask();
  }
}

std::uint64_t DeviceSync::sectorsWritten() const {
  std::ifstream counters(counters_);
  std::istream_iterator<std::uint64_t> counter(counters);
  for (int i = 0; counters && i < 6; ++i) ++counter;
  return counters ? *counter : 0;
}

void DeviceSync::fail(int error) const {
  throw NilObjectException(
      Failure::ofSystem("Impossible d’écrire sur le disque du dossier", path_, error));
}

}  // namespace orvelin
