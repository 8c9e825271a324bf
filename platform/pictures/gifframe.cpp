#include "platform/pictures/gifframe.h"

#include <cstddef>

namespace orvelin {

std::optional<GifFrame> firstFrameOf(std::string_view gif) {
  constexpr std::size_t canvasAt = 6, flagsAt = 10, headerSize = 13;
  constexpr int extension = 0x21, frame = 0x2C;
  const auto byteAt = [&](std::size_t at) {
    return at < gif.size() ? static_cast<unsigned char>(gif[at]) : 0;
  };
  const auto numberAt = [&](std::size_t at) { return byteAt(at) | byteAt(at + 1) << 8; };

  std::size_t at = headerSize;
  const int flags = byteAt(flagsAt);
  if ((flags & 0x80) != 0) at += std::size_t{3} << ((flags & 7) + 1);  // the table of colours
  while (byteAt(at) == extension) {
    at += 2;
    while (byteAt(at) != 0) at += 1 + static_cast<std::size_t>(byteAt(at));
    ++at;
  }
  if (byteAt(at) != frame) return std::nullopt;
  const GifFrame first{numberAt(at + 1), numberAt(at + 3),   numberAt(at + 5),
                       numberAt(at + 7), numberAt(canvasAt), numberAt(canvasAt + 2)};
  if (first.width == 0 || first.height == 0) return std::nullopt;
  return first;
}

}  // namespace orvelin
