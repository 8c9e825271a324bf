#pragma once

#include "photos/digiitem.h"
#include "platform/core/folderitem.h"
#include "platform/core/ref.h"

namespace orvelin {

/// Walks `folder` depth first, in the order of its listing, and appends an item to `tabItem` for
/// every file that opens as a picture; the items create their folders under `outFol`. Skips aliases
/// back into a folder being walked, endless chains of aliases, and what a killed build left
/// unfinished. A nil `folder` is a failure.
void BuildTab(const Ref<FolderItem>& folder, const Ref<FolderItem>& outFol, DigiItems& tabItem);

/// Whether the file can be opened as a picture and decoded; false for nil.
bool isOpenablePicture(const Ref<FolderItem>& f);

}  // namespace orvelin
