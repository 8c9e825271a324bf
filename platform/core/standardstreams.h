#pragma once

namespace orvelin {

/// Opens /dev/null as stdin, stdout and stderr where they are closed, so that no other file gets
/// their numbers. Ignores SIGPIPE, and no longer SIGCHLD, without which children have no exit
/// status. Call it first in main(), except in the picture process, which gets its streams from
/// Orvelin.
void secureStandardStreams();

}  // namespace orvelin
