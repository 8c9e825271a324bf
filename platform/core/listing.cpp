#include "platform/core/listing.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <memory>

#include "platform/core/failure.h"

namespace orvelin {

Listing::Listing(std::filesystem::path folder)
    : folder_(std::move(folder)), changed_(changeTime()) {
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(::opendir(folder_.c_str()), ::closedir);
  int error = stream ? 0 : errno;
  while (stream) {
    errno = 0;
    const dirent* entry = ::readdir(stream.get());
    if (!entry) {
      error = errno;
      break;
    }
    std::string name = entry->d_name;
    if (name != "." && name != "..") names_.push_back(std::move(name));
  }
  if (error) {
    changed_.reset();
    report(Failure::ofSystem("Impossible de parcourir le dossier", folder_, error));
  }
  std::ranges::sort(names_);
}

bool Listing::isCurrent() const { return changed_ && changed_ == changeTime(); }

std::optional<Listing::Time> Listing::changeTime() const {
  constexpr std::int64_t maxClockStep = 2;  // seconds, on FAT
  struct statx status = {};
  if (::statx(AT_FDCWD, folder_.c_str(), 0, STATX_CTIME, &status) != 0) return {};
  if (std::abs(std::time(nullptr) - status.stx_ctime.tv_sec) <= maxClockStep) return {};
  return Time{status.stx_ctime.tv_sec, status.stx_ctime.tv_nsec};
}

}  // namespace orvelin
