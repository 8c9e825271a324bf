#pragma once

#include <string_view>

#include "platform/pictures/picturefile.h"

namespace orvelin {

/// The segment that makes a JPEG file a JFIF file, to insert after the first two bytes.
inline constexpr std::string_view jfifSegment{
    "\xFF\xE0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00", 18};

/// Returns the number of scans that a decoder must read before it can return the first line. It
/// holds all coefficients, and each scan is a pass over them. Returns 0 if the first scan can be
/// decoded line by line, and then reads no further than the header of that scan.
int countBufferedScans(PictureFile& jpeg);

}  // namespace orvelin
