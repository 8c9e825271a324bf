#pragma once

#include "photos/digiitem.h"
#include "platform/core/folderitem.h"

namespace orvelin {

/// Replaces the order file: a fixed header, the record of every item in list order, a fixed
/// trailer. Producing its record puts each item's picture in its place. A nil failure when the file
/// can't be created; a write that fails later is only logged.
void writeOrderFile(const FolderItem& orderFile, const DigiItems& tabItem);

}  // namespace orvelin
