#pragma once

#include <vector>

#include "platform/core/folderitem.h"

namespace orvelin {

/// The folders that a walk is in, from its start to the current one. Detects cycles of symlinks.
class Descent {
 public:
  /// Adds the folder. Returns false, without adding it, if the walk is already in it, or is at more
  /// than 4096 levels.
  bool enter(const FolderItem& folder);
  /// Removes the last folder.
  void leave();

 private:
  std::vector<FolderItem::Identity> within_;
};

}  // namespace orvelin
