#include "platform/core/pictureprocess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <ctime>
#include <functional>
#include <string>
#include <utility>

#include "faults.h"
#include "platform/core/bundle.h"
#include "platform/pictures/decoder.h"

using orvelin::test::CallFaults, orvelin::test::callReplaced;

namespace {

CallFaults requests, answers, reads;

pid_t pictureProcess = 0;
bool asked = false;    // since the process was started
ssize_t answered = 0;  // the size of its last answer
orvelin::PictureAnswer* answer = nullptr;
time_t cpuSkew = 0;  // of the process's clock, in seconds

}  // namespace

time_t orvelin::test::monotonicSkew = 0;

// These replace the system calls of the program. NOLINTBEGIN(*-inconsistent-declaration-*)
extern "C" int posix_spawn(pid_t* pid, const char* path, const posix_spawn_file_actions_t* actions,
                           const posix_spawnattr_t* attributes, char* const* arguments,
                           char* const* environment) {
  asked = false;
  cpuSkew = 0;
  const int error = callReplaced<::posix_spawn>("posix_spawn", pid, path, actions, attributes,
                                                arguments, environment);
  pictureProcess = *pid;
  return error;
}
extern "C" ssize_t sendmsg(int socket, const msghdr* message, int flags) {
  requests.succeeds();  // before sending: the answer must not come first
  asked = true;
  return callReplaced<::sendmsg>("sendmsg", socket, message, flags);
}
extern "C" ssize_t recv(int socket, void* bytes, size_t count, int flags) {
  answered = callReplaced<::recv>("recv", socket, bytes, count, flags);
  answer = static_cast<orvelin::PictureAnswer*>(bytes);
  if (answered > 0 && asked) answers.succeeds();
  return answered;
}
extern "C" ssize_t pread(int file, void* bytes, size_t count, off_t at) {
  constexpr size_t max = 4000;  // less than the program reads at once
  if (reads.succeeds())
    return callReplaced<::pread>("pread", file, bytes, std::min(count, max), at);
  errno = EIO;
  return -1;
}
extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const int result = callReplaced<::clock_gettime>("clock_gettime", clock, time);
  if (clock < 0) time->tv_sec += cpuSkew;  // the clock of a process
  if (clock == CLOCK_MONOTONIC) time->tv_sec += orvelin::test::monotonicSkew;
  return result;
}
// NOLINTEND(*-inconsistent-declaration-*)

namespace orvelin::test {

using PictureProcess = Faults;

TEST_F(PictureProcess, LosesAPictureOnlyByRepeatedFaults) {
  // Stops the process. Each yield sets the clock forward by more than the limit for a process that
  // does nothing, until the next process is started.
  const auto stop = [](time_t& skew) {
    ::kill(pictureProcess, SIGSTOP);
    atYields([&, stopped = pictureProcess] { skew += stopped == pictureProcess ? 100 : 0; });
  };
  const struct {
    std::string name;
    CallFaults& calls;
    std::function<void()> fault;
    int stride = 1;  // more for similar ways and for those that take long
    int needed = 2;  // faults that cost the picture
    std::string reason = "le décodeur s’est arrêté";
  } ways[] = {
      {"killed", requests, [] { ::kill(pictureProcess, SIGKILL); }},
      {"short answer", answers, [] { --answered; }, 3},
      {"long answer", answers, [] { ++answered; }, 3},
      {"unknown verdict", answers, [] { answer->verdict = PictureVerdict(99); }, 3},
      {"wrong length", answers, [] { ++answer->jpegBytes; }, 3},
      {"stalled", requests, [&] { stop(monotonicSkew); }, 3, 2, "trop long"},
      {"out of CPU time", requests, [&] { stop(cpuSkew); }, 3, 1, "trop long"},
  };
  for (const auto& way : ways)
    for (const int times : {1, 2}) {
      const CallFaults faults{.times = times, .instead = way.fault, .stride = way.stride};
      sweep(way.name + " x " + std::to_string(times), faults, [&](const CallFaults& fault) {
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
      });
    }
}

TEST_F(PictureProcess, HasItsLimitOfCpuTimeForEachPicture) {
  // Each takes 200 s, less than the limit, but both together more. The process stops for two
  // yields, because limits are checked only during a wait.
  requests = {.left = 0, .times = 2, .instead = [] {
                ::kill(pictureProcess, SIGSTOP);
                cpuSkew += 200;
              }};
  atYields([yields = 0]() mutable {
    if (++yields % 2 == 0) ::kill(pictureProcess, SIGCONT);
  });
  for (const char* name : {"first", "second"})
    EXPECT_TRUE(item(photos / "aquarelle.png")->OpenAsPicture()) << name;
}

TEST_F(PictureProcess, DoesNotTakeAFailedReadForTheEndOfTheFile) {
  for (const std::string format : {"png", "tif", "webp", "gif", "heic", "avif", "bmp", "jpg"}) {
    SCOPED_TRACE(format);
    const std::string path = folder / ("noise." + format);
    vips::VImage::gaussnoise(400, 300).cast(VIPS_FORMAT_UCHAR).write_to_file(path.c_str());
    const auto readsOf = [&](const char* name, PictureOperation operation) {
      return sweep(name, {}, [&](const CallFaults& fault) {
        Descriptor file(::open(path.c_str(), O_RDONLY));
        reads = fault;
        const auto answer = Decoder(std::move(file)).perform(operation, [](auto) { return true; });
        const int failures = std::exchange(reads, {}).failures;
        EXPECT_EQ(answer.verdict, failures > 0 ? PictureVerdict::NotRead : PictureVerdict::Good);
        EXPECT_LE(failures, 1) << "read again after a failure";
        return failures;
      });
    };
    const int scan = readsOf("scan", PictureOperation::Decode),
              conversion = readsOf("conversion", PictureOperation::Encode);
    if (HasFailure()) return;
    EXPECT_EQ(2 * scan < conversion, format == "jpg" || format == "png")
        << "only of these the scan reads just the beginning";

    fs::resize_file(path, fs::file_size(path) * 2 / 3);
    testing::internal::CaptureStderr();
    const auto picture = item(path)->OpenAsPicture();
    const bool taken = picture && picture->decodes();
    if (taken) item(folder / format)->SaveAsJPEG(picture);
    EXPECT_EQ(taken, fs::exists(folder / format)) << "truncated";
    EXPECT_EQ(taken, std::string("jpg png gif bmp").find(format) != std::string::npos);
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find(taken ? "Image à vérifier" : "Image ignorée"), std::string::npos) << log;
  }
}

TEST_F(PictureProcess, LosesThePictureButNotTheRecordIfTheFileChangesAfterTheScan) {
  const fs::path photo = photos / "noise.jpg";
  fs::remove_all(photos);
  fs::create_directory(photos);
  vips::VImage::gaussnoise(400, 300).write_to_file(photo.c_str());
  // The fourth request is Encode.
  requests = {
      .left = 3, .times = 1, .instead = [&] { fs::resize_file(photo, fs::file_size(photo) - 1); }};
  testing::internal::CaptureStderr();
  EXPECT_TRUE(build(cd));
  requests = {};
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Orvelin\u00A0: Impossible de lire «\u00A0" + photo.string() +
                "\u00A0»\u00A0: le fichier a changé entre-temps.\n");
  EXPECT_NE(read(cd / "DIGIFILM/digifilm.txt").find("noise.jpg"), std::string::npos);
  EXPECT_EQ(treeOf(cd / "DIGIFILM/dcim"), Tree{"100k6230"});
}

TEST_F(PictureProcess, EndsTheActionIfItDoesNotStart) {
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
