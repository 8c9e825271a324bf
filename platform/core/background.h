#pragma once

namespace orvelin {

using BackgroundTask = void (*)();

/// Runs the installed background task, if any. Loops over entries, pictures and blocks of a copy
/// call it once per pass, so it must take nanoseconds in most cases.
void RuntimeBackgroundTask();

/// Sets what RuntimeBackgroundTask calls; null, the default, for nothing.
void installBackgroundTask(BackgroundTask task);

}  // namespace orvelin
