#pragma once

#include "platform/core/picturemessages.h"
#include "platform/pictures/picturefile.h"

namespace orvelin {

/// Checks the first directory of a TIFF file. `Good` if it can't be parsed: the loader will fail.
PictureVerdict verdictOnTIFF(PictureFile& tiff);

/// The number of samples at the end of each pixel that are neither colour nor transparency, such as
/// selections saved by an editor.
int countSpareSamples(PictureFile& tiff);

/// Decodes old-style JPEG compression, which libvips can't. Returns a null image if the file has
/// another compression.
vips::VImage decodeOldJpegOf(PictureFile& tiff);

}  // namespace orvelin
