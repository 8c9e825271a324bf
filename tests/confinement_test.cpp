#include "platform/pictures/confinement.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>
#include <tuple>

#include "platform/core/pictureprocess.h"
#include "support.h"

namespace orvelin::test {

using namespace std::string_literals;

namespace {

// What this kernel offers.
const bool hasLandlock = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, 1) > 0;
const bool hasSeccomp = !sanitized && ::prctl(PR_GET_SECCOMP) >= 0;

alignas(4096) char page[4096];

}  // namespace

class ConfinementTest : public FileTest {
 protected:
  ConfinementTest() {
    endPictureProcess();
    while (::waitpid(-1, nullptr, 0) > 0) {  // wait for the killed process
    }
  }

  /// Runs `step` in a child process. Returns its result, or the signal that killed it.
  static int inChild(const std::function<int()>& step) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(step());
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status);
  }
  /// The only child process.
  static pid_t pictureProcess() { return std::stoi(read("/proc/thread-self/children")); }
};

TEST_F(ConfinementTest, DeniesEverythingButComputing) {
  const fs::path secret = folder / "secret";
  write(secret, "text");
  // What Landlock denies, and what only seccomp denies.
  const std::tuple<const char*, bool, std::function<long()>> attempts[] = {
      {"read a file", true, [&] { return ::open(secret.c_str(), O_RDONLY); }},
      {"delete a file", true, [&] { return ::unlink(secret.c_str()); }},
      {"open a socket", false, [] { return ::socket(AF_INET, SOCK_STREAM, 0); }},
      {"fork", false, [] { return ::fork(); }},
      {"run data", false, [] { return ::mprotect(page, sizeof page, PROT_EXEC | PROT_READ); }},
      {"share memory", false,
       [] { return long(::mmap(nullptr, 1, PROT_READ, MAP_SHARED | MAP_ANONYMOUS, -1, 0)); }},
  };
  for (const auto& [what, byLandlock, call] : attempts) {
    if (!hasSeccomp && !(hasLandlock && byLandlock)) continue;
    EXPECT_EQ(inChild([&, &attempt = call] {
                const Confinement confinement = confine();
                if (confinement.files != hasLandlock || confinement.calls != hasSeccomp) return 2;
                return attempt() < 0 && (errno == EPERM || errno == EACCES) ? 0 : 1;
              }),
              0)
        << what;
  }
}

TEST_F(ConfinementTest, AppliesToThePictureProcess) {
  EXPECT_TRUE(item(sample("aquarelle.png"))->OpenAsPicture());
  const fs::path process = "/proc/" + std::to_string(pictureProcess());
  const std::string status = read(process / "status"), calls = hasSeccomp ? "2" : "0";
  for (const std::string& line : {"NoNewPrivs:\t1"s, "Threads:\t1\n"s, "Seccomp:\t" + calls})
    EXPECT_NE(status.find(line), std::string::npos) << line;
  EXPECT_EQ(read(process / "oom_score_adj"), "1000\n");
  // AddressSanitizer needs more.
  const bool limited = read(process / "limits").find("3221225472") != std::string::npos;
  EXPECT_NE(limited, ::dlsym(RTLD_DEFAULT, "__asan_init") != nullptr) << "3 GiB of data";
  EXPECT_EQ(std::distance(fs::directory_iterator(process / "fd"), {}), 4)
      << "socket, pipe, /dev/null and the picture";
}

}  // namespace orvelin::test
