#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <ctime>
#include <functional>
#include <set>
#include <utility>

#include "builder/driver.h"
#include "platform/core/bundle.h"
#include "platform/core/pictureprocess.h"
#include "support.h"

namespace {

/// How many more calls of the system succeed before one fails, or all do from then on, as when a
/// disk is full or pulled out. None fails while it is negative.
struct Patience {
  int left = -1;
  int times = 1 << 30;              // how many fail then
  bool half = false;                // a write that fails so has put in half of its bytes
  std::function<void()> instead{};  // called in place of a failure
  int failures = 0;

  bool holds() {
    if (left != 0) {
      left -= left > 0;
      return true;
    }
    ++failures;
    if (--times == 0) left = -1;
    if (instead) instead();
    return instead != nullptr;
  }
};
Patience writes, reads, requests, answers;

pid_t pictureProcess = 0;
bool asked = false;        // after it was started
clockid_t hurriedClock{};  // each call finds it 100 seconds further
bool hurried = false;
time_t skews[2];  // of the clock, and of the process's

template <class... Args>
ssize_t attempt(Patience& patience, int error, long number, Args... args) {
  if (patience.holds()) return ::syscall(number, args...);
  errno = error;
  return -1;
}

}  // namespace

// The program's own calls of the system come here.
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
  // Only now it shows that not all could be written; the file is closed even so.
  ::ftruncate(file, ::lseek(file, 0, SEEK_CUR) / 2);
  ::syscall(SYS_close, file);
  errno = EIO;
  return result;
}
extern "C" ssize_t read(int file, void* bytes, size_t count) {
  return attempt(reads, EIO, SYS_read, file, bytes, count);
}

extern "C" int posix_spawn(pid_t* pid, const char* path, const posix_spawn_file_actions_t* actions,
                           const posix_spawnattr_t* attributes, char* const* arguments,
                           char* const* environment) {
  static const auto next =
      reinterpret_cast<decltype(&posix_spawn)>(::dlsym(RTLD_NEXT, "posix_spawn"));
  const int error = next(pid, path, actions, attributes, arguments, environment);
  pictureProcess = *pid;
  asked = hurried = false;
  skews[1] = 0;
  return error;
}
extern "C" ssize_t sendmsg(int socket, const msghdr* message, int flags) {
  requests.holds();  // first, or the answer may already be on its way
  asked = true;
  return ::syscall(SYS_sendmsg, socket, message, flags);
}
extern "C" ssize_t recv(int socket, void* bytes, size_t count, int flags) {
  const ssize_t got = ::syscall(SYS_recvfrom, socket, bytes, count, flags, nullptr, nullptr);
  if (got < 0 || !asked || answers.holds()) return got;
  auto& answer = *static_cast<orvelin::PictureAnswer*>(bytes);
  static int falsified = 0;
  switch (++falsified % 4) {
    case 0:
      return got - 1;
    case 1:
      return got + 1;
    case 2:
      answer.verdict = orvelin::PictureVerdict(99);
      return got;
    default:
      ++answer.jpegBytes;
      return got;
  }
}
extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const auto result = int(::syscall(SYS_clock_gettime, clock, time));
  const bool ofProcess = clock < 0;
  if (!ofProcess && clock != CLOCK_MONOTONIC) return result;
  if (hurried && ofProcess == (hurriedClock < 0)) skews[ofProcess] += 100;
  time->tv_sec += skews[ofProcess];
  return result;
}

namespace orvelin::test {

using namespace std::string_literals;

/// Builds that are disturbed, compared with one that is not.
class Faults : public FileTest {
 protected:
  Faults() {
    restore();
    EXPECT_TRUE(build(folder / "calm"));
    calm = contentsOf(folder / "calm");
    for (const auto& [path, bytes] : calm) pictures.insert(bytes);
  }

