#pragma once

#include <vector>

#include "platform/core/folderitem.h"

namespace orvelin {

/// The folders from the start of a walk down to the current one. Keeps a walk that follows aliases
/// from going round in circles.
class Descent {
 public:
  /// Adds the folder. False, without adding it, when the walk is in that folder already, or deeper
  /// than paths can be, which only a chain of aliases is.
  bool enter(const FolderItem& folder);
  /// Removes the folder added last.
  void leave();

 private:
  std::vector<FolderItem::Identity> within_;
};

}  // namespace orvelin
