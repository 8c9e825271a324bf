#pragma once

#include <gtest/gtest.h>

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
/// All that lies below a folder, as sorted relative paths; nothing where there is no folder.
Tree treeOf(const fs::path& folder);

using Contents = std::map<std::string, std::string>;
/// The same, each with the bytes of its file.
Contents contentsOf(const fs::path& folder);

/// Sets a file's modification time, in seconds since 1970 UTC.
void setTime(const fs::path& path, std::int64_t seconds);

/// Calls `act` at each yield of the program; nothing where `act` is empty.
void atYields(std::function<void()> act);

/// Leaves this thread the rights of an ordinary owner of its files, also where root runs the tests;
/// until the scratch folder goes.
void becomeOrdinaryUser();

/// An empty folder, removed with all it holds. Starts libvips, which tests use by themselves.
struct Scratch {
  Scratch();
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  ~Scratch();
  fs::path folder;
};

/// A test on real files, in a folder of its own.
class FileTest : public testing::Test, protected Scratch {
 protected:
  /// Puts a sample into the folder `photos` of the scratch folder.
  void addPhoto(const std::string& name, const std::string& from) {
    write(folder / "photos" / name, read(sample(from)));
  }
};

}  // namespace orvelin::test
