#pragma once

#include <string>
#include <vector>

namespace orvelin {

/// The mount points of cards, sticks and disks that the desktop has mounted: those in /media and
/// /run/media, sorted. `table` lists all mounts; nothing else is read.
std::vector<std::string> removableVolumes(const char* table = "/proc/self/mounts");

}  // namespace orvelin
