#include "platform/core/background.h"

namespace orvelin {

namespace {

BackgroundTask installed = nullptr;

}

void RuntimeBackgroundTask() {
  if (installed) installed();
}

void installBackgroundTask(BackgroundTask task) { installed = task; }

}  // namespace orvelin
