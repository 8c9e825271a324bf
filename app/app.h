#pragma once

#include "platform/core/ref.h"
#include "platform/ui/application.h"

namespace orvelin {

/// The class of the application object.
class App : public Application {
 public:
  /// The application object; nil before it is registered.
  static Ref<App> Instance() { return Registered().as<App>(); }
};

}  // namespace orvelin
