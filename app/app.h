#pragma once

#include "platform/core/ref.h"
#include "platform/ui/application.h"

namespace orvelin {

/// The application object of this program.
class App : public Application {
 public:
  /// The application object; nil before it is registered.
  static Ref<App> Instance() { return Registered().as<App>(); }
};

}  // namespace orvelin
