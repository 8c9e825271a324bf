#pragma once

#include "photos/digiitem.h"
#include "platform/core/folderitem.h"

namespace orvelin {

/// Writes the order file anew: a fixed header, the record of every item in list order, a fixed
/// trailer. Producing its record puts each item's picture in its place. A nil failure when the file
/// can't be created; writes that fail later are not looked at.
void writeOrderFile(const FolderItem& orderFile, const DigiItems& tabItem);

}  // namespace orvelin
