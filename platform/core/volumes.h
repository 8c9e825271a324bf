#pragma once

#include <filesystem>
#include <vector>

namespace orvelin {

/// The mount points of cards, sticks and external disks: those in /media and /run/media, where
/// desktops mount them; sorted. Reads the mount table only.
std::vector<std::filesystem::path> removableVolumes(
    const std::filesystem::path& mountTable = "/proc/self/mounts");

}  // namespace orvelin
