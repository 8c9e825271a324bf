#pragma once

namespace orvelin {

using BackgroundTask = void (*)();

/// Runs the installed background task, if any. Every long loop calls it once per pass, so the task
/// must return within nanoseconds if there is nothing to do.
void RuntimeBackgroundTask();

/// Sets what RuntimeBackgroundTask calls; null, the default, for nothing.
void installBackgroundTask(BackgroundTask task);

}  // namespace orvelin
