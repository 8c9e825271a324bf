#pragma once

#include <functional>
#include <string_view>
#include <vips/vips8>

#include "platform/core/descriptor.h"
#include "platform/core/picturemessages.h"
#include "platform/pictures/picturefile.h"
#include "platform/pictures/pictureformats.h"
#include "platform/pictures/vipsprocess.h"

namespace orvelin {

/// Receives the bytes of a JPEG in pieces. Returns false to make encoding fail.
using WriteJpeg = std::function<bool(std::string_view)>;

/// Decodes one open picture file, once. startVips() must have been called.
class Decoder {
 public:
  /// Inspects the header.
  explicit Decoder(Descriptor file);

  /// Inspect returns the verdict on the header. If that is `Good`, either Decode or Encode can be
  /// performed, once. Encode calls `write`.
  PictureAnswer perform(PictureOperation operation, const WriteJpeg& write);

 private:
  PictureVerdict inspect();
  PictureVerdict verdictAfter(PictureOperation operation, const WriteJpeg& write);
  void decode();
  void encode(const WriteJpeg& write);

  DecoderWarnings warnings_;  // outlives the image, which may warn when it is freed
  PictureFile file_;
  const PictureFormat* format_ = nullptr;
  vips::VImage image_;
  PictureVerdict verdict_;
};

}  // namespace orvelin
