#include <dlfcn.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <functional>
#include <random>
#include <thread>
#include <utility>

#include "builder/driver.h"
#include "platform/core/background.h"
#include "support.h"

namespace {

/// How many more calls of the system succeed; from then on they fail, as they do when a disk is
/// full or pulled out. All of them while it is negative.
struct Patience {
  int left = -1;
  bool holds() { return left < 0 || left-- > 0 || (left = 0) > 0; }
};
Patience writes, reads;

template <class Call>
Call* systems(const char* name) {
  return reinterpret_cast<Call*>(::dlsym(RTLD_NEXT, name));
}

ssize_t failed(int error) {
  errno = error;
  return -1;
}

}  // namespace

// The program's own calls of the system come here first.
extern "C" ssize_t write(int file, const void* bytes, size_t count) {
  static const auto write = systems<decltype(::write)>("write");
  return writes.holds() ? write(file, bytes, count) : failed(ENOSPC);
}
extern "C" int mkdir(const char* path, mode_t mode) {
  static const auto mkdir = systems<decltype(::mkdir)>("mkdir");
  return writes.holds() ? mkdir(path, mode) : static_cast<int>(failed(ENOSPC));
}
extern "C" ssize_t copy_file_range(int in, off64_t* inAt, int out, off64_t* outAt, size_t count,
                                   unsigned flags) {
  static const auto copy = systems<decltype(::copy_file_range)>("copy_file_range");
  return writes.holds() ? copy(in, inAt, out, outAt, count, flags) : failed(ENOSPC);
}
extern "C" ssize_t read(int file, void* bytes, size_t count) {
  static const auto read = systems<decltype(::read)>("read");
  return reads.holds() ? read(file, bytes, count) : failed(EIO);
}

namespace orvelin::test {

/// Builds that are disturbed, beside one that is not.
class Faults : public FileTest {
 protected:
  Faults() {
    for (const char* name : {"IMG_0001.JPG", "IMG_0002.JPG", "vacances/plage.jpg", "aquarelle.png"})
      write(photos / name, read(sample(name)));
    before = contentsOf(photos);
    restore();
    EXPECT_TRUE(build(folder / "calm"));
    calm = contentsOf(folder / "calm");
  }

  /// The photographs as they were at first.
  void restore() {
    fs::remove_all(photos);
    for (const auto& [name, file] : before)
      if (!file.empty()) {
        write(photos / name, file.substr(5));
        setTime(photos / name, 1'000'000'000);
        modified = item(photos / name)->ModificationDate().TotalSeconds();
      }
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
      for (const auto& [path, file] : contentsOf(folder / place)) {
        const bool same = std::any_of(calm.begin(), calm.end(),
                                      [&](const auto& entry) { return entry.second == file; });
        EXPECT_TRUE(same || !path.ends_with(".jpg")) << path;
        EXPECT_TRUE(killed > 0 || !path.ends_with(".orvelin")) << path;
        EXPECT_TRUE(renumbered || !path.ends_with("txt") || calm.at(path).starts_with(file));
      }
    EXPECT_TRUE(build(cd));
    EXPECT_EQ(contentsOf(cd), calm);
    fs::remove_all(cd);
    EXPECT_EQ(contentsOf(photos), before);
    for (const auto& [name, file] : before)
      if (!file.empty()) {
        EXPECT_EQ(item(photos / name)->ModificationDate().TotalSeconds(), modified);
      }
  }

  const fs::path photos = folder / "photos", cd = folder / "CD";
  Contents before, calm;
  double modified = 0;
  int killed = 0;
};

TEST_F(Faults, OfTheDiskAtAnyWriteOrReadLeaveNothingHalf) {
  for (Patience* calls : {&writes, &reads})
    for (int patience = 0, left = 0; left == 0; ++patience) {
      SCOPED_TRACE(patience);
      write(cd / "DIGIFILM/dcim/100k6230/002.jpg",
            calm.at("DIGIFILM/dcim/100k6230/003.jpg").substr(5));
      calls->left = patience;
      build(cd);
      left = std::exchange(calls->left, -1);
      expectNothingHalf(calls == &reads);
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
  for (const auto& each : faults)
    for (int moment = 0, left = -1; left < 0; ++moment) {
      SCOPED_TRACE(std::to_string(&each - faults) + ", at yield " + std::to_string(moment));
      patience = moment;
      fault = each;
      installBackgroundTask([] {
        if (patience-- == 0) fault();
      });
      build(cd);
      installBackgroundTask(nullptr);
      left = patience;
      restore();
      expectNothingHalf(true);
      fs::remove_all(folder / "unplugged");
    }
}

TEST_F(Faults, ThatKillTheProgramLeaveNothingHalf) {
  std::string work = ORVELIN_WORK, task = "build", from = photos, to = cd;
  char* const arguments[] = {work.data(), task.data(), from.data(), to.data(), nullptr};
  std::mt19937 random(std::random_device{}());
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
