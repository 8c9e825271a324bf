#pragma once

#include <string>

#include "platform/core/folderitem.h"
#include "platform/core/ref.h"

namespace orvelin {

/// The item of that name among the application's own resource files, existing or not; nil when the
/// application's bundle is not found. The first search that finds it stores its resource folder in
/// `appFolder`, which later calls go by.
Ref<FolderItem> GetResource(Ref<FolderItem>& appFolder, const std::string& name);

}  // namespace orvelin
