#include "platform/core/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>
#include <vector>

namespace orvelin {

File File::openToRead(const std::string& path) {
  return opened(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

File File::createInPlace(const std::string& path) {
  const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const int descriptor = ::open(path.c_str(), flags, 0666);
  if (descriptor < 0 && errno == ELOOP) return createNew(path);
  return opened(descriptor);
}

File File::createNew(const std::string& path) {
  ::unlink(path.c_str());
  return opened(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
}

// The check is made on the opened descriptor: a name can change hands between check and opening.
File File::opened(int descriptor) {
  if (descriptor < 0) return {-1, errno};
  struct stat status {};
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
  // Whatever stops the kernel's copy, the end or a failure, the plain loop then meets as well.
  constexpr std::size_t most = std::size_t{1} << 30;
  while (::copy_file_range(source.descriptor_, nullptr, descriptor_, nullptr, most, 0) > 0) {
  }
  std::vector<char> block(std::size_t{1} << 18);
  while (const std::size_t count = source.readSome(block.data(), block.size()))
    if (!write({block.data(), count})) return false;
  if (source.error_) error_ = source.error_;
  return source.error_ == 0;
}

void File::takeTimeOf(const File& source) {
  struct stat status {};
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

namespace {

constexpr std::string_view mark = ".orvelin";

std::string besideName(const std::string& path) {
  const auto name = path.rfind('/') + 1;
  return path.substr(0, name) + "." + path.substr(name) + std::string(mark);
}

}  // namespace

bool WholeFile::isLeftover(std::string_view name) {
  return name.starts_with('.') && name.ends_with(mark);
}

WholeFile::WholeFile(const std::string& path)
    : path_(path), beside_(besideName(path)), file_(File::createNew(beside_)) {}

bool WholeFile::putInPlace() {
  if (!file_.close()) return false;
  inPlace_ = std::rename(beside_.c_str(), path_.c_str()) == 0;
  if (!inPlace_) renameError_ = errno;
  return inPlace_;
}

WholeFile::~WholeFile() {
  if (!inPlace_) ::unlink(beside_.c_str());
}

}  // namespace orvelin
