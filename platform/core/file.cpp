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

namespace fs = std::filesystem;

namespace {

constexpr std::string_view tempSuffix = ".orvelin";

/// The temporary file that is renamed to `target`.
fs::path tempPathFor(const fs::path& target) {
  const std::string name = target.filename();
  const std::string shortened = name.substr(0, NAME_MAX - 1 - tempSuffix.size());
  return target.parent_path() / ("." + shortened).append(tempSuffix);
}

}  // namespace

File File::openToRead(const fs::path& path) {
  return opened(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

File File::createInPlace(const fs::path& path) {
  const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  File file = opened(::open(path.c_str(), flags, 0666));
  struct stat status = {};
  if (file.isOpen() || ::lstat(path.c_str(), &status) != 0) return file;
  return S_ISREG(status.st_mode) || S_ISLNK(status.st_mode) ? createReplacing(path)
                                                            : std::move(file);
}

File File::createReplacing(const fs::path& path) {
  const auto tempPath = tempPathFor(path);
  File file = createNew(tempPath);
  if (!file.isOpen() || std::rename(tempPath.c_str(), path.c_str()) == 0) return file;
  const int error = errno;
  ::unlink(tempPath.c_str());
  return {-1, error};
}

File File::createNew(const fs::path& path) {
  ::unlink(path.c_str());
  return opened(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
}

// Checks the open descriptor: between a check of the name and open() the file can be replaced.
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

bool File::setError() {
  error_ = errno;
  return false;
}

std::size_t File::readSome(char* bytes, std::size_t count) {
  ssize_t got;
  do got = ::read(descriptor_, bytes, count);
  while (got < 0 && errno == EINTR);
  if (got < 0) setError();
  return got > 0 ? static_cast<std::size_t>(got) : 0;
}

bool File::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written > 0)
      bytes.remove_prefix(static_cast<std::size_t>(written));
    else if (written == 0 || errno != EINTR)
      return setError();
  }
  return true;
}

bool File::appendRestOf(File& source) {
  // Small, because the window repaints only between two steps.
  constexpr std::size_t step = std::size_t{1} << 18;
  // This may stop before the end, and fails on some file systems. The loop below copies the rest.
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
  if (::ftruncate(descriptor_, 0) != 0 || ::lseek(descriptor_, 0, SEEK_SET) != 0) setError();
}

void File::copyTimeOf(const File& source) {
  struct stat status = {};
  if (::fstat(source.descriptor_, &status) != 0) return;
  const timespec times[] = {{0, UTIME_OMIT}, status.st_mtim};
  // Ignore failure: some memory cards and shares refuse it.
  ::futimens(descriptor_, times);
}

bool File::close() {
  if (descriptor_ < 0) return true;
  const int result = ::close(descriptor_);
  descriptor_ = -1;
  return result == 0 || setError();
}

WholeFile::WholeFile(const fs::path& path)
    : path_(path), tempPath_(tempPathFor(path)), file_(File::createNew(tempPath_)) {}

WholeFile::~WholeFile() {
  if (!committed_) ::unlink(tempPath_.c_str());
}

bool WholeFile::commit() {
  if (!file_.close() || file_.error() != 0) return false;
  committed_ = std::rename(tempPath_.c_str(), path_.c_str()) == 0;
  if (!committed_) renameError_ = errno;
  return committed_;
}

std::string_view WholeFile::targetOf(std::string_view tempName) {
  if (!tempName.starts_with('.') || !tempName.substr(1).ends_with(tempSuffix)) return {};
  return tempName.substr(1, tempName.size() - 1 - tempSuffix.size());
}

}  // namespace orvelin
