#include <iostream>
#include <string>

#include "archive/gonfleur.h"
#include "builder/driver.h"
#include "platform/core/standardstreams.h"

using namespace orvelin;

/// What the program does without its window, for those who measure or disturb it. Paths are
/// absolute; the destination exists.
int main(int argc, char** argv) try {
  secureStandardStreams();
  const std::string work = argc == 4 ? argv[1] : "";
  if (work != "build" && work != "unpack" && work != "pack") {
    std::cerr << "usage: orvelin-work build PHOTOS DESTINATION\n"
                 "       orvelin-work unpack ARCHIVE DESTINATION\n"
                 "       orvelin-work pack FOLDER ARCHIVE\n";
    return 2;
  }
  const Ref<FolderItem> from = GetFolderItem(argv[2]), to = GetFolderItem(argv[3]);
  if (work == "build") {
    BuildState state{{}, from, to, nullptr};
    buildDigiFilm(state);
  } else if (work == "unpack") {
    GonfleurClass().Gonfler(from, to);
  } else {
    GonfleurClass().Degonfler(from, to);
  }
  return 0;
} catch (const NilObjectException& failure) {
  std::cerr << failure.what() << "\n";
  return 1;
}
