#pragma once

#include <cstdint>
#include <optional>

#include "platform/core/descriptor.h"

namespace orvelin {

/// Bound for what decoding a picture takes, the file included, and for the JPEG made of it. A TIFF
/// file of a hundred megapixels with 16 bits and transparency, to be turned, fits.
inline constexpr std::uint64_t maxPictureBytes = std::uint64_t{2} << 30;

/// The standard input of the picture process: a SOCK_SEQPACKET socket for one request and one
/// answer at a time. Its standard output is a pipe, for the bytes of JPEG files.
inline constexpr int pictureSocket = 0;

enum class PictureOperation : std::uint32_t {
  Inspect,  ///< judges the file by its header
  Decode,   ///< the same, then decodes no more than it takes to know that the picture decodes
  Encode,   ///< the same, then writes the picture to the pipe as JPEG
};

enum class PictureVerdict : std::uint32_t {
  Good,
  Suspect,  ///< done, but the decoder warned of damage
  NoPicture,
  NotRead,  ///< a system call failed; `error` says why
  Unreadable,
  TooLarge,
  TooManyScans,
  UnknownColours,
  CameraRaw,
  // The picture process sends those above; Orvelin itself finds the ones below.
  Crashed,
  Stalled,
  OverTime,
};

/// What Orvelin sends, with one descriptor: the picture's file, open for reading.
struct PictureRequest {
  PictureOperation operation;
  /// Identifies the picture: one that was inspected last need not be opened again.
  std::uint32_t picture;
};

/// What the picture process sends: `Good` once when it is ready, then one for each request.
struct PictureAnswer {
  PictureVerdict verdict = PictureVerdict::Good;
  std::int32_t error = 0;       ///< an `errno` value
  std::uint64_t jpegBytes = 0;  ///< how many bytes were written to the pipe

  bool done() const {
    return verdict == PictureVerdict::Good || verdict == PictureVerdict::Suspect;
  }
};

/// Sends without waiting. False if the other side is gone.
bool sendRequest(int socket, PictureRequest request, int file);
bool sendAnswer(int socket, const PictureAnswer& answer);

struct ReceivedRequest {
  PictureRequest request;
  Descriptor file;
};
/// Waits for the next request; nothing if the other side is gone or sent anything else.
std::optional<ReceivedRequest> receiveRequest(int socket);

/// Returns without waiting: nothing if no answer has come yet; `Crashed` if the other side is gone
/// or sent what can't be an answer.
std::optional<PictureAnswer> receiveAnswer(int socket);

}  // namespace orvelin
