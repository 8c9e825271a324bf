#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/core/failure.h"
#include "platform/core/picturemessages.h"
#include "platform/pictures/confinement.h"
#include "platform/pictures/decoder.h"
#include "platform/pictures/pictureformats.h"
#include "platform/pictures/vipsprocess.h"

using namespace orvelin;

namespace {

// Large, so that Orvelin wakes up rarely.
char pipeBuffer[1 << 18];

/// Performs requests. If the next request after an inspection is for the same picture, it uses the
/// same Decoder.
class Worker {
 public:
  PictureAnswer answerTo(ReceivedRequest received) {
    const auto [operation, picture] = received.request;
    if (!decoder_ || picture_ != picture) decoder_.emplace(std::move(received.file));
    picture_ = picture;
    std::uint64_t count = 0;
    const auto write = [&](std::string_view jpeg) {
      count += jpeg.size();
      return std::fwrite(jpeg.data(), 1, jpeg.size(), stdout) == jpeg.size();
    };
    PictureAnswer answer = decoder_->perform(operation, write);
    answer.jpegBytes = count;
    if (operation != PictureOperation::Inspect) decoder_.reset();
    return answer;
  }

 private:
  std::optional<Decoder> decoder_;
  std::uint32_t picture_ = 0;
};

/// Initializes everything that reads files, then gives up all rights.
bool start() {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (!startVips()) return false;
  formatOf("?");  // makes libvips load its modules
  confine();
  return sendAnswer(pictureSocket, {});
}

}  // namespace

/// Answers requests until Orvelin closes the socket or an error occurs.
int main() {
  struct stat status = {};
  if (::fstat(pictureSocket, &status) != 0 || !S_ISSOCK(status.st_mode)) {
    report("Ce programme est lancé par Orvelin.");
    return 2;
  }
  if (!start()) return 1;
  std::setvbuf(stdout, pipeBuffer, _IOFBF, sizeof pipeBuffer);
  Worker worker;
  while (auto received = receiveRequest(pictureSocket)) {
    const PictureAnswer answer = worker.answerTo(std::move(*received));
    if (std::fflush(stdout) != 0 || !sendAnswer(pictureSocket, answer)) return 1;
  }
  return 0;
}
