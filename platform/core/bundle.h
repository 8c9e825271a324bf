#pragma once

#include <filesystem>

namespace orvelin {

/// The application's bundle, the folder `Orvelin.app`. Derived from the executable's path, so it
/// does not depend on the current directory or on symlinks.
std::filesystem::path bundleFolder();
/// Returns `Contents/Resources/PATH` in the bundle.
std::filesystem::path bundleResource(const std::filesystem::path& path);

}  // namespace orvelin
