#pragma once

#include "platform/core/file.h"
#include "platform/core/picturemessages.h"

namespace orvelin {

/// Sends a request to the picture process, the bundle's program `orvelin-pictures`. Waits for the
/// answer and runs the background task. Starts the process if it isn't running. The process handles
/// all requests until `endPictureProcess`; the kernel kills it if this program dies.
///
/// For Encode, writes the JPEG to `jpeg`; a write error is kept in `jpeg->error()`. If the process
/// crashes or stalls, truncates `jpeg` and sends the request once more, to a new process. Throws
/// NilObjectException if the process can't be started and has not answered since the last
/// `endPictureProcess`; after an answer, a failed start counts as a crash.
PictureAnswer askPictureProcess(PictureRequest request, const File& picture, File* jpeg = nullptr);

/// Kills the picture process if it is running, which frees its memory.
void endPictureProcess();

}  // namespace orvelin
