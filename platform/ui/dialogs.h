#pragma once

#include <string>

#include "platform/core/folderitem.h"
#include "platform/core/ref.h"

namespace orvelin {

/// Opens a folder dialog, the desktop's own if it has one. Returns an existing folder, or nil if
/// the user cancels.
Ref<FolderItem> SelectFolder();

/// Shows a modal message box with one button and waits until the user closes it. `text` is plain
/// text in UTF-8; carriage returns separate lines.
void MsgBox(const std::string& text);

}  // namespace orvelin
