#pragma once

#include <filesystem>

namespace orvelin {

/// The application's bundle, the folder `Orvelin.app`, told from the running program's own place
/// whatever the current directory is and whichever link it was started through.
std::filesystem::path bundleFolder();
/// What the application carries under that path among its resources.
std::filesystem::path bundleResource(const std::filesystem::path& path);

}  // namespace orvelin
