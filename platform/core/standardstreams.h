#pragma once

namespace orvelin {

/// Opens those of the descriptors 0 to 2 that are closed, on /dev/null, so that no other file gets
/// their numbers, and makes a write to a pipe without a reader fail instead of ending the process.
/// The first call of every program.
void secureStandardStreams();

}  // namespace orvelin
