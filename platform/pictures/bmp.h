#pragma once

#include <string_view>

#include "platform/core/picturemessages.h"

namespace vips {
class VImage;
}

namespace orvelin {

/// Whether a BMP file can be taken, by its header.
PictureVerdict verdictOnBMP(std::string_view bmp);

/// Decodes a BMP file. The part that is missing from a cut one is black or transparent; it counts
/// as a warning of libvips.
vips::VImage decodeBMP(std::string_view bmp);

}  // namespace orvelin
