#pragma once

namespace orvelin {

using BackgroundTask = void (*)();

/// Lets pending work of the program's surroundings run. Every long loop calls it once a pass; it
/// costs next to nothing when nothing waits.
void RuntimeBackgroundTask();

/// Sets what RuntimeBackgroundTask calls; null, as at start, for nothing.
void installBackgroundTask(BackgroundTask task);

}  // namespace orvelin
