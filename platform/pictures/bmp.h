#pragma once

#include "platform/core/picturemessages.h"
#include "platform/pictures/picturefile.h"

namespace orvelin {

/// Whether a BMP file can be taken, by its header.
PictureVerdict verdictOnBMP(PictureFile& bmp);

/// Decodes a BMP file. The part that is missing from a cut one is black or transparent; it counts
/// as a warning of libvips.
vips::VImage decodeBMP(PictureFile& bmp);

}  // namespace orvelin
