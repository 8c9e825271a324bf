#include "platform/core/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <utility>
#include <vector>

#include "platform/core/background.h"

namespace orvelin {

namespace {

constexpr std::string_view mark = ".orvelin";

/// Where a new file is written before it is renamed to `path`.
std::string temporaryPath(const std::string& path) {
  const auto name = path.rfind('/') + 1;
  const std::string shortened = path.substr(name, NAME_MAX - 1 - mark.size());
  return path.substr(0, name) + "." + shortened + std::string(mark);
}

}  // namespace

File File::openToRead(const std::string& path) {
  return opened(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

File File::createInPlace(const std::string& path) {
  const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  File file = opened(::open(path.c_str(), flags, 0666));
  struct stat status = {};
  if (file.isOpen() || ::lstat(path.c_str(), &status) != 0) return file;
  return S_ISREG(status.st_mode) || S_ISLNK(status.st_mode) ? createReplacing(path)
                                                            : std::move(file);
}

File File::createReplacing(const std::string& path) {
  const std::string temporary = temporaryPath(path);
  File file = createNew(temporary);
  if (!file.isOpen() || std::rename(temporary.c_str(), path.c_str()) == 0) return file;
  const int error = errno;
  ::unlink(temporary.c_str());
  return {-1, error};
}

File File::createNew(const std::string& path) {
  ::unlink(path.c_str());
  return opened(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
}

// The check is made on the opened descriptor: a name can change hands between check and opening.
File File::opened(int descriptor) {
  if (descriptor < 0) return {-1, errno};
  struct stat status = {};
  const bool known = ::fstat(descriptor, &status) == 0;
  if (known && S_ISREG(status.st_mode)) return {descriptor, 0, status.st_size};
  const int error = !known ? errno : S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
  ::close(descriptor);
  return {-1, error};
}

File::File(File&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), error_(other.error_), size_(other.size_) {}

File::~File() { close(); }

bool File::failed() {
  error_ = errno;
  return false;
}

std::size_t File::readSome(char* bytes, std::size_t count) {
  ssize_t got;
  do got = ::read(descriptor_, bytes, count);
  while (got < 0 && errno == EINTR);
  if (got < 0) failed();
  return got > 0 ? static_cast<std::size_t>(got) : 0;
}

bool File::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written > 0)
      bytes.remove_prefix(static_cast<std::size_t>(written));
    else if (written == 0 || errno != EINTR)
      return failed();
  }
  return true;
}

bool File::writeRestOf(File& source) {
  // Small enough for a slow memory card not to keep the window waiting.
  constexpr std::size_t step = std::size_t{1} << 18;
  // Whatever stops the kernel's copy, the end or a failure, the plain loop then meets as well.
  while (::copy_file_range(source.descriptor_, nullptr, descriptor_, nullptr, step, 0) > 0)
    RuntimeBackgroundTask();
  std::vector<char> block(step);
  while (const std::size_t count = source.readSome(block.data(), block.size())) {
    if (!write({block.data(), count})) return false;
    RuntimeBackgroundTask();
  }
  if (source.error_ == 0 && ::lseek(source.descriptor_, 0, SEEK_CUR) < source.size_)
    source.error_ = ESTALE;
  if (source.error_) error_ = source.error_;
  return source.error_ == 0;
}

void File::clear() {
  error_ = 0;
  if (::ftruncate(descriptor_, 0) != 0 || ::lseek(descriptor_, 0, SEEK_SET) != 0) failed();
}

void File::takeTimeOf(const File& source) {
  struct stat status = {};
  if (::fstat(source.descriptor_, &status) != 0) return;
  const timespec times[] = {{0, UTIME_OMIT}, status.st_mtim};
  // Memory cards and shares may refuse this to all but their owner; the copy is whole even so.
  ::futimens(descriptor_, times);
}

bool File::close() {
  if (descriptor_ < 0) return true;
  const int result = ::close(descriptor_);
  descriptor_ = -1;
  return result == 0 || failed();
}

std::string_view WholeFile::targetOf(std::string_view temporary) {
  if (!temporary.starts_with('.') || !temporary.substr(1).ends_with(mark)) return {};
  return temporary.substr(1, temporary.size() - 1 - mark.size());
}

WholeFile::WholeFile(const std::string& path)
    : path_(path), temporary_(temporaryPath(path)), file_(File::createNew(temporary_)) {}

bool WholeFile::putInPlace() {
  if (!file_.close() || file_.error() != 0) return false;
  inPlace_ = std::rename(temporary_.c_str(), path_.c_str()) == 0;
  if (!inPlace_) renameError_ = errno;
  return inPlace_;
}

WholeFile::~WholeFile() {
  if (!inPlace_) ::unlink(temporary_.c_str());
}

}  // namespace orvelin
