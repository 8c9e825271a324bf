#include "platform/ui/application.h"

namespace orvelin {

namespace {

Ref<Application> registered;

}

void Application::Register(const Ref<Application>& application) { registered = application; }

Ref<Application> Application::Registered() { return registered; }

}  // namespace orvelin
