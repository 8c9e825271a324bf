#include "platform/core/pictureprocess.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <ctime>
#include <functional>
#include <utility>

#include "faults.h"
#include "platform/core/bundle.h"
#include "platform/pictures/decoder.h"

using orvelin::test::CallFaults;

namespace {

CallFaults requests, answers, reads;

pid_t pictureProcess = 0;
bool asked = false;       // since the process was started
clockid_t fastClock = 0;  // if not 0, advances by 100 seconds at each call
time_t skews[2];          // of the monotonic clock and the CPU clock

}  // namespace

// These replace the system calls of the program. NOLINTBEGIN(*-inconsistent-declaration-*)
extern "C" int posix_spawn(pid_t* pid, const char* path, const posix_spawn_file_actions_t* actions,
                           const posix_spawnattr_t* attributes, char* const* arguments,
                           char* const* environment) {
  static const auto next =
      reinterpret_cast<decltype(&posix_spawn)>(::dlsym(RTLD_NEXT, "posix_spawn"));
  const int error = next(pid, path, actions, attributes, arguments, environment);
  pictureProcess = *pid;
  asked = false;
  fastClock = 0;
  skews[1] = 0;
  return error;
}
extern "C" ssize_t sendmsg(int socket, const msghdr* message, int flags) {
  requests.succeeds();  // before sending: the answer must not come first
  asked = true;
  return ::syscall(SYS_sendmsg, socket, message, flags);
}
extern "C" ssize_t recv(int socket, void* bytes, size_t count, int flags) {
  const ssize_t got = ::syscall(SYS_recvfrom, socket, bytes, count, flags, nullptr, nullptr);
  if (got < 0 || !asked || answers.succeeds()) return got;
  auto& answer = *static_cast<orvelin::PictureAnswer*>(bytes);
  static int falsified = 0;
  const int kind = ++falsified % 4;
  if (kind < 2) return got + (kind == 0 ? -1 : 1);
  if (kind == 2) answer.verdict = orvelin::PictureVerdict(99);
  if (kind == 3) ++answer.jpegBytes;
  return got;
}
extern "C" ssize_t pread(int file, void* bytes, size_t count, off_t at) {
  constexpr size_t max = 6000;
  if (reads.succeeds()) return ::syscall(SYS_pread64, file, bytes, std::min(count, max), at);
  errno = EIO;
  return -1;
}
extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const auto result = int(::syscall(SYS_clock_gettime, clock, time));
  const bool ofProcess = clock < 0;
  if (!ofProcess && clock != CLOCK_MONOTONIC) return result;
  if (fastClock != 0 && ofProcess == (fastClock < 0)) skews[ofProcess] += 100;
  time->tv_sec += skews[ofProcess];
  return result;
}
// NOLINTEND(*-inconsistent-declaration-*)