  /// Puts the photographs in place as they are at first.
  void restore() {
    fs::remove_all(photos);
    for (const char* name :
         {"IMG_0001.JPG", "IMG_0002.JPG", "vacances/plage.jpg", "aquarelle.png"}) {
      write(photos / name, read(sample(name)));
      setTime(photos / name, 1'000'000'000);
    }
    before = contentsOf(photos);
  }

  /// Whether a build runs to its end.
  bool build(const fs::path& destination) try {
    fs::create_directories(destination);
    BuildState state{{}, item(photos), item(destination), nullptr};
    return buildDigiFilm(state);
  } catch (const NilObjectException&) {
    return false;
  }

  /// Each picture is whole or absent, if under another's number where photographs have vanished,
  /// and the order file goes as far as it got: a kill costs at most the last picture's record.
  /// Another build then leaves what any other does.
  void expectNothingHalf(bool renumbered, bool killed) {
    for (const char* place : {"CD", "unplugged"})
      for (const auto& [path, bytes] : contentsOf(folder / place)) {
        EXPECT_TRUE(pictures.contains(bytes) || !path.ends_with(".jpg")) << path;
        const bool known = killed || place == "unplugged"s;  // that a picture is unfinished
        EXPECT_TRUE(known || !path.ends_with(".orvelin")) << path;
        const std::string sure = renumbered ? bytes.substr(0, 236) : bytes;  // the header, at least
        EXPECT_TRUE(!path.ends_with("txt") || calm.at(path).starts_with(sure)) << path;
      }
    const std::string order = read(cd / "DIGIFILM/digifilm.txt"), place = "dcim/100k6230/00";
    for (char number = '1'; killed && number < '4'; ++number)
      EXPECT_TRUE(order.find(place + number) != std::string::npos ||
                  !fs::exists(cd / "DIGIFILM" / (place + char(number + 1) + ".jpg")));
    EXPECT_TRUE(build(cd));
    EXPECT_TRUE(contentsOf(cd) == calm);
    fs::remove_all(cd);
    EXPECT_TRUE(contentsOf(photos) == before);
  }

  const fs::path photos = folder / "photos", cd = folder / "CD";
  Contents before, calm;
  std::set<std::string> pictures;
};

TEST_F(Faults, OfTheDiskOrTheProgramAtAnyWriteOrReadLeaveNothingHalf) {
  const Patience ever{0}, once{0, 1}, onceByHalf{0, 1, true}, everByHalf{0, ever.times, true};
  constexpr auto recursive = fs::copy_options::recursive, links = fs::copy_options::copy_symlinks;
  const auto copy = [&] { fs::copy(cd, folder / "killed", recursive | links); };
  for (auto [calls, way] : {std::pair{&writes, once},
                            {&writes, onceByHalf},
                            {&writes, everByHalf},
                            {&writes, Patience{0, 1, false, copy}},
                            {&reads, once},
                            {&reads, ever}}) {
    for (int failures = 1; failures > 0; ++way.left) {
      SCOPED_TRACE(way.left);
      const bool kill = way.instead != nullptr;
      if (!kill)
        write(cd / "DIGIFILM/dcim/100k6230/002.jpg", calm.at("DIGIFILM/dcim/100k6230/003.jpg"));
      fs::create_directories(cd / "DIGIFILM");
      fs::create_symlink("nowhere", cd / "DIGIFILM/autorun.inf");  // to be replaced
      *calls = way;
      build(cd);
      failures = std::exchange(*calls, {}).failures;
      if (kill && failures > 0) {  // what a program killed there leaves
        fs::remove_all(cd);
        fs::rename(folder / "killed", cd);
      }
      expectNothingHalf(calls == &reads, kill);
    }
    EXPECT_GT(way.left, 20) << "there are calls to fail";
  }
}

TEST_F(Faults, OfThePlacesWhileABuildRunsLeaveNothingHalf) {
  const fs::path picture = photos / "IMG_0001.JPG";
  const std::function<void()> faults[] = {
      [&] { fs::remove_all(cd); },
      [&] { fs::rename(cd, folder / "unplugged"); },
      [&] { fs::remove_all(photos); },
      [&] { write(picture, read(sample("vacances/plage.jpg"))); },
      [&] { fs::remove(picture), ::mkfifo(picture.c_str(), 0666); },
  };
  for (const auto& fault : faults) {
    int moment = 0;
    for (int left = -1; left < 0; ++moment) {
      SCOPED_TRACE(std::to_string(&fault - faults) + ", at yield " + std::to_string(moment));
      left = moment;
      atYields([&] {
        if (left-- == 0) fault();
      });
      build(cd);
      atYields({});
      const bool ofPhotos = &fault >= faults + 2;
      if (ofPhotos) restore();
      expectNothingHalf(ofPhotos, false);
      fs::remove_all(folder / "unplugged");
    }
    EXPECT_GT(moment, 10) << "there are yields";
  }
}

TEST_F(Faults, OfThePictureProcessCostNothingOnceAndOnePictureTheSecondTime) {
  const auto kill = [] { ::kill(pictureProcess, SIGKILL); };
  const auto stop = [](clockid_t clock) {
    ::kill(pictureProcess, SIGSTOP);
    hurriedClock = clock;
    hurried = true;
  };
  const struct {
    Patience& calls;
    std::function<void()> fault;
    std::string reason;
    int needed = 2;  // how many times it costs the picture
    int step = 1;
  } ways[] = {{requests, kill, "le décodeur s'est arrêté"},
              {answers, nullptr, "le décodeur s'est arrêté"},
              {requests, [&] { stop(CLOCK_MONOTONIC); }, "trop long", 2, 3},
              {requests, [&] { stop(-2); }, "trop long", 1, 3}};
  for (const auto& way : ways)
    for (int times = 1; times <= 2; ++times) {
      int moment = 0;
      for (int failures = 1; failures > 0; moment += way.step) {
        SCOPED_TRACE(std::to_string(&way - ways) + ", request " + std::to_string(moment));
        way.calls = {moment, times, false, way.fault};
        testing::internal::CaptureStderr();
        EXPECT_TRUE(build(cd));
        const std::string log = testing::internal::GetCapturedStderr();
        failures = std::exchange(way.calls, {}).failures;
        if (failures < way.needed) {
          EXPECT_EQ(log, "");
          EXPECT_TRUE(contentsOf(cd) == calm);
        } else {
          EXPECT_EQ(std::ranges::count(log, '\n'), failures / way.needed) << log;
          EXPECT_NE(log.find(way.reason), std::string::npos) << log;
        }
        expectNothingHalf(true, false);
      }
      EXPECT_GT(moment, 12) << "there are requests";
    }
}

TEST_F(Faults, OfTheStartOfThePictureProcessEndTheAction) {
  const fs::path program = bundleFolder() / "Contents/Linux/orvelin-pictures",
                 away = folder / "away";
  endPictureProcess();
  fs::copy(program, away);
  fs::remove(program);
  EXPECT_THROW(item(photos / "aquarelle.png")->OpenAsPicture(), NilObjectException);
  fs::create_symlink("/bin/true", program);
  EXPECT_THROW(item(photos / "aquarelle.png")->OpenAsPicture(), NilObjectException);
  fs::remove(program);
  fs::copy(away, program);
  EXPECT_TRUE(item(photos / "aquarelle.png")->OpenAsPicture());
}

}  // namespace orvelin::test
