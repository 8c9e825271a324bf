#include "faults.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <functional>
#include <utility>

using orvelin::test::CallFaults;

namespace {

CallFaults writes, reads;

template <class... Args>
ssize_t attempt(CallFaults& faults, int error, long number, Args... args) {
  if (faults.succeeds()) return ::syscall(number, args...);
  errno = error;
  return -1;
}

}  // namespace

// These replace the system calls of the program. NOLINTBEGIN(*-inconsistent-declaration-*)
extern "C" ssize_t write(int file, const void* bytes, size_t count) {
  const ssize_t written = attempt(writes, ENOSPC, SYS_write, file, bytes, count);
  const bool half = written < 0 && writes.half && writes.failures == 1;
  return half ? ::syscall(SYS_write, file, bytes, count / 2) : written;
}
extern "C" ssize_t copy_file_range(int in, off64_t* inAt, int out, off64_t* outAt, size_t count,
                                   unsigned flags) {
  return attempt(writes, ENOSPC, SYS_copy_file_range, in, inAt, out, outAt, count, flags);
}
extern "C" int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): a false alarm of clang-tidy 14.
  const mode_t mode = (flags & O_CREAT) ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  if (mode == 0) return int(::syscall(SYS_openat, AT_FDCWD, path, flags));
  return int(attempt(writes, ENOSPC, SYS_openat, AT_FDCWD, path, flags, mode));
}
extern "C" int mkdir(const char* path, mode_t mode) {
  return int(attempt(writes, ENOSPC, SYS_mkdirat, AT_FDCWD, path, mode));
}
extern "C" int rename(const char* from, const char* to) {
  return int(attempt(writes, ENOSPC, SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}
extern "C" int close(int file) {
  const int result = int(attempt(writes, EIO, SYS_close, file));
  if (result == 0) return 0;
  // A delayed write error: half of the file is lost. The file is closed all the same.
  [[maybe_unused]] const int cut = ::ftruncate(file, ::lseek(file, 0, SEEK_CUR) / 2);
  ::syscall(SYS_close, file);
  errno = EIO;
  return result;
}
extern "C" ssize_t read(int file, void* bytes, size_t count) {
  return attempt(reads, EIO, SYS_read, file, bytes, count);
}
// NOLINTEND(*-inconsistent-declaration-*)

namespace orvelin::test {

TEST_F(Faults, LeaveNoPartialPictures) {
  constexpr auto recursive = fs::copy_options::recursive, links = fs::copy_options::copy_symlinks;
  const fs::path picture = photos / "IMG_0001.JPG";
  CallFaults yields;
  const auto once = [](std::function<void()> act) {
    return CallFaults{.times = 1, .instead = std::move(act)};
  };
  const std::pair<CallFaults&, CallFaults> faults[] = {
      {writes, {.times = 1}},
      {writes, {.half = true}},
      {writes, once([&] { fs::copy(cd, folder / "killed", recursive | links); })},
      {reads, {.times = 1}},
      {reads, {}},
      {yields, once([&] { fs::remove_all(cd); })},
      {yields, once([&] { fs::remove_all(photos); })},
      {yields, once([&] { fs::remove(picture), ::mkfifo(picture.c_str(), 0666); })},
  };
  for (const auto& [calls, way] : faults)
    sweep(way, [&, &calls = calls](const CallFaults& fault) {
      const bool ofWrites = &calls == &writes, mayKill = ofWrites && fault.instead;
      if (!mayKill)
        write(cd / "DIGIFILM/dcim/100k6230/002.jpg", calm.at("DIGIFILM/dcim/100k6230/003.jpg"));
      fs::create_directories(cd / "DIGIFILM");
      fs::create_symlink("nowhere", cd / "DIGIFILM/autorun.inf");
      // The number of yields depends on time: count every third.
      atYields([&, yield = 0]() mutable { ++yield % 3 == 0 && yields.succeeds(); });
      calls = fault;
      build(cd);
      const int failures = std::exchange(calls, {}).failures;
      atYields({});
      if (fs::exists(folder / "killed")) {  // continue with the copy made at that call
        fs::remove_all(cd);
        fs::rename(folder / "killed", cd);
      }
      if (!ofWrites) restore();
      expectNothingPartial(!ofWrites, mayKill);
      return failures;
    });
}

}  // namespace orvelin::test
