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

/// Converts to 8-bit sRGB, or 8-bit grey if the picture is grey without a profile, with transparent
/// parts on white. `image` must have known colours.
vips::VImage toScreen(const vips::VImage& image);

}  // namespace orvelin
