#pragma once

#include <string_view>

#include "platform/core/picturemessages.h"

namespace vips {
class VImage;
}

namespace orvelin {

/// Whether a TIFF file can be taken, by its first directory; `Good` too if that can't be parsed.
PictureVerdict verdictOnTIFF(std::string_view tiff);

/// How many samples of a pixel are neither its colour nor its transparency, such as the selections
/// that an editor keeps. They are the last ones.
int countSpareSamples(std::string_view tiff);

/// Decodes the JPEG compression of old scanners, which libvips can't. A null image if the file has
/// another.
vips::VImage decodeOldJpegOf(std::string_view tiff);

}  // namespace orvelin
