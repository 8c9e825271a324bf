#include "platform/core/picturemessages.h"

#include <sys/socket.h>

#include <cerrno>
#include <cstring>

namespace orvelin {

namespace {

/// A request with a descriptor, for sendmsg() and recvmsg().
class Packet {
 public:
  explicit Packet(PictureRequest content) : request(content) {
    message.msg_iov = &data_;
    message.msg_iovlen = 1;
    message.msg_control = control_;
    message.msg_controllen = sizeof control_;
  }
  Packet(const Packet&) = delete;
  Packet& operator=(const Packet&) = delete;
  ~Packet() = default;

  PictureRequest request;
  msghdr message{};

 private:
  iovec data_{&request, sizeof request};
  alignas(cmsghdr) char control_[CMSG_SPACE(sizeof(int))] = {};
};

bool isValid(const PictureAnswer& answer) {
  return answer.verdict < PictureVerdict::Crashed && answer.jpegBytes <= maxPictureBytes;
}

}  // namespace

bool sendRequest(int socket, PictureRequest request, int file) {
  Packet packet(request);
  cmsghdr* const passed = CMSG_FIRSTHDR(&packet.message);
  passed->cmsg_level = SOL_SOCKET;
  passed->cmsg_type = SCM_RIGHTS;
  passed->cmsg_len = CMSG_LEN(sizeof file);
  std::memcpy(CMSG_DATA(passed), &file, sizeof file);
  return ::sendmsg(socket, &packet.message, MSG_NOSIGNAL | MSG_DONTWAIT) == sizeof request;
}

std::optional<ReceivedRequest> receiveRequest(int socket) {
  Packet packet({});
  ssize_t got;
  do got = ::recvmsg(socket, &packet.message, MSG_CMSG_CLOEXEC);
  while (got < 0 && errno == EINTR);
  const cmsghdr* const passed = CMSG_FIRSTHDR(&packet.message);
  if (got != sizeof packet.request || !passed || passed->cmsg_type != SCM_RIGHTS) return {};
  int file = -1;
  std::memcpy(&file, CMSG_DATA(passed), sizeof file);
  return ReceivedRequest{packet.request, Descriptor(file)};
}

bool sendAnswer(int socket, const PictureAnswer& answer) {
  return ::send(socket, &answer, sizeof answer, MSG_NOSIGNAL) == sizeof answer;
}

std::optional<PictureAnswer> receiveAnswer(int socket) {
  PictureAnswer answer;
  const ssize_t got = ::recv(socket, &answer, sizeof answer, MSG_DONTWAIT | MSG_TRUNC);
  if (got < 0 && (errno == EAGAIN || errno == EINTR)) return {};
  if (got == sizeof answer && isValid(answer)) return answer;
  return PictureAnswer{PictureVerdict::Crashed};
}

}  // namespace orvelin
