#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdarg>
#include <functional>
#include <random>
#include <set>
#include <thread>
#include <utility>

#include "builder/driver.h"
#include "platform/core/background.h"
#include "support.h"

namespace {

/// How many more calls of the system succeed before one fails, or all do from then on, as when a
/// disk is full or pulled out. None fails while it is negative.
struct Patience {
  int left = -1;
  bool once = false;
  bool half = false;  // a write that fails so has put in half of its bytes
  int failures = 0;

  bool holds() {
    if (left != 0) {
      left -= left > 0;
      return true;
    }
    ++failures;
    if (once) left = -1;
    return false;
  }
};
Patience writes, reads;

int failed(int error) {
  errno = error;
  return -1;
}
template <class... Args>
int call(long number, Args... args) {
  return static_cast<int>(::syscall(number, args...));
}

}  // namespace

// The program's own calls of the system come here.
extern "C" ssize_t write(int file, const void* bytes, size_t count) {
  if (writes.holds()) return ::syscall(SYS_write, file, bytes, count);
  const bool half = writes.half && writes.failures == 1;
  return half ? ::syscall(SYS_write, file, bytes, count / 2) : failed(ENOSPC);
}
extern "C" ssize_t copy_file_range(int in, off64_t* inAt, int out, off64_t* outAt, size_t count,
                                   unsigned flags) {
  return writes.holds() ? ::syscall(SYS_copy_file_range, in, inAt, out, outAt, count, flags)
                        : failed(ENOSPC);
}
extern "C" int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & O_CREAT) ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  const bool holds = !(flags & O_CREAT) || writes.holds();
  return holds ? call(SYS_openat, AT_FDCWD, path, flags, mode) : failed(ENOSPC);
}
extern "C" int mkdir(const char* path, mode_t mode) {
  return writes.holds() ? call(SYS_mkdirat, AT_FDCWD, path, mode) : failed(ENOSPC);
}
extern "C" int rename(const char* from, const char* to) {
  return writes.holds() ? call(SYS_renameat, AT_FDCWD, from, AT_FDCWD, to) : failed(ENOSPC);
}
extern "C" int close(int file) {
  if (writes.holds()) return call(SYS_close, file);
  // Only now it shows that not all could be written; the file is closed even so.
  ::ftruncate(file, ::lseek(file, 0, SEEK_CUR) / 2);
  call(SYS_close, file);
  return failed(EIO);
}
extern "C" ssize_t read(int file, void* bytes, size_t count) {
  return reads.holds() ? ::syscall(SYS_read, file, bytes, count) : failed(EIO);
}

namespace orvelin::test {

/// Builds that are disturbed, beside one that is not.
class Faults : public FileTest {
 protected:
  Faults() {
    restore();
    EXPECT_TRUE(build(folder / "calm"));
    calm = contentsOf(folder / "calm");
    for (const auto& [path, bytes] : calm) pictures.insert(bytes);
  }

