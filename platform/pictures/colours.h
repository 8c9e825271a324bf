#pragma once

#include <cstdint>
#include <vector>

namespace vips {
class VImage;
}

namespace orvelin {

/// A picture of pixels in memory, each with its red, green, blue and opacity in sRGB, in this order
/// of bytes.
vips::VImage fromRGBA(std::vector<std::uint32_t> pixels, int width, int height);

/// Whether `forScreen` knows which tones the numbers of a decoded picture stand for.
bool hasKnownTones(const vips::VImage& image);

/// The picture in 8-bit sRGB, or grey where it is grey and has no profile; transparent parts on
/// white. `image` must have known tones.
vips::VImage forScreen(const vips::VImage& image);

}  // namespace orvelin
