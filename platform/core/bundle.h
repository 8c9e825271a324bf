#pragma once

#include <filesystem>

namespace orvelin {

/// The application's bundle, the folder `Orvelin.app`, derived from the executable's path whatever
/// the current directory is and whichever symlink started the program.
std::filesystem::path bundleFolder();
/// What the application carries under that path among its resources.
std::filesystem::path bundleResource(const std::filesystem::path& path);

}  // namespace orvelin
