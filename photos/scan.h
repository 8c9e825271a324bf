#pragma once

#include <utility>

#include "photos/digiitem.h"
#include "platform/core/folderitem.h"
#include "platform/core/ref.h"

namespace orvelin {

/// The two folders that the user chooses, and the pictures that the scan finds.
struct ScanState {
  ScanState() = default;
  ScanState(Ref<FolderItem> photos, Ref<FolderItem> destination)
      : inFol(std::move(photos)), outFol(std::move(destination)) {}

  DigiItems tabItem;       ///< the pictures of the running or last build
  Ref<FolderItem> inFol;   ///< the photo folder; nil until it is chosen
  Ref<FolderItem> outFol;  ///< the destination; a build replaces it by its child DIGIFILM

  /// Walks `folder` depth first, in the order of its listing, and appends an item to `tabItem` for
  /// each file that opens as a picture. The items create their folders in `outFol`. Skips a folder
  /// that the walk is already in (a cycle of symlinks), folders more than 4096 levels deep, and the
  /// temporary files of a killed build. Throws NilObjectException if `folder` is nil.
  void BuildTab(const Ref<FolderItem>& folder);

  /// Whether the file opens and decodes as a picture; false for nil.
  static bool isOpenablePicture(const Ref<FolderItem>& f);
};

}  // namespace orvelin
