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

/// Takes bytes of a JPEG as they come; false makes encoding fail.
using WriteJpeg = std::function<bool(std::string_view)>;

/// A picture file, opened to be decoded once. libvips must have been started.
class Decoder {
 public:
  /// Judges the open file by its header.
  explicit Decoder(Descriptor file);

  /// Inspect returns the verdict on the header. The other operations can be performed once, and
  /// only one of them, where that verdict is `Good`; Encode calls `write`.
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
