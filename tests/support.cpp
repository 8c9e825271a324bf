#include "support.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <system_error>
#include <vips/vips8>

#include "platform/core/background.h"

namespace orvelin::test {

namespace {

/// Sets the effective capabilities of this thread, as far as they are permitted.
void setEffective(std::uint32_t capabilities) {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct data[2]{};
  EXPECT_EQ(::syscall(SYS_capget, &header, data), 0);
  for (auto& half : data) half.effective = half.permitted & capabilities;
  EXPECT_EQ(::syscall(SYS_capset, &header, data), 0);
}

}  // namespace

void atYields(std::function<void()> act) {
  static std::function<void()> task;
  task = std::move(act);
  installBackgroundTask(task ? +[] { task(); } : nullptr);
}

void setTime(const fs::path& path, std::int64_t seconds) {
  const timespec times[] = {{seconds, 0}, {seconds, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

Contents contentsOf(const fs::path& folder) {
  Contents contents;
  std::error_code none;
  for (const auto& entry : fs::recursive_directory_iterator(folder, none))
    contents[entry.path().lexically_relative(folder)] =
        entry.is_regular_file() ? read(entry.path()) : "a folder";
  return contents;
}

Tree treeOf(const fs::path& folder) {
  Tree tree;
  for (const auto& [path, bytes] : contentsOf(folder)) tree.push_back(path);
  return tree;
}

void becomeOrdinaryUser() { setEffective(0); }

Scratch::Scratch() {
  forgetReports();
  VIPS_INIT("orvelin tests");
  vips_cache_set_max(0);  // tests change files
  // In memory: the end of a build would also write to the disk what a compiler has just written.
  const fs::path base =
      ::access("/dev/shm", W_OK) == 0 ? fs::path("/dev/shm") : fs::temp_directory_path();
  std::string pattern = (base / "orvelin é%41-XXXXXX").string();
  folder = ::mkdtemp(pattern.data());
}

Scratch::~Scratch() {
  setEffective(~0U);
  atYields({});
  fs::remove_all(folder);
}

}  // namespace orvelin::test
