#pragma once

#include "photos/digiitem.h"
#include "platform/core/folderitem.h"

namespace orvelin {

class DeviceSync;

/// Places the picture of every item and writes the order file, replacing an older one: a fixed
/// header, the record of every item in list order, a fixed trailer. Starts `device` after each
/// picture, so that it writes while the next one is converted. Throws NilObjectException if the
/// file can't be created, or if the device fails; only logs errors of writing to the file.
void writeOrderFile(const FolderItem& orderFile, const DigiItems& tabItem, DeviceSync& device);

}  // namespace orvelin
