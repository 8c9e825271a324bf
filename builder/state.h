#pragma once

#include "photos/digiitem.h"
#include "platform/core/folderitem.h"
#include "platform/core/ref.h"

namespace orvelin {

/// What the window holds for its builds.
struct BuildState {
  DigiItems tabItem;          ///< the pictures of the latest build
  Ref<FolderItem> inFol;      ///< the photo folder; nil until it is chosen
  Ref<FolderItem> outFol;     ///< the destination; from a build on, the DIGIFILM folder in it
  Ref<FolderItem> appFolder;  ///< the application's resource folder; nil until it is found
};

}  // namespace orvelin
