#include "platform/core/volumes.h"

#include <mntent.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>

namespace orvelin {

std::vector<std::string> removableVolumes(const char* table) {
  std::vector<std::string> volumes;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> mounts(::setmntent(table, "re"),
                                                               ::endmntent);
  mntent mount{};
  std::array<char, 8192> line;
  while (mounts && ::getmntent_r(mounts.get(), &mount, line.data(), int(line.size()))) {
    const std::string folder = mount.mnt_dir;
    if (folder.starts_with("/media/") || folder.starts_with("/run/media/"))
      volumes.push_back(folder);
  }
  std::ranges::sort(volumes);
  return volumes;
}

}  // namespace orvelin
