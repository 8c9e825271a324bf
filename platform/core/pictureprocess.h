#pragma once

#include "platform/core/file.h"
#include "platform/core/picturemessages.h"

namespace orvelin {

/// Makes a request of the picture process, the program `orvelin-pictures` of the bundle, and waits
/// for the answer. Starts the process if there is none; it is confined, and serves all pictures
/// until `endPictureProcess`. The kernel kills it when this program ends.
///
/// Appends the bytes of a JPEG to `jpeg`, which keeps its error if they can't be written. After a
/// crash or a stall, empties `jpeg` and makes the request once more, in a new process. Throws
/// NilObjectException if the process can't be started, unless it could be before.
///
/// Runs the background task while it waits.
PictureAnswer askPictureProcess(PictureRequest request, const File& picture, File* jpeg = nullptr);

/// Ends the process, if there is one, and with it what it holds in memory.
void endPictureProcess();

}  // namespace orvelin
