#include "platform/core/devicesync.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "faults.h"
#include "platform/core/standardstreams.h"

using orvelin::test::callReplaced;

namespace {

std::function<int()> atSyncfs, atFsync;  // in the child; these return an `errno` value
std::function<void()> atFork;            // in this program, which then waits for the child to end

template <auto* function>
int attempt(const std::function<int()>& fault, const char* name, int file) {
  errno = fault ? fault() : 0;
  return errno == 0 ? callReplaced<function>(name, file) : -1;
}

}  // namespace

// These replace the system calls of the program. NOLINTBEGIN(*-inconsistent-declaration-*)
extern "C" pid_t fork() noexcept {
  if (!atFork) return callReplaced<::fork>("fork");
  atFork();
  const pid_t child = callReplaced<::fork>("fork");
  if (child > 0) ::waitid(P_PID, static_cast<id_t>(child), nullptr, WEXITED | WNOWAIT);
  return child;
}
extern "C" int syncfs(int file) noexcept { return attempt<::syncfs>(atSyncfs, "syncfs", file); }
extern "C" int fsync(int file) { return attempt<::fsync>(atFsync, "fsync", file); }
// NOLINTEND(*-inconsistent-declaration-*)

namespace orvelin::test {

class Device : public Faults {
 protected:
  void TearDown() override {
    atSyncfs = atFsync = nullptr;
    atFork = nullptr;
    Faults::TearDown();
    inFolder("umount -l CD store");  // a child may still use it
  }
  /// Runs a shell command. Returns whether it succeeds.
  bool inFolder(const std::string& command) {
    return std::system(("cd '" + folder.string() + "' && exec 2>log; " + command).c_str()) == 0;
  }
  /// Mounts a device at `cd` that stores at most 4 MB but accepts 100. Returns whether it could.
  bool mountSmallDevice() {
    return inFolder(
        "set -e; mkdir -p CD store; mount -t tmpfs -o size=4m none store; cd store; "
        "truncate -s 100M image; mkfs.ext4 -q -O ^has_journal image; mount image ../CD");
  }
  /// Why a build fails; empty if it succeeds.
  std::string failureOfBuild() try {
    fs::create_directories(cd);
    std::signal(SIGCHLD, SIG_IGN);  // as if the program had been started so
    secureStandardStreams();
    BuildState state(item(photos), item(cd));
    buildDigiFilm(state);
    return "";
  } catch (const NilObjectException& failure) {
    return failure.what();
  }
  bool allIsWritten() { return fs::exists(cd / "DIGIFILM/ORVELIN"); }
};

TEST_F(Device, ErrorsEndTheBuild) {
  const struct {
    std::string name;
    std::function<int()> fault;
    std::string reason;  // empty if the build succeeds
  } cases[] = {
      {"EIO", [] { return EIO; }, "le disque ne répond pas correctement"},
      {"a killed child", [] { return std::raise(SIGKILL); }, "l’opération a été interrompue"},
      {"ENOSYS", [] { return ENOSYS; }, ""},
      {"EOPNOTSUPP", [] { return EOPNOTSUPP; }, ""},
      {"EINVAL", [] { return EINVAL; }, ""},
  };
  for (const auto& [name, fault, reason] : cases)
    for (const std::string when : {"early", "last", "from fsync"}) {
      SCOPED_TRACE(testing::Message() << name << ' ' << when);
      atFsync = when == "from fsync" ? fault : nullptr;
      atFork = [&, &error = fault] {
        atSyncfs = when == (allIsWritten() ? "last" : "early") ? error : nullptr;
      };
      const std::string failure = failureOfBuild();
      EXPECT_EQ(failure.empty(), reason.empty());
      EXPECT_NE(failure.find(reason), std::string::npos) << failure;
      EXPECT_EQ(allIsWritten(), failure.empty() || when != "early") << "ends at once if it's early";
      fs::remove_all(cd);
    }
}

TEST_F(Device, ThatStoresLessThanItAcceptsEndsTheBuild) {
  if (!mountSmallDevice())
    GTEST_SKIP() << "no loop device can be mounted: " << read(folder / "log");
  write(photos / "large.jpg", read(sample("vacances/plage.jpg")) + std::string(8 << 20, 'x'));
  // Another program gets the error first.
  atYields([this] { allIsWritten() && inFolder("sync -f CD"); });
  EXPECT_NE(failureOfBuild().find("Impossible d’écrire sur le disque"), std::string::npos);
}

TEST_F(Device, ThatWritesNothingForFiveMinutesEndsTheBuild) {
  if (!mountSmallDevice())
    GTEST_SKIP() << "no loop device can be mounted: " << read(folder / "log");
  atSyncfs = [] { return ::poll(nullptr, 0, 200); };
  for (const bool writes : {true, false}) {
    atYields([&] {
      if (!allIsWritten()) return;
      monotonicSkew += 100;
      inFolder(writes ? "date >CD/more; sync CD/more" : "dd iflag=direct if=CD/more of=log");
    });
    EXPECT_EQ(failureOfBuild().empty(), writes);
    fs::remove_all(cd / "DIGIFILM");
  }
}

}  // namespace orvelin::test
