#include "builder/buildstate.h"

#include "platform/core/background.h"
#include "platform/core/text.h"

namespace orvelin {

namespace {

/// Whether the folder is the application's bundle: its PkgInfo contains the signature only.
bool isBundle(const FolderItem& folder) {
  const Ref<FolderItem> info = folder.Child("PkgInfo");
  if (!info) return false;
  const Ref<BinaryStream> stream = info->OpenAsBinaryFile();
  return stream && equalTexts(stream->Read(stream->Length()), "APPLQvzt");
}

Ref<FolderItem> findResourceFolder() {
  const Ref<FolderItem> base = GetFolderItem("");
  for (int i = 1; i <= base->Count(); ++i) {
    const Ref<FolderItem> entry = base->Item(i);
    // PkgInfo is at the top of the bundle, the resources are further down.
    if (entry->Directory() && isBundle(*entry)) return entry->Child("Contents")->Child("Resources");
    RuntimeBackgroundTask();
  }
  return nullptr;
}

}  // namespace

Ref<FolderItem> BuildState::GetResource(const std::string& name) {
  if (!appFolder) appFolder = findResourceFolder();
  if (appFolder) return appFolder->Child(name);
  report({"Impossible de trouver la ressource", name, "l’application est incomplète"});
  return nullptr;
}

}  // namespace orvelin
