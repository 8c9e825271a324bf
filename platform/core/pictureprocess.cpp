#include "platform/core/pictureprocess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/core/background.h"
#include "platform/core/bundle.h"
#include "platform/core/childprocess.h"
#include "platform/core/failure.h"

namespace orvelin {

namespace {

constexpr int pollMilliseconds = 10;
constexpr double maxCpuSeconds = 300;    // for all requests of one picture
constexpr double idleCpuSeconds = 0.01;  // less CPU time than this is no progress
constexpr std::time_t maxIdleSeconds = 60;
constexpr int pipeCapacity = 1 << 20;
constexpr PictureAnswer crashed{PictureVerdict::Crashed};

std::filesystem::path program() { return bundleFolder() / "Contents/Linux/orvelin-pictures"; }

std::time_t secondsNow() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec;
}

class PictureProcess {
 public:
  /// Starts the process and waits until it is confined.
  PictureProcess() : whyNotReady_(start()) {}

  /// Why the process could not be started, in French; empty if it was started.
  const std::string& whyNotReady() const { return whyNotReady_; }

  /// Sends one request and waits for the answer. After `Crashed`, `Stalled` or `OverTime` the
  /// process can't be used any more.
  PictureAnswer answerTo(PictureRequest request, const File& picture, File* jpeg) {
    if (std::exchange(picture_, request.picture) != request.picture)
      cpuAtStart_ = child_.cpuSeconds();
    const bool sent =
        whyNotReady_.empty() && sendRequest(socket_.get(), request, picture.descriptor());
    return sent ? awaitAnswer(jpeg) : crashed;
  }

 private:
  std::string start();
  PictureAnswer awaitAnswer(File* jpeg);
  std::optional<PictureVerdict> exceededLimit();

  ChildProcess child_;
  Descriptor socket_, pipe_;
  std::array<char, 1 << 18> chunk_;
  std::uint32_t picture_ = 0;
  double cpuAtStart_ = 0, lastCpu_ = 0;
  std::time_t lastProgress_ = 0;
  std::string whyNotReady_;
};

std::string PictureProcess::start() {
  const auto reason = [](int error) { return Failure::ofSystem("", "", error).reason; };
  int sockets[2], pipe[2];
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets) != 0) return reason(errno);
  socket_ = Descriptor(sockets[0]);
  Descriptor itsSocket(sockets[1]);
  if (::pipe2(pipe, O_CLOEXEC) != 0) return reason(errno);
  pipe_ = Descriptor(pipe[0]);
  Descriptor itsPipe(pipe[1]);
  ::fcntl(pipe_.get(), F_SETFL, O_NONBLOCK);
  ::fcntl(pipe_.get(), F_SETPIPE_SZ, pipeCapacity);
  child_ = ChildProcess(program(), itsSocket, itsPipe);
  if (child_.error() != 0) return reason(child_.error());
  // Close our copies of its ends: otherwise we don't see EOF when it dies.
  itsSocket = Descriptor();
  itsPipe = Descriptor();
  return awaitAnswer(nullptr).succeeded() ? "" : "il s’est arrêté aussitôt";
}

PictureAnswer PictureProcess::awaitAnswer(File* jpeg) {
  lastProgress_ = secondsNow();
  std::optional<PictureAnswer> answer;
  std::uint64_t received = 0;
  for (;;) {
    pollfd ends[] = {{socket_.get(), POLLIN, 0}, {pipe_.get(), POLLIN, 0}};
    ::poll(ends, 2, answer ? 0 : pollMilliseconds);
    RuntimeBackgroundTask();
    // The process sends the answer last: when it has arrived, all of the JPEG is in the pipe.
    if (!answer) answer = receiveAnswer(socket_.get());
    const ssize_t got = ::read(pipe_.get(), chunk_.data(), chunk_.size());
    if (got > 0) {
      received += static_cast<std::uint64_t>(got);
      if (!jpeg || received > maxPictureBytes) return crashed;
      if (jpeg->error() == 0) jpeg->write({chunk_.data(), static_cast<std::size_t>(got)});
    } else if (got == 0 || (errno != EAGAIN && errno != EINTR)) {
      return crashed;
    } else if (answer) {
      const bool empty = jpeg != nullptr && answer->succeeded() && received == 0;
      return answer->jpegBytes == received && !empty ? *answer : crashed;
    }
    if (const auto limit = exceededLimit()) return {*limit};
  }
}

/// The verdict for a time limit that the process has exceeded; empty if it has exceeded none.
std::optional<PictureVerdict> PictureProcess::exceededLimit() {
  const double cpu = child_.cpuSeconds();
  if (cpu - cpuAtStart_ > maxCpuSeconds) return PictureVerdict::OverTime;
  const std::time_t now = secondsNow();
  const bool idle = now - lastProgress_ > maxIdleSeconds;
  if (cpu > lastCpu_ + idleCpuSeconds || (idle && child_.waitsForDisk())) {
    lastCpu_ = cpu;
    lastProgress_ = now;
  } else if (idle) {
    return PictureVerdict::Stalled;
  }
  return {};
}

std::unique_ptr<PictureProcess> idleProcess;  // between two requests
bool hasAnswered = false;                     // since the last endPictureProcess()

}  // namespace

PictureAnswer askPictureProcess(PictureRequest request, const File& picture, File* jpeg) {
  PictureAnswer answer;
  for (int tries = 0; tries < 2; ++tries) {
    if (jpeg && tries > 0) jpeg->clear();
    // Take the process: unless it answers, it is destroyed at the end of this pass.
    auto process = std::exchange(idleProcess, nullptr);
    if (!process) process = std::make_unique<PictureProcess>();
    answer = process->answerTo(request, picture, jpeg);
    if (answer.verdict < PictureVerdict::Crashed) {
      idleProcess = std::move(process);
      hasAnswered = true;
      return answer;
    }
    if (answer.verdict == PictureVerdict::OverTime) return answer;
    if (tries > 0 && !hasAnswered && !process->whyNotReady().empty())
      throw NilObjectException(
          {"Impossible de démarrer le décodeur d’images", program(), process->whyNotReady(),
           "Fermez d’autres programmes, puis recommencez\u00A0; ou réinstallez Orvelin."});
  }
  return answer;
}

void endPictureProcess() {
  idleProcess.reset();
  hasAnswered = false;
}

}  // namespace orvelin
