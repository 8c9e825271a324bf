#pragma once

#include <cstdint>
#include <vector>

namespace vips {
class VImage;
}

namespace orvelin {

/// Makes a picture of sRGB pixels: bytes of red, green, blue and opacity, in this order.
vips::VImage fromRGBA(std::vector<std::uint32_t> pixels, int width, int height);

/// Whether `toScreen` can convert a picture with these pixels.
bool hasKnownColours(const vips::VImage& image);

/// Converts to 8-bit sRGB, or to 8-bit grey if the picture is grey, in integers and without a
/// profile. Puts transparent parts on white. hasKnownColours(image) must be true.
vips::VImage toScreen(const vips::VImage& image);

}  // namespace orvelin
