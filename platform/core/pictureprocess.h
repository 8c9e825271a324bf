#pragma once

#include "platform/core/file.h"
#include "platform/core/picturemessages.h"

namespace orvelin {

/// Sends a request to the picture process, the bundle's program `orvelin-pictures`, and waits for
/// the answer, running the background task. Starts the process if it isn't running; it is confined
/// and handles all requests until `endPictureProcess`. The kernel kills it when this program ends.
///
/// For Encode, appends the JPEG to `jpeg`; a write error is kept in `jpeg->error()`. If the process
/// crashes or stalls, truncates `jpeg` and sends the request once more, to a new process. Throws
/// NilObjectException if the process can't be started, unless it was started before.
PictureAnswer askPictureProcess(PictureRequest request, const File& picture, File* jpeg = nullptr);

/// Kills the picture process if it is running, which frees its memory.
void endPictureProcess();

}  // namespace orvelin
