#pragma once

#include <string>

#include "photos/scan.h"
#include "platform/core/folderitem.h"
#include "platform/core/ref.h"

namespace orvelin {

/// The state that the window keeps for its builds.
struct BuildState : ScanState {
  Ref<FolderItem> appFolder;  ///< the application's resource folder; nil until it is found

  /// The item of that name, which may not exist, in the resource folder of the application. Nil,
  /// and logged, if the application's bundle is not found. Searches for the bundle until it has
  /// been found, then uses `appFolder`.
  Ref<FolderItem> GetResource(const std::string& name);
};

}  // namespace orvelin
