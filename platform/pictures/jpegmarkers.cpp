#include "platform/pictures/jpegmarkers.h"

#include <cstdint>

namespace orvelin {

namespace {

/// The offset of the next byte 0xFF from `at` on; the size of the file if there is none.
std::uint64_t nextMarker(PictureFile& jpeg, std::uint64_t at) {
  for (std::string_view bytes; !(bytes = jpeg.some(at)).empty(); at += bytes.size())
    if (const auto found = bytes.find('\xFF'); found != std::string_view::npos) return at + found;
  return jpeg.size();
}

}  // namespace

int countBufferedScans(PictureFile& jpeg) {
  constexpr int startOfScan = 0xDA, endOfImage = 0xD9;
  const auto hasNoLength = [](int marker) {  // fill and stuffed bytes, TEM, RSTn, SOI
    return marker == 0xFF || marker == 0x00 || marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8);
  };
  const auto isStartOfFrame = [](int marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 &&
           marker != 0xCC;  // tables
  };
  const auto isProgressive = [](int frame) { return (frame & 3) == 2; };
  bool progressive = false;
  int components = 0, scans = 0;
  std::uint64_t at = 0;
  while ((at = nextMarker(jpeg, at)) + 3 < jpeg.size()) {
    const int marker = jpeg.byteAt(++at);
    if (hasNoLength(marker)) {
      if (marker != 0xFF) ++at;
      continue;
    }
    if (marker == endOfImage) break;
    if (isStartOfFrame(marker)) {
      components = jpeg.byteAt(at + 8);
      progressive = isProgressive(marker);
    }
    if (marker == startOfScan && ++scans == 1 && !progressive && jpeg.byteAt(at + 3) >= components)
      return 0;
    at += 1 + static_cast<std::uint64_t>(jpeg.byteAt(at + 1) << 8 | jpeg.byteAt(at + 2));
  }
  return scans;
}

}  // namespace orvelin
