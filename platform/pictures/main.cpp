#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <optional>
#include <string>
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

// Orvelin is woken up for this many bytes of a JPEG at a time.
char pipeBuffer[1 << 18];

/// Appends the bytes of the file from there up to `size`, or to its end. False with `errno` if they
/// can't be read.
bool readUpTo(std::size_t size, int file, std::string& bytes) {
  std::size_t at = bytes.size();
  bytes.resize(size);
  while (at < size) {
    const ssize_t got = ::pread(file, &bytes[at], size - at, static_cast<off_t>(at));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return false;
    if (got == 0) break;
    at += static_cast<std::size_t>(got);
  }
  bytes.resize(at);
  return true;
}

/// Reads and performs what Orvelin asks for. Keeps a picture from its inspection to the operation
/// that uses it up.
class Worker {
 public:
  PictureAnswer answerTo(PictureRequest request, int file) {
    if (!decoder_ || picture_ != request.picture) {
      const PictureAnswer answer = open(file);
      if (!answer.done()) return answer;
      picture_ = request.picture;
    }
    PictureAnswer answer;
    const auto write = [&](std::string_view jpeg) {
      answer.jpegBytes += jpeg.size();
      return std::fwrite(jpeg.data(), 1, jpeg.size(), stdout) == jpeg.size();
    };
    answer.verdict = decoder_->perform(request.operation, write);
    if (request.operation != PictureOperation::Inspect) decoder_.reset();
    return answer;
  }

 private:
  PictureAnswer open(int file) {
    decoder_.reset();
    std::string bytes;
    const off_t size = ::lseek(file, 0, SEEK_END);
    if (size < 0 || !readUpTo(signatureSize, file, bytes)) return {PictureVerdict::NotRead, errno};
    if (!formatOf(bytes)) return {PictureVerdict::NoPicture};
    const auto count = static_cast<std::uint64_t>(size);
    if (count > maxPictureBytes) return {PictureVerdict::TooLarge};
    if (count > bytes.size() && !readUpTo(count, file, bytes))
      return {PictureVerdict::NotRead, errno};
    decoder_.emplace(std::move(bytes));
    return {};
  }

  std::optional<Decoder> decoder_;
  std::uint32_t picture_ = 0;
};

/// Starts all that may have to read files, then gives up the right to.
bool start() {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (!startVips()) return false;
  formatOf({});  // loads the loaders
  confine();
  return sendAnswer(pictureSocket, {});
}

}  // namespace

/// Answers the requests of Orvelin until it closes the socket.
int main() {
  struct stat status {};
  if (::fstat(pictureSocket, &status) != 0 || !S_ISSOCK(status.st_mode)) {
    report("Ce programme est lancé par Orvelin.");
    return 2;
  }
  if (!start()) return 1;
  std::setvbuf(stdout, pipeBuffer, _IOFBF, sizeof pipeBuffer);
  Worker worker;
  while (const auto received = receiveRequest(pictureSocket)) {
    const PictureAnswer answer = worker.answerTo(received->request, received->file.get());
    if (std::fflush(stdout) != 0 || !sendAnswer(pictureSocket, answer)) return 1;
  }
  return 0;
}
