#include "platform/core/pictureprocess.h"

#include <dlfcn.h>
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

using orvelin::test::CallFaults;

namespace {

CallFaults requests, answers;

pid_t pictureProcess = 0;
bool asked = false;        // after it was started
clockid_t hurriedClock{};  // each call finds it 100 seconds further
bool hurried = false;
time_t skews[2];  // of the clock, and of the process's

}  // namespace

// The program's own calls of the system come here.
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
  requests.succeeds();  // first, or the answer may already be on its way
  asked = true;
  return ::syscall(SYS_sendmsg, socket, message, flags);
}
extern "C" ssize_t recv(int socket, void* bytes, size_t count, int flags) {
  const ssize_t got = ::syscall(SYS_recvfrom, socket, bytes, count, flags, nullptr, nullptr);
  if (got < 0 || !asked || answers.succeeds()) return got;
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

TEST_F(Faults, OfThePictureProcessCostNothingOnceAndOnePictureTheSecondTime) {
  const auto kill = [] { ::kill(pictureProcess, SIGKILL); };
  const auto stop = [](clockid_t clock) {
    ::kill(pictureProcess, SIGSTOP);
    hurriedClock = clock;
    hurried = true;
  };
  const struct {
    CallFaults& calls;
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
