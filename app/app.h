#pragma once

#include "platform/core/ref.h"
#include "platform/ui/application.h"

namespace orvelin {

/// The application object's class; its menu bar is all that it has of its own.
class App : public Application {
 public:
  /// The application object; nil before start-up has registered it.
  static Ref<App> Instance() { return Registered().as<App>(); }
};

}  // namespace orvelin
