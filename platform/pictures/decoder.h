#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vips/vips8>

#include "platform/core/picturemessages.h"
#include "platform/pictures/pictureformats.h"
#include "platform/pictures/vipsprocess.h"

namespace orvelin {

/// Takes bytes of a JPEG as they come; false makes encoding fail.
using WriteJpeg = std::function<bool(std::string_view)>;

/// A picture file in memory, opened to be decoded once. libvips must have been started.
class Decoder {
 public:
  /// Opens the file and judges it by its header.
  explicit Decoder(std::string bytes);

  /// Inspect returns the verdict on the header. The other operations can be performed once, and
  /// only one of them, where that verdict is `Good`; Encode calls `write`.
  PictureVerdict perform(PictureOperation operation, const WriteJpeg& write);

 private:
  PictureVerdict inspect();
  void decode();
  void encode(const WriteJpeg& write);

  DecoderWarnings warnings_;  // outlives the image, which may warn when it is freed
  std::string bytes_;
  const PictureFormat* format_;
  vips::VImage image_;
  PictureVerdict verdict_;
};

}  // namespace orvelin
