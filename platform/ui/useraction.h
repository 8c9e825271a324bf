#pragma once

#include <functional>

namespace orvelin {

/// Runs the action of a click or a menu item with Runtime::perform and handleFailures.
void performAction(const std::function<void()>& action);

/// Runs `step`. If it throws, shows the failure to the user and quits with status 1.
void handleFailures(const std::function<void()>& step);

}  // namespace orvelin
