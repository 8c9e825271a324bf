#pragma once

namespace orvelin {

/// Opens /dev/null as stdin, stdout and stderr where they are closed, so that no other file gets
/// their numbers, and ignores SIGPIPE. Every program calls it first.
void secureStandardStreams();

}  // namespace orvelin
