#include "platform/pictures/jpegmarkers.h"

#include <cstddef>

namespace orvelin {

JpegScans scansOf(std::string_view jpeg) {
  constexpr char startOfScan = '\xDA';
  constexpr char endOfImage = '\xD9';
  const auto standsAlone = [](char marker) {  // filling, stuffing, restart and start markers
    return marker == '\xFF' || marker == '\x00' || marker == '\x01' ||
           (marker >= '\xD0' && marker <= '\xD8');
  };
  const auto isStartOfFrame = [](char marker) {
    return marker >= '\xC0' && marker <= '\xCF' && marker != '\xC4' && marker != '\xC8' &&
           marker != '\xCC';  // tables
  };
  const auto isProgressive = [](char frame) { return (frame & 3) == 2; };
  const auto byteAt = [&](std::size_t at) {
    return at < jpeg.size() ? static_cast<unsigned char>(jpeg[at]) : 0;
  };
  JpegScans scans;
  int components = 0;
  std::size_t at = 0;
  while ((at = jpeg.find('\xFF', at)) != std::string_view::npos && at + 3 < jpeg.size()) {
    const char marker = jpeg[++at];
    if (standsAlone(marker)) {
      if (marker != '\xFF') ++at;
      continue;
    }
    if (marker == endOfImage) break;
    if (isStartOfFrame(marker)) {
      components = byteAt(at + 8);
      scans.buffered |= isProgressive(marker);
    }
    if (marker == startOfScan) scans.buffered |= ++scans.count > 1 || byteAt(at + 3) < components;
    at += 1 + static_cast<std::size_t>(byteAt(at + 1) << 8 | byteAt(at + 2));
  }
  return scans;
}

}  // namespace orvelin
