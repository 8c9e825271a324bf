#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "platform/core/file.h"
#include "platform/core/ref.h"

namespace orvelin {

/// A picture file: JPEG, PNG, TIFF, WebP, HEIF, GIF or BMP. Its content is read and decoded by the
/// picture process alone, by each of the calls below.
class Picture {
 public:
  /// The picture that the open file holds. Nil, with a line in the log but for content of no known
  /// format, if its header can't be read or shows a camera raw, unknown tones, or a picture that
  /// takes more memory than a real photograph. `path` is for messages.
  static Ref<Picture> read(File file, const std::string& path);

  /// For `read`.
  Picture(File file, std::string path, std::uint32_t number)
      : file_(std::move(file)), path_(std::move(path)), number_(number) {}

  /// Whether all of the picture can be decoded, damaged parts as far as they go; logs why not.
  /// Decodes no further than the answer needs.
  bool decodes() const;

  /// Encodes what a viewer shows, its first frame upright in 8-bit sRGB, transparent parts on
  /// white, as a JPEG with a JFIF segment and nothing else but the pixels, at the start of `jpeg`,
  /// an empty file. Logs why the picture can't be encoded; an error of `jpeg` stays there.
  bool encodeAsJPEG(File& jpeg) const;

 private:
  File file_;
  std::string path_;
  std::uint32_t number_;  // identifies the picture in requests
};

}  // namespace orvelin
