#include <filesystem>
#include <iostream>
#include <system_error>

#include "archive/gonfleur.h"
#include "platform/core/descent.h"
#include "platform/core/devicesync.h"
#include "platform/core/standardstreams.h"

using namespace orvelin;
namespace fs = std::filesystem;

namespace {

/// Whether the folder can be packed: every file can be opened, and there is no cycle of symlinks.
/// Logs the first problem.
bool isPackable(FolderItem& folder, Descent& descent) {
  if (!descent.enter(folder)) {
    report({"Impossible d’archiver le dossier", folder.Path(), "des alias tournent en rond"});
    return false;
  }
  const int count = folder.Count();
  for (int i = 1; i <= count; ++i) {
    const Ref<FolderItem> entry = folder.Item(i);
    if (entry->Directory()) {
      if (!isPackable(*entry, descent)) return false;
    } else if (const auto file = entry->OpenAsBinaryFile(); !file) {
      report(file.why());
      return false;
    }
  }
  descent.leave();
  return true;
}

/// Packs the folder. Returns false, and logs why, if the archive is not on the device.
bool pack(FolderItem& folder, const FolderItem& archive) try {
  DeviceSync device(*archive.Parent());
  const Ref<BinaryStream> stream = archive.CreateBinaryFile("text");
  GonfleurClass::packFolder(*stream, folder);
  stream->Close();
  device.finish(archive);
  return !stream->failed();
} catch (const NilObjectException& failure) {
  report(failure.what());
  return false;
}

}  // namespace

/// Packs a folder into an archive.
int main(int argc, char** argv) {
  secureStandardStreams();
  if (argc != 3) {
    std::cerr << "usage: orvelin-pack FOLDER ARCHIVE\n";
    return 2;
  }
  const auto fail = [](const char* name, const char* why) {
    std::cerr << "orvelin-pack: " << name << " " << why << "\n";
    return 1;
  };
  std::error_code error;
  const fs::path source = fs::canonical(argv[1], error);  // "." has no name to store
  FolderItem folder(source);
  if (error || !folder.Directory()) return fail(argv[1], "is not a folder");
  const fs::path target = fs::absolute(argv[2], error);
  if (error || fs::is_directory(target, error) || !target.has_filename())
    return fail(argv[2], "is not a file");
  const auto removeArchive = [&] {
    if (fs::is_regular_file(target, error)) fs::remove(target, error);
  };
  removeArchive();  // on failure no older archive must remain
  if (Descent descent; !isPackable(folder, descent)) return fail(argv[1], "can't be packed");
  if (pack(folder, FolderItem(target))) return 0;
  removeArchive();
  return fail(argv[2], "could not be written");
}
