#include <filesystem>
#include <iostream>

#include "archive/gonfleur.h"

using namespace orvelin;

/// Packs a folder into an archive: orvelin-pack FOLDER ARCHIVE, both absolute paths.
int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: orvelin-pack FOLDER ARCHIVE\n";
    return 2;
  }
  const Ref<FolderItem> folder = GetFolderItem(argv[1]);
  if (!folder->Directory()) {
    std::cerr << "orvelin-pack: " << argv[1] << " is not a folder\n";
    return 1;
  }
  // An older archive must not pass for the new one.
  if (std::filesystem::is_regular_file(argv[2])) std::filesystem::remove(argv[2]);
  const Ref<FolderItem> archive = GetFolderItem(argv[2]);
  GonfleurClass().Degonfler(folder, archive);
  return archive->Exists() && !archive->Directory() ? 0 : 1;
}
