#include "photos/digiitem.h"

#include <utility>

#include "platform/core/text.h"

namespace orvelin {

namespace {

/// The child of that name, made as a folder if there is none yet.
Ref<FolderItem> folderIn(const FolderItem& parent, const std::string& name) {
  Ref<FolderItem> folder = parent.Child(name);
  if (!folder->Exists()) folder->CreateAsFolder();
  return folder;
}

}  // namespace

DigiItem::DigiItem(Ref<FolderItem> theFile, const Ref<FolderItem>& root, std::int32_t index)
    : theFol(std::move(theFile)), fileIndex(index + 1) {
  // Numbering from 1 leaves the first folder one picture short, and folder numbers are all even.
  const double number = 100.0 + 2.0 * Floor(fileIndex / 51.0);
  retFolder = Str(number) + "k6230";
  ParentFolder = folderIn(*root, "dcim");
  ParentFolder = folderIn(*ParentFolder, retFolder);
}

std::string DigiItem::placedName() const { return Format(fileIndex, "000") + ".jpg"; }

}  // namespace orvelin
