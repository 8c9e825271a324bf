#include "platform/core/descent.h"

#include <algorithm>
#include <cstddef>

namespace orvelin {

bool Descent::enter(const FolderItem& folder) {
  constexpr std::size_t maxDepth = 4096;  // deeper than any path: only symlinks lead there
  const auto identity = folder.identity();
  if (within_.size() > maxDepth || std::ranges::find(within_, identity) != within_.end())
    return false;
  within_.push_back(identity);
  return true;
}

void Descent::leave() { within_.pop_back(); }

}  // namespace orvelin
