#pragma once

#include "platform/core/picturemessages.h"
#include "platform/pictures/picturefile.h"

namespace orvelin {

/// Whether a TIFF file can be taken, by its first directory; `Good` too if that can't be parsed.
PictureVerdict verdictOnTIFF(PictureFile& tiff);

/// How many samples of a pixel are neither its colour nor its transparency, such as the selections
/// that an editor keeps. They are the last ones.
int countSpareSamples(PictureFile& tiff);

/// Decodes the JPEG compression of old scanners, which libvips can't. A null image if the file has
/// another.
vips::VImage decodeOldJpegOf(PictureFile& tiff);

}  // namespace orvelin
