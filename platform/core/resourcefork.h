#pragma once

#include <string>

#include "platform/core/ref.h"

namespace orvelin {

/// The application's resources, each identified by a four-character type and a number: the files
/// `Contents/Resources/TYPE/NUMBER` of the bundle.
class ResourceFork {
 public:
  /// The resource's bytes; empty, and logged, if there is no such resource.
  std::string GetResource(const std::string& type, int id) const;
};

/// The running application's own resources.
Ref<ResourceFork> applicationResourceFork();

}  // namespace orvelin