namespace orvelin::test {

TEST_F(Faults, InThePictureProcessCostAPictureOnlyIfRepeated) {
  const auto kill = [] { ::kill(pictureProcess, SIGKILL); };
  const auto stop = [](clockid_t clock) {
    ::kill(pictureProcess, SIGSTOP);
    fastClock = clock;
  };
  const struct {
    CallFaults& calls;
    std::function<void()> fault;
    std::string reason;
    int needed = 2;  // faults that cost the picture
    int step = 1;
  } ways[] = {{requests, kill, "le décodeur s’est arrêté"},
              {answers, nullptr, "le décodeur s’est arrêté"},
              {requests, [&] { stop(CLOCK_MONOTONIC); }, "trop long", 2, 3},
              {requests, [&] { stop(-2); }, "trop long", 1, 3}};
  for (const auto& way : ways)
    for (int times = 1; times <= 2; ++times)
      sweep(
          {0, times, false, way.fault},
          [&](const CallFaults& fault) {
            way.calls = fault;
            testing::internal::CaptureStderr();
            EXPECT_TRUE(build(cd));
            const std::string log = testing::internal::GetCapturedStderr();
            const int failures = std::exchange(way.calls, {}).failures;
            const int lost = failures / way.needed;
            EXPECT_EQ(std::ranges::count(log, '\n'), lost) << log;
            EXPECT_TRUE(lost == 0 || log.find(way.reason) != std::string::npos) << log;
            EXPECT_EQ(contentsOf(cd) == calm, lost == 0);
            expectNothingPartial(true, false);
            return failures;
          },
          way.step);
}

TEST_F(Faults, InReadsAreNotTakenForTheEndOfTheFile) {
  for (const std::string format : {"png", "tif", "webp", "gif", "heic", "avif", "bmp", "jpg"}) {
    const std::string path = folder / ("noise." + format);
    vips::VImage::gaussnoise(400, 300).cast(VIPS_FORMAT_UCHAR).write_to_file(path.c_str());
    const std::string bytes = read(path);
    int counts[2];
    for (const auto operation : {PictureOperation::Decode, PictureOperation::Encode}) {
      int left = 0;
      for (int failures = 1; failures > 0; ++left) {
        SCOPED_TRACE(format + ", read " + std::to_string(left));
        Descriptor file(::open(path.c_str(), O_RDONLY));
        reads = {left};
        const auto verdict =
            Decoder(std::move(file)).perform(operation, [](auto) { return true; }).verdict;
        failures = std::exchange(reads, {}).failures;
        EXPECT_EQ(verdict, failures > 0 ? PictureVerdict::NotRead : PictureVerdict::Good);
        EXPECT_LE(failures, 1) << "no read after a failure";
      }
      EXPECT_GT(left, 3) << "too few reads";
      counts[operation == PictureOperation::Encode] = left;
    }
    EXPECT_EQ(2 * counts[0] < counts[1], format == "jpg" || format == "png")
        << "the scan reads only the beginning";

    write(path, bytes.substr(0, bytes.size() * 2 / 3));
    testing::internal::CaptureStderr();
    const auto picture = item(path)->OpenAsPicture();
    const bool taken = picture && picture->decodes();
    if (taken) item(folder / format)->SaveAsJPEG(picture);
    EXPECT_EQ(taken, fs::exists(folder / format)) << format;
    EXPECT_EQ(taken, std::string("jpg png gif bmp").find(format) != std::string::npos) << format;
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find(taken ? "Image à vérifier" : "Image ignorée"), std::string::npos) << format;
  }
}

TEST_F(Faults, AfterTheScanCostThePictureButNotItsRecord) {
  const fs::path photo = photos / "noise.jpg";
  fs::remove_all(photos);
  fs::create_directory(photos);
  vips::VImage::gaussnoise(400, 300).write_to_file(photo.c_str());
  // The fourth request is Encode.
  requests = {3, 1, false, [&] { fs::resize_file(photo, fs::file_size(photo) - 1); }};
  testing::internal::CaptureStderr();
  EXPECT_TRUE(build(cd));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Orvelin\u00A0: Impossible de lire «\u00A0" + photo.string() +
                "\u00A0»\u00A0: le fichier a changé entre-temps.\n");
  EXPECT_NE(read(cd / "DIGIFILM/digifilm.txt").find("noise.jpg"), std::string::npos);
  EXPECT_EQ(treeOf(cd / "DIGIFILM/dcim"), Tree{"100k6230"});
}

TEST_F(Faults, InStartingThePictureProcessEndTheAction) {
  const fs::path program = bundleFolder() / "Contents/Linux/orvelin-pictures",
                 away = program.string() + ".away";
  endPictureProcess();
  fs::rename(program, away);
  EXPECT_THROW(item(photos / "aquarelle.png")->OpenAsPicture(), NilObjectException);
  fs::create_symlink("/bin/true", program);
  EXPECT_THROW(item(photos / "aquarelle.png")->OpenAsPicture(), NilObjectException);
  fs::rename(away, program);
  EXPECT_TRUE(item(photos / "aquarelle.png")->OpenAsPicture());
}

}  // namespace orvelin::test
