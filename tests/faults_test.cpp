#include "faults.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <functional>
#include <utility>

using orvelin::test::CallFaults, orvelin::test::callReplaced;

namespace {

CallFaults writes, reads;

template <auto* function, class... Args>
auto attempt(CallFaults& faults, int error, const char* name, Args... args) {
  if (faults.succeeds()) return callReplaced<function>(name, args...);
  errno = error;
  return decltype(function(args...)){-1};
}

}  // namespace

// These replace the system calls of the program. NOLINTBEGIN(*-inconsistent-declaration-*)
extern "C" ssize_t write(int file, const void* bytes, size_t count) {
  const ssize_t written = attempt<::write>(writes, ENOSPC, "write", file, bytes, count);
  const bool half = written < 0 && writes.half && writes.failures == 1;
  return half ? callReplaced<::write>("write", file, bytes, count / 2) : written;
}
extern "C" ssize_t copy_file_range(int in, off64_t* inAt, int out, off64_t* outAt, size_t count,
                                   unsigned flags) {
  return attempt<::copy_file_range>(writes, ENOSPC, "copy_file_range", in, inAt, out, outAt, count,
                                    flags);
}
extern "C" int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): a false alarm of clang-tidy 14.
  const mode_t mode = (flags & O_CREAT) ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  if (!(flags & O_CREAT)) return callReplaced<::open>("open", path, flags);
  return attempt<::open>(writes, ENOSPC, "open", path, flags, mode);
}
extern "C" int mkdir(const char* path, mode_t mode) noexcept {
  return attempt<::mkdir>(writes, ENOSPC, "mkdir", path, mode);
}
extern "C" int rename(const char* from, const char* to) noexcept {
  return attempt<::rename>(writes, ENOSPC, "rename", from, to);
}
extern "C" int close(int file) {
  const int result = attempt<::close>(writes, EIO, "close", file);
  if (result == 0) return 0;
  // A delayed write error: half of the file is lost. The file is closed all the same.
  [[maybe_unused]] const int cut = ::ftruncate(file, ::lseek(file, 0, SEEK_CUR) / 2);
  callReplaced<::close>("close", file);
  errno = EIO;
  return result;
}
extern "C" ssize_t read(int file, void* bytes, size_t count) {
  return attempt<::read>(reads, EIO, "read", file, bytes, count);
}
// NOLINTEND(*-inconsistent-declaration-*)

namespace orvelin::test {

TEST_F(Faults, LeaveNoPartialPictures) {
  constexpr auto recursive = fs::copy_options::recursive, links = fs::copy_options::copy_symlinks;
  CallFaults yields;
  const auto once = [](std::function<void()> act) {
    return CallFaults{.times = 1, .instead = std::move(act)};
  };
  const struct {
    const char* name;
    CallFaults& calls;
    CallFaults fault;
    bool kills = false;
  } ways[] = {
      {"a write fails", writes, {.times = 1}},
      {"the disk is full", writes, {.half = true}},
      {"the program is killed", writes,
       once([&] { fs::copy(cd, folder / "killed", recursive | links); }), true},
      {"a read fails", reads, {.times = 1}},
      {"all reads fail", reads, {}},
      {"the DigiFilm is deleted", yields, once([&] { fs::remove_all(cd); })},
      {"the photographs are deleted", yields, once([&] { fs::remove_all(photos); })},
  };
  for (const auto& way : ways)
    sweep(way.name, way.fault, [&](const CallFaults& fault) {
      if (!way.kills)
        write(cd / "DIGIFILM/dcim/100k6230/002.jpg", calm.at("DIGIFILM/dcim/100k6230/003.jpg"));
      fs::create_directories(cd / "DIGIFILM");
      fs::create_symlink("nowhere", cd / "DIGIFILM/autorun.inf");
      // The number of yields depends on time: count every third.
      atYields([&, yield = 0]() mutable { ++yield % 3 == 0 && yields.succeeds(); });
      way.calls = fault;
      build(cd);
      const int failures = std::exchange(way.calls, {}).failures;
      atYields({});
      if (way.kills && failures > 0) {  // continue with the copy made at that call
        fs::remove_all(cd);
        fs::rename(folder / "killed", cd);
      }
      const bool ofWrites = &way.calls == &writes;
      if (!ofWrites) restore();
      expectNothingPartial(!ofWrites, way.kills);
      return failures;
    });
}

}  // namespace orvelin::test
