#include "platform/core/bundle.h"

#include <system_error>

namespace orvelin {

std::filesystem::path bundleFolder() {
  // The executable is in Contents/Linux.
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  return program.parent_path().parent_path().parent_path();
}

std::filesystem::path bundleResource(const std::filesystem::path& path) {
  return bundleFolder() / "Contents/Resources" / path;
}

}  // namespace orvelin
