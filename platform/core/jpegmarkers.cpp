#include "platform/core/jpegmarkers.h"

#include <cstddef>

namespace orvelin {

int countScans(std::string_view jpeg) {
  constexpr char startOfScan = '\xDA';
  constexpr char endOfImage = '\xD9';
  const auto standsAlone = [](char marker) {  // filling, stuffing, restart and start markers
    return marker == '\xFF' || marker == '\x00' || marker == '\x01' ||
           (marker >= '\xD0' && marker <= '\xD8');
  };
  int scans = 0;
  std::size_t at = 0;
  while ((at = jpeg.find('\xFF', at)) != std::string_view::npos && at + 3 < jpeg.size()) {
    const char marker = jpeg[++at];
    if (standsAlone(marker)) {
      if (marker != '\xFF') ++at;
      continue;
    }
    if (marker == endOfImage) break;
    if (marker == startOfScan) ++scans;
    const auto high = static_cast<unsigned char>(jpeg[at + 1]);
    const auto low = static_cast<unsigned char>(jpeg[at + 2]);
    at += 1 + static_cast<std::size_t>(high << 8 | low);
  }
  return scans;
}

}  // namespace orvelin
