#pragma once

namespace orvelin {

using BackgroundTask = void (*)();

/// Runs the installed background task, if any. Every long loop calls it once per pass; with nothing
/// to do it takes nanoseconds.
void RuntimeBackgroundTask();

/// Sets what RuntimeBackgroundTask calls; null, the default, for nothing.
void installBackgroundTask(BackgroundTask task);

}  // namespace orvelin
