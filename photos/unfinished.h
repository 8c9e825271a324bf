#pragma once

#include "platform/core/folderitem.h"

namespace orvelin {

/// Whether the file is a placed picture that a killed build left unfinished: a regular file
/// `.N.jpg.orvelin`, N of three or more digits, in a folder `dcim/Nk6230`.
bool isUnfinished(const FolderItem& file);

/// Deletes such files from the numbered folders in `root`'s "dcim".
void deleteUnfinished(const FolderItem& root);

}  // namespace orvelin
