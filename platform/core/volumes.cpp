#include "platform/core/volumes.h"

#include <mntent.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <string_view>

namespace orvelin {

std::vector<std::filesystem::path> removableVolumes(const std::filesystem::path& mountTable) {
  std::vector<std::filesystem::path> volumes;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> mounts(
      ::setmntent(mountTable.c_str(), "re"), ::endmntent);
  mntent mount{};
  std::array<char, 8192> line;
  while (mounts && ::getmntent_r(mounts.get(), &mount, line.data(), int(line.size()))) {
    const std::string_view folder = mount.mnt_dir;
    if (folder.starts_with("/media/") || folder.starts_with("/run/media/"))
      volumes.emplace_back(folder);
  }
  std::ranges::sort(volumes, {}, &std::filesystem::path::native);
  return volumes;
}

}  // namespace orvelin
