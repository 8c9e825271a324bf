#pragma once

namespace vips {
class VImage;
}

namespace orvelin {

/// Whether `forScreen` knows which tones the numbers of a decoded picture stand for.
bool hasKnownTones(const vips::VImage& image);

/// The picture in 8-bit sRGB, or grey where it is grey and has no profile; transparent parts on
/// white. `image` must have known tones.
vips::VImage forScreen(const vips::VImage& image);

}  // namespace orvelin
