#include <iostream>
#include <string>

#include "archive/gonfleur.h"
#include "builder/driver.h"
#include "platform/core/devicesync.h"
#include "platform/core/standardstreams.h"

using namespace orvelin;

/// Builds, unpacks or packs without a window, for the tests and the benchmark. Pass absolute paths.
/// The destination folder must exist. Returns 0 if everything that was written is on the device; a
/// write that fails at once is only logged.
int main(int argc, char** argv) try {
  secureStandardStreams();
  const std::string command = argc == 4 ? argv[1] : "";
  if (command != "build" && command != "unpack" && command != "pack") {
    std::cerr << "usage: orvelin-work build PHOTOS DESTINATION\n"
                 "       orvelin-work unpack ARCHIVE DESTINATION\n"
                 "       orvelin-work pack FOLDER ARCHIVE\n";
    return 2;
  }
  const Ref<FolderItem> from = GetFolderItem(argv[2]), to = GetFolderItem(argv[3]);
  if (command == "build") {
    BuildState state(from, to);
    buildDigiFilm(state);
    return 0;
  }
  const bool unpacks = command == "unpack";
  DeviceSync device(unpacks ? *to : *to->Parent());
  if (unpacks)
    GonfleurClass().Gonfler(from, to);
  else
    GonfleurClass().Degonfler(from, to);
  device.finish(*to);
  return 0;
} catch (const NilObjectException& failure) {
  std::cerr << failure.what() << "\n";
  return 1;
}
