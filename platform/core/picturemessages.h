#pragma once

#include <cstdint>
#include <optional>

#include "platform/core/descriptor.h"

namespace orvelin {

/// Limit for the memory that decoding a picture needs, including its file, and for the size of the
/// JPEG. Enough for a 100-megapixel 16-bit TIFF with transparency that must be rotated.
inline constexpr std::uint64_t maxPictureBytes = std::uint64_t{2} << 30;

/// Stdin of the picture process: a SOCK_SEQPACKET socket for one request and one answer at a time.
/// Its stdout is a pipe for JPEG data.
inline constexpr int pictureSocket = 0;

enum class PictureOperation : std::uint32_t {
  Inspect,  ///< checks the header; BMP, and old-style JPEG in TIFF, are decoded already
  Decode,   ///< inspects, then decodes as much as is needed to know that the picture decodes
  Encode,   ///< inspects, then writes the picture to the pipe as JPEG
};

enum class PictureVerdict : std::uint32_t {
  Good,
  Suspect,  ///< encoded, but the decoder warned of damage
  NoPicture,
  NotRead,  ///< a system call failed; `error` says why
  Unreadable,
  TooLarge,
  TooManyScans,
  UnknownColours,
  CameraRaw,
  // The picture process sends the verdicts above; its client sets those below.
  Crashed,
  Stalled,
  OverTime,
};

/// Sent to the picture process together with a descriptor: the picture's file, open for reading.
struct PictureRequest {
  PictureOperation operation;
  /// Identifies the picture: after an inspection, a request with the same number uses its result.
  std::uint32_t picture;
};

/// Sent by the picture process: `Good` when it is ready, then one answer per request.
struct PictureAnswer {
  PictureVerdict verdict = PictureVerdict::Good;
  std::int32_t error = 0;       ///< an `errno` value, for `NotRead`
  std::uint64_t jpegBytes = 0;  ///< number of bytes written to the pipe

  bool succeeded() const {
    return verdict == PictureVerdict::Good || verdict == PictureVerdict::Suspect;
  }
};

/// Sends a message. Returns false on failure, such as a closed peer.
bool sendRequest(int socket, PictureRequest request, int file);
bool sendAnswer(int socket, const PictureAnswer& answer);

struct ReceivedRequest {
  PictureRequest request;
  Descriptor file;
};
/// Waits for the next request. Empty if the peer has closed its end or sent something else.
std::optional<ReceivedRequest> receiveRequest(int socket);

/// Receives an answer, without waiting. Empty if there is none yet; `Crashed` if the peer has
/// closed its end or sent something invalid.
std::optional<PictureAnswer> receiveAnswer(int socket);

}  // namespace orvelin
