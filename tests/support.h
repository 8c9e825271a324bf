#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "platform/core/folderitem.h"

namespace orvelin::test {

namespace fs = std::filesystem;

inline Ref<FolderItem> item(const fs::path& path) { return makeRef<FolderItem>(path); }

inline fs::path sample(const std::string& name) { return fs::path(ORVELIN_SAMPLES) / name; }

inline std::string read(const fs::path& path) {
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  return bytes.str();
}

inline void write(const fs::path& path, const std::string& bytes) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
}

using Tree = std::vector<std::string>;
/// The relative paths of everything in a folder, sorted; empty if there is no folder.
Tree treeOf(const fs::path& folder);

using Contents = std::map<std::string, std::string>;
/// The same with the content of each file, or "a folder".
Contents contentsOf(const fs::path& folder);

/// Sets the modification time, in seconds since 1970-01-01 00:00:00 UTC.
void setTime(const fs::path& path, std::int64_t seconds);

/// Installs `act` as the background task; an empty one removes it.
void atYields(std::function<void()> act);

/// Drops root's rights to bypass file permissions, until ~Scratch().
void becomeOrdinaryUser();

/// A temporary folder, deleted with its contents. Also initializes libvips, for tests that use it.
struct Scratch {
  Scratch();
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  ~Scratch();
  fs::path folder;
};

/// A test with its own temporary folder.
class FileTest : public testing::Test, protected Scratch {
 protected:
  /// Copies the sample `from` to `folder`/photos/`name`.
  void addPhoto(const std::string& name, const std::string& from) {
    write(folder / "photos" / name, read(sample(from)));
  }
};

}  // namespace orvelin::test
