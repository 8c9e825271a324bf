#pragma once

#include <string>

#include "platform/core/folderitem.h"
#include "platform/core/ref.h"

namespace orvelin {

/// Lets the user choose an existing folder in the desktop's own dialog; nil when the user cancels.
Ref<FolderItem> SelectFolder();

/// Shows `text`, UTF-8 and never taken for markup, in a modal box with one button and waits until
/// the user closes it. Carriage returns begin new lines.
void MsgBox(const std::string& text);

}  // namespace orvelin
