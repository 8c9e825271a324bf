#pragma once

#include <string>

#include "photos/scan.h"
#include "platform/core/folderitem.h"
#include "platform/core/ref.h"

namespace orvelin {

/// The window's state: what a build uses and what it keeps for the next one.
struct BuildState : ScanState {
  using ScanState::ScanState;

  Ref<FolderItem> appFolder;  ///< the bundle's resource folder; nil until GetResource finds it

  /// Returns the file `name` of the bundle's resource folder, whether it exists or not. If the
  /// bundle is not found, logs that and returns nil. Keeps the resource folder in `appFolder`.
  Ref<FolderItem> GetResource(const std::string& name);
};

}  // namespace orvelin
