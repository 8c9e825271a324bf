#pragma once

#include <string_view>

#include "platform/pictures/picturefile.h"

namespace orvelin {

/// The segment that makes a JPEG file a JFIF file, to insert after the first two bytes.
inline constexpr std::string_view jfifSegment{
    "\xFF\xE0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00", 18};

/// The number of scans if a decoder must read them all before it can return the first line; it then
/// holds the coefficients of the whole picture, and each scan costs a pass over it. 0 if the
/// picture decodes line by line from its first scan; the file is then read only up to that scan.
int countBufferedScans(PictureFile& jpeg);

}  // namespace orvelin
