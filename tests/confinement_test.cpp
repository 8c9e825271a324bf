#include "platform/pictures/confinement.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <iterator>

#include "platform/core/pictureprocess.h"
#include "support.h"

namespace orvelin::test {

using namespace std::string_literals;

namespace {

alignas(4096) char page[4096];
void* taken = nullptr;
constexpr std::size_t large = std::size_t{4} << 30;

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
  /// The mechanisms that work here: 1 for Landlock plus 2 for seccomp.
  static int mechanisms() {
    return inChild([] {
      const Confinement confinement = confine();
      return (confinement.files ? 1 : 0) + (confinement.calls ? 2 : 0);
    });
  }
  /// The only child process.
  static pid_t pictureProcess() { return std::stoi(read("/proc/thread-self/children")); }
};

TEST_F(ConfinementTest, DeniesEverythingButComputing) {
  const fs::path secret = folder / "secret";
  write(secret, "text");
  const struct {
    const char* what;
    bool byLandlock;  // seccomp denies all of them
    std::function<long()> attempt;
  } attempts[] = {
      {"read a file", true, [&] { return ::open(secret.c_str(), O_RDONLY); }},
      {"create a file", true, [&] { return ::creat((folder / "new").c_str(), 0666); }},
      {"delete a file", true, [&] { return ::unlink(secret.c_str()); }},
      {"list a folder", true, [] { return ::open("/", O_RDONLY | O_DIRECTORY); }},
      {"connect", false, [] { return ::socket(AF_INET, SOCK_STREAM, 0); }},
      {"fork", false, [] { return ::fork(); }},
      {"start a program", true, [] { return ::execl("/bin/false", "/bin/false", nullptr); }},
      {"signal", false, [] { return ::kill(::getppid(), 0); }},
      {"raise a limit", false, [] { return ::prlimit(0, RLIMIT_DATA, nullptr, nullptr); }},
      {"run data", false, [] { return ::mprotect(page, sizeof page, PROT_EXEC | PROT_READ); }},
      {"share 4 GiB", false,
       [] {
         constexpr int kind = MAP_SHARED | MAP_ANONYMOUS;
         return ::mmap(nullptr, large, PROT_READ, kind, -1, 0) == MAP_FAILED ? -1 : 0;
       }},
      {"take 4 GiB", false, [] { return (taken = std::malloc(large)) ? 0 : -1; }},
  };
  const int present = mechanisms();
  for (const auto& row : attempts) {
    if ((present & 2) == 0 && (present != 1 || !row.byLandlock)) continue;
    EXPECT_EQ(inChild([&] {
                confine();
                const bool denied = row.attempt() < 0;
                return denied && (errno == EPERM || errno == EACCES || errno == ENOMEM) ? 0 : 1;
              }),
              0)
        << row.what;
  }
  if (present != 3) GTEST_SKIP() << "not all mechanisms work in this kernel, or with sanitizers";
}

TEST_F(ConfinementTest, AppliesToThePictureProcess) {
  EXPECT_TRUE(item(sample("aquarelle.png"))->OpenAsPicture());
  const fs::path process = "/proc/" + std::to_string(pictureProcess());
  const std::string status = read(process / "status"), calls = (mechanisms() & 2) != 0 ? "2" : "0";
  for (const std::string& line : {"NoNewPrivs:\t1"s, "Threads:\t1"s, "Seccomp:\t" + calls})
    EXPECT_NE(status.find(line), std::string::npos) << line;
  EXPECT_EQ(read(process / "oom_score_adj"), "1000\n");
  EXPECT_EQ(std::distance(fs::directory_iterator(process / "fd"), {}), 4)
      << "socket, pipe, /dev/null and the picture";
}

TEST_F(ConfinementTest, KillsThePictureProcessWithTheProgram) {
  ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
  inChild([] {
    item(sample("aquarelle.png"))->OpenAsPicture();
    ::kill(pictureProcess(), SIGSTOP);  // so that it can't exit by itself
    return 0;
  });
  int status = 0;
  EXPECT_GT(::waitpid(-1, &status, 0), 0);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
  ::prctl(PR_SET_CHILD_SUBREAPER, 0);
}

}  // namespace orvelin::test
