#pragma once

#include <string_view>

#include "platform/pictures/picturefile.h"

namespace orvelin {

/// The segment that makes a JPEG file a JFIF file, to insert after the first two bytes.
inline constexpr std::string_view jfifSegment{
    "\xFF\xE0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00", 18};

/// Returns how many scans a decoder must read before it can return the first line. Each costs a
/// pass over the whole picture, whose coefficients the decoder holds. Returns 0 if the first scan
/// can be decoded line by line; reads the file no further than that scan's header then.
int countBufferedScans(PictureFile& jpeg);

}  // namespace orvelin
