#pragma once

#include "platform/core/folderitem.h"

namespace orvelin {

/// Whether this is the temporary file of a picture that a killed build was placing: a regular file
/// `.N.jpg.orvelin`, N a number of three or more digits, in a folder `dcim/Mk6230`, M a number.
bool isUnfinished(const FolderItem& file);

/// Deletes such files from the numbered folders in the folder "dcim" of `root`.
void deleteUnfinished(const FolderItem& root);

}  // namespace orvelin
