#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <functional>
#include <set>
#include <utility>

#include "builder/driver.h"
#include "support.h"

namespace {

/// How many more calls of the system succeed before one fails, or all do from then on, as when a
/// disk is full or pulled out. None fails while it is negative.
struct Patience {
  int left = -1;
  bool once = false;
  bool half = false;                // a write that fails so has put in half of its bytes
  std::function<void()> instead{};  // called in place of a failure
  int failures = 0;

  bool holds() {
    if (left != 0) {
      left -= left > 0;
      return true;
    }
    ++failures;
    if (once) left = -1;
    if (instead) instead();
    return instead != nullptr;
  }
};
Patience writes, reads;

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

namespace orvelin::test {

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
        EXPECT_TRUE(killed || !path.ends_with(".orvelin")) << path;
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
  const Patience once{0, true}, onceByHalf{0, true, true}, everByHalf{0, false, true}, ever{0};
  constexpr auto recursive = fs::copy_options::recursive, links = fs::copy_options::copy_symlinks;
  const auto copy = [&] { fs::copy(cd, folder / "killed", recursive | links); };
  for (auto [calls, way] : {std::pair{&writes, once},
                            {&writes, onceByHalf},
                            {&writes, everByHalf},
                            {&writes, Patience{0, true, false, copy}},
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

}  // namespace orvelin::test
