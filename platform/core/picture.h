#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/core/binarystream.h"
#include "platform/core/ref.h"

namespace orvelin {

/// A picture file read into memory: JPEG, PNG, TIFF, WebP, HEIF, GIF or BMP. Making one looks at
/// its header alone; each of the two calls below decodes its pixels.
class Picture {
 public:
  struct Format;
  using Write = std::function<bool(std::string_view)>;

  /// The picture that the stream holds; nil when the content is of no known format or would take
  /// more memory than a real photograph does. `path` is for messages alone.
  static Ref<Picture> read(BinaryStream& stream, const std::string& path);

  /// `bytes` must begin with the signature of `format`. For `read`.
  Picture(std::string bytes, const Format& format, std::string path);

  /// Whether all of the picture can be decoded, damaged parts as far as they go; keeps nothing.
  /// Decodes no further than the answer needs.
  bool decodes() const;

  /// Encodes what a viewer shows, its first frame upright in 8-bit sRGB, transparent parts on
  /// white, as a JPEG with a JFIF segment and nothing else but the pixels. Hands the bytes to
  /// `write` as they come; false when the picture can't be decoded or `write` answers false.
  bool encodeAsJPEG(const Write& write) const;

  /// The file that it was read from, for messages alone.
  const std::string& path() const { return path_; }

 private:
  bool reasonable() const;

  std::string bytes_;
  const Format& format_;
  std::string path_;
};

}  // namespace orvelin
