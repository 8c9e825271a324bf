#pragma once

#include "photos/digiitem.h"
#include "platform/core/folderitem.h"

namespace orvelin {

/// Places the picture of every item and writes the order file, replacing an older one: a fixed
/// header, the record of every item in list order, a fixed trailer. Throws NilObjectException if
/// the file can't be created; only logs errors of writing to it.
void writeOrderFile(const FolderItem& orderFile, const DigiItems& tabItem);

}  // namespace orvelin
