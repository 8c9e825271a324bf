#pragma once

#include "platform/core/picturemessages.h"
#include "platform/pictures/picturefile.h"

namespace orvelin {

/// Checks the header of a BMP file.
PictureVerdict verdictOnBMP(PictureFile& bmp);

/// Decodes a BMP file. If it is truncated, logs a warning as libvips does; the missing part is
/// black or transparent, or has the first colour of the palette.
vips::VImage decodeBMP(PictureFile& bmp);

}  // namespace orvelin