  /// The photographs as they are at first.
  void restore() {
    fs::remove_all(photos);
    for (const char* name : {"IMG_0001.JPG", "IMG_0002.JPG", "vacances/plage.jpg", "aquarelle.png"})
      write(photos / name, read(sample(name)));
    for (const auto& entry : fs::recursive_directory_iterator(photos))
      setTime(entry.path(), 1'000'000'000);
    before = photographs();
  }
  /// Their names, bytes and times.
  Contents photographs() {
    Contents found = contentsOf(photos);
    found[""] = "the folder itself";
    for (auto& [path, bytes] : found)
      bytes += std::to_string(fs::last_write_time(photos / path).time_since_epoch().count());
    return found;
  }

  /// Whether a build runs to its end.
  bool build(const fs::path& destination) {
    fs::create_directories(destination);
    BuildState state{{}, item(photos), item(destination), nullptr};
    try {
      return buildDigiFilm(state);
    } catch (const NilObjectException&) {
      return false;
    }
  }

  /// Each picture is whole or absent, if under another's number where photographs have vanished,
  /// and the order file goes as far as it got. Another build then leaves what any other does.
  void expectNothingHalf(bool renumbered = false) {
    for (const char* place : {"CD", "unplugged"})
      for (const auto& [path, bytes] : contentsOf(folder / place)) {
        EXPECT_TRUE(pictures.contains(bytes) || !path.ends_with(".jpg")) << path;
        EXPECT_TRUE(killed > 0 || !path.ends_with(".orvelin")) << path;
        const std::string sure = renumbered ? bytes.substr(0, 236) : bytes;  // the header, at least
        EXPECT_TRUE(!path.ends_with("txt") || calm.at(path).starts_with(sure)) << path;
      }
    EXPECT_TRUE(build(cd));
    EXPECT_TRUE(contentsOf(cd) == calm);
    fs::remove_all(cd);
    EXPECT_TRUE(photographs() == before);
  }

  const fs::path photos = folder / "photos", cd = folder / "CD";
  Contents before, calm;
  std::set<std::string> pictures;
  int killed = 0;
};

TEST_F(Faults, OfTheDiskAtAnyWriteOrReadLeaveNothingHalf) {
  const Patience once{0, true}, onceByHalf{0, true, true}, everByHalf{0, false, true}, ever{0};
  for (auto [calls, way] : {std::pair{&writes, once},
                            {&writes, onceByHalf},
                            {&writes, everByHalf},
                            {&reads, once},
                            {&reads, ever}}) {
    for (int failures = 1; failures > 0; ++way.left) {
      SCOPED_TRACE(way.left);
      write(cd / "DIGIFILM/dcim/100k6230/002.jpg", calm.at("DIGIFILM/dcim/100k6230/003.jpg"));
      *calls = way;
      build(cd);
      failures = std::exchange(*calls, {}).failures;
      expectNothingHalf(calls == &reads);
    }
    EXPECT_GT(way.left, 20) << "there are calls to fail";
  }
  EXPECT_FALSE(build("/proc")) << "where nothing can be made";
}

TEST_F(Faults, OfThePlacesWhileABuildRunsLeaveNothingHalf) {
  static int patience;
  static std::function<void()> fault;
  const fs::path picture = photos / "IMG_0001.JPG";
  const std::function<void()> faults[] = {
      [&] { fs::remove_all(cd); },
      [&] { fs::rename(cd, folder / "unplugged"); },
      [&] { fs::remove_all(photos); },
      [&] { fs::remove(picture); },
      [&] { write(picture, read(sample("vacances/plage.jpg"))); },
      [&] { write(picture, "no picture any more"); },
      [&] { fs::resize_file(picture, 100); },
      [&] { fs::remove(picture), ::mkfifo(picture.c_str(), 0666); },
      [&] { fs::remove(picture), fs::create_symlink("/dev/zero", picture); },
      [&] { fs::remove(picture), fs::create_directory(picture); },
  };
  for (const auto& each : faults) {
    int moment = 0;
    for (int left = -1; left < 0; ++moment) {
      SCOPED_TRACE(std::to_string(&each - faults) + ", at yield " + std::to_string(moment));
      patience = moment;
      fault = each;
      installBackgroundTask([] {
        if (patience-- == 0) fault();
      });
      build(cd);
      installBackgroundTask(nullptr);
      left = patience;
      const bool ofPhotos = &each >= faults + 2;
      if (ofPhotos) restore();
      expectNothingHalf(ofPhotos);
      fs::remove_all(folder / "unplugged");
    }
    EXPECT_GT(moment, 10) << "there are yields";
  }
}

TEST_F(Faults, ThatKillTheProgramLeaveNothingHalf) {
  std::string work = ORVELIN_WORK, task = "build", from = photos, to = cd;
  char* const arguments[] = {work.data(), task.data(), from.data(), to.data(), nullptr};
  std::mt19937 random(1);
  double longest = 0.05;
  for (int i = 0; i < 100; ++i) {
    fs::create_directory(cd);
    pid_t process = 0;
    ASSERT_EQ(::posix_spawn(&process, work.c_str(), nullptr, nullptr, arguments, environ), 0);
    const double time = std::uniform_real_distribution(0.0, longest)(random);
    std::this_thread::sleep_for(std::chrono::duration<double>(time));
    ::kill(process, SIGKILL);
    int status = 0;
    ::waitpid(process, &status, 0);
    // Settles where about a third of the builds are done in time, whatever the machine.
    killed += WIFSIGNALED(status);
    longest *= WIFSIGNALED(status) ? 1.1 : 0.8;
    expectNothingHalf();
  }
  EXPECT_GT(killed, 20);
}

}  // namespace orvelin::test
