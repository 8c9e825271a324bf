#pragma once

#include <string_view>

namespace orvelin {

/// The segment that makes a JPEG file a JFIF file; belongs right after the first two bytes.
inline constexpr std::string_view jfifSegment{
    "\xFF\xE0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00", 18};

struct JpegScans {
  int count = 0;          ///< each costs a decoder a pass over the whole picture
  bool buffered = false;  ///< whether a decoder must hold the coefficients of the whole picture
};

/// The scans that a JPEG file announces.
JpegScans scansOf(std::string_view jpeg);

}  // namespace orvelin
