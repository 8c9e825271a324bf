#pragma once

#include <string_view>

#include "platform/pictures/picturefile.h"

namespace orvelin {

/// The segment that makes a JPEG file a JFIF file; belongs right after the first two bytes.
inline constexpr std::string_view jfifSegment{
    "\xFF\xE0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00", 18};

/// How many scans a decoder must read before it can give the first line, while it holds the
/// coefficients of the whole picture. Each costs a pass over the picture. 0 if it decodes line by
/// line, the first scan alone; the file is read no further than that scan's header then.
int countBufferedScans(PictureFile& jpeg);

}  // namespace orvelin
