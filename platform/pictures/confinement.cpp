#include "platform/pictures/confinement.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>

namespace orvelin {

namespace {

void limit(int resource, rlim_t max) {
  const rlimit limits{max, max};
  ::setrlimit(static_cast<__rlimit_resource>(resource), &limits);
}

void limitResources() {
  constexpr rlim_t maxMemory = rlim_t{3} << 30, maxFiles = 16;
  if (!sanitized) limit(RLIMIT_DATA, maxMemory);
  limit(RLIMIT_NOFILE, maxFiles);
  limit(RLIMIT_FSIZE, 0);
  limit(RLIMIT_CORE, 0);
  std::ofstream("/proc/self/oom_score_adj") << 1000;  // the OOM killer's first choice
}

/// Forbids everything that Landlock can forbid. Rights are bits; later versions have more of them.
bool forbidFiles() {
  // struct landlock_ruleset_attr of version 6; older headers lack the last two members.
  struct {
    std::uint64_t files, network, scope;
  } ruleset{};
  constexpr int fileRights[] = {0, 13, 14, 15, 15, 16};
  constexpr auto lastKnown = static_cast<long>(std::size(fileRights)) - 1;
  const long version =
      ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (version < 1) return false;
  ruleset.files = (std::uint64_t{1} << fileRights[std::min(version, lastKnown)]) - 1;
  if (version >= 4) ruleset.network = 3;  // bind and connect
  if (version >= 6) ruleset.scope = 3;    // abstract sockets and signals
  const long rules = ::syscall(SYS_landlock_create_ruleset, &ruleset, sizeof ruleset, 0);
  const bool holds = rules >= 0 && ::syscall(SYS_landlock_restrict_self, rules, 0) == 0;
  if (rules >= 0) ::close(static_cast<int>(rules));
  return holds;
}

// What the libraries, their threads and the messages need.
constexpr int allowedCalls[] = {
    SCMP_SYS(brk),
    SCMP_SYS(clock_gettime),
    SCMP_SYS(clock_nanosleep),
    SCMP_SYS(close),
    SCMP_SYS(exit),
    SCMP_SYS(exit_group),
    SCMP_SYS(futex),
    SCMP_SYS(getpid),
    SCMP_SYS(getrandom),
    SCMP_SYS(gettid),
    SCMP_SYS(gettimeofday),
    SCMP_SYS(lseek),
    SCMP_SYS(madvise),
    SCMP_SYS(mremap),
    SCMP_SYS(munmap),
    SCMP_SYS(pread64),
    SCMP_SYS(read),
    SCMP_SYS(recvmsg),
    SCMP_SYS(restart_syscall),
    SCMP_SYS(rseq),
    SCMP_SYS(rt_sigaction),
    SCMP_SYS(rt_sigprocmask),
    SCMP_SYS(rt_sigreturn),
    SCMP_SYS(sched_getaffinity),
    SCMP_SYS(sched_yield),
    SCMP_SYS(sendto),
    SCMP_SYS(set_robust_list),
    SCMP_SYS(write),
};

/// Makes all other system calls fail with an error. Doesn't kill the process: a new version of a
/// library may try a call that it can do without.
bool forbidCalls() {
  const std::unique_ptr<void, decltype(&seccomp_release)> filter(
      seccomp_init(SCMP_ACT_ERRNO(EPERM)), seccomp_release);
  if (!filter) return false;
  const auto allow = [&](int call, auto... conditions) {
    return seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, sizeof...(conditions),
                            conditions...) == 0;
  };
  seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_TSYNC, 1);  // in case a library started a thread
  bool holds = std::ranges::all_of(allowedCalls, [&](int call) { return allow(call); });
  const auto bits = [](unsigned argument, scmp_datum_t mask, scmp_datum_t value) {
    return scmp_arg_cmp{argument, SCMP_CMP_MASKED_EQ, mask, value};
  };
  // No executable memory, and only memory that RLIMIT_DATA counts.
  holds &= allow(SCMP_SYS(mmap), bits(2, PROT_EXEC, 0), bits(3, MAP_SHARED, 0));
  holds &= allow(SCMP_SYS(mprotect), bits(2, PROT_EXEC, 0));
  // Threads but no processes. A filter can't see the flags of clone3; glibc falls back to clone.
  holds &= allow(SCMP_SYS(clone), bits(0, CLONE_THREAD, CLONE_THREAD));
  holds &= seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0) == 0;
  // For abort().
  holds &=
      allow(SCMP_SYS(tgkill), bits(0, ~scmp_datum_t{0}, static_cast<scmp_datum_t>(::getpid())));
  return holds && seccomp_load(filter.get()) == 0;
}

}  // namespace

Confinement confine() {
  if (!sanitized) {  // the sanitizers report to stderr
    ::close(STDERR_FILENO);
    ::open("/dev/null", O_RDONLY);
  }
  ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  limitResources();
  Confinement confinement;
  confinement.files = forbidFiles();
  if (!sanitized) confinement.calls = forbidCalls();
  return confinement;
}

}  // namespace orvelin
