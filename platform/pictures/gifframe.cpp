#include "platform/pictures/gifframe.h"

#include <cstdint>

namespace orvelin {

std::optional<GifFrame> firstFrameOf(PictureFile& gif) {
  constexpr std::uint64_t canvasAt = 6, flagsAt = 10, headerSize = 13;
  constexpr int extension = 0x21, frame = 0x2C;
  const auto numberAt = [&](std::uint64_t at) { return gif.byteAt(at) | gif.byteAt(at + 1) << 8; };

  std::uint64_t at = headerSize;
  const int flags = gif.byteAt(flagsAt);
  if ((flags & 0x80) != 0) at += std::uint64_t{3} << ((flags & 7) + 1);  // colour table
  while (gif.byteAt(at) == extension) {
    at += 2;
    while (gif.byteAt(at) != 0) at += 1 + static_cast<std::uint64_t>(gif.byteAt(at));
    ++at;
  }
  if (gif.byteAt(at) != frame) return std::nullopt;
  const GifFrame first{numberAt(at + 1), numberAt(at + 3),   numberAt(at + 5),
                       numberAt(at + 7), numberAt(canvasAt), numberAt(canvasAt + 2)};
  if (first.width == 0 || first.height == 0) return std::nullopt;
  return first;
}

}  // namespace orvelin
