#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/core/binarystream.h"
#include "platform/core/ref.h"

namespace orvelin {

struct PictureFormat;

/// A picture file read into memory: JPEG, PNG, TIFF, WebP, HEIF, GIF or BMP. Opening one
/// decodes no pixels; each of the two calls below does.
class Picture {
 public:
  using Write = std::function<bool(std::string_view)>;

  /// The picture that the stream holds; nil if the content is of no known format, a camera raw, of
  /// unknown tones, or larger in memory than a real photograph. `path` is for messages alone.
  static Ref<Picture> read(BinaryStream& stream, const std::string& path);

  /// `bytes` must begin with the signature of `format`. For `read`.
  Picture(std::string bytes, const PictureFormat& format, std::string path);

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
  /// Why `read` returns nil, in French; empty if it doesn't.
  std::string whyRefused() const;

  std::string bytes_;
  const PictureFormat& format_;
  std::string path_;
};

}  // namespace orvelin
