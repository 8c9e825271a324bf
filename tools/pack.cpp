#include <filesystem>
#include <iostream>

#include "archive/gonfleur.h"

using namespace orvelin;

/// Packs a folder into an archive.
int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: orvelin-pack FOLDER ARCHIVE\n";
    return 2;
  }
  const auto source = std::filesystem::absolute(argv[1]),
             target = std::filesystem::absolute(argv[2]);
  const Ref<FolderItem> folder = GetFolderItem(source);
  if (!folder->Directory()) {
    std::cerr << "orvelin-pack: " << argv[1] << " is not a folder\n";
    return 1;
  }
  // An older archive must not pass for the new one.
  if (std::filesystem::is_regular_file(target)) std::filesystem::remove(target);
  const Ref<FolderItem> archive = GetFolderItem(target);
  GonfleurClass().Degonfler(folder, archive);
  return archive->Exists() && !archive->Directory() ? 0 : 1;
}
