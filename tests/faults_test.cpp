#include "faults.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <functional>

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
  return int(attempt(writes, ENOSPC, SYS_renameat, AT_FDCWD, from, AT_FDCWD, to));
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

TEST_F(Faults, InSystemCallsLeaveNoPartialPictures) {
  const CallFaults ever{0}, once{0, 1}, onceByHalf{0, 1, true}, everByHalf{0, ever.times, true};
  constexpr auto recursive = fs::copy_options::recursive, links = fs::copy_options::copy_symlinks;
  const auto copy = [&] { fs::copy(cd, folder / "killed", recursive | links); };
  for (const auto& [calls, way] : {std::pair{&writes, once},
                                   {&writes, onceByHalf},
                                   {&writes, everByHalf},
                                   {&writes, CallFaults{0, 1, false, copy}},
                                   {&reads, once},
                                   {&reads, ever}})
    sweep(way, [&, calls = calls](const CallFaults& fault) {
      const bool kill = fault.instead != nullptr;
      if (!kill)
        write(cd / "DIGIFILM/dcim/100k6230/002.jpg", calm.at("DIGIFILM/dcim/100k6230/003.jpg"));
      fs::create_directories(cd / "DIGIFILM");
      fs::create_symlink("nowhere", cd / "DIGIFILM/autorun.inf");
      const int failures = buildWith(*calls, fault);
      if (kill && failures > 0) {  // continue with the copy made at that call
        fs::remove_all(cd);
        fs::rename(folder / "killed", cd);
      }
      expectNothingPartial(calls == &reads, kill);
      return failures;
    });
}

TEST_F(Faults, InFoldersDuringABuildLeaveNoPartialPictures) {
  const fs::path picture = photos / "IMG_0001.JPG";
  const std::function<void()> faults[] = {
      [&] { fs::remove_all(cd); },
      [&] { fs::rename(cd, folder / "unplugged"); },
      [&] { fs::remove_all(photos); },
      [&] { write(picture, read(sample("vacances/plage.jpg"))); },
      [&] { fs::remove(picture), ::mkfifo(picture.c_str(), 0666); },
  };
  CallFaults yields;
  for (const auto& fault : faults)
    sweep({0, 1, false, fault}, [&](const CallFaults& way) {
      atYields([&] { yields.succeeds(); });
      const int failures = buildWith(yields, way);
      atYields({});
      const bool ofPhotos = &fault >= faults + 2;
      if (ofPhotos) restore();
      expectNothingPartial(ofPhotos, false);
      fs::remove_all(folder / "unplugged");
      return failures;
    });
}

}  // namespace orvelin::test
