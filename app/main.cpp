#include "app/app.h"
#include "app/menubar1.h"
#include "app/window1.h"
#include "builder/filetypes.h"
#include "platform/ui/runtime.h"
#include "platform/ui/useraction.h"

using namespace orvelin;

namespace {

void mainSequence(Runtime& runtime) {
  FileTypes::install();
  const auto app = makeRef<App>();
  app->MenuBar(MenuBar1::Instance());
  Application::Register(app);
  Window1::Instance();
  runtime.runEventLoop();
}

void finish() {
  Window::releaseWindows();
  FileTypes::release();
  MenuBar1::release();
  Application::Register(nullptr);
}

}  // namespace

int main() {
  Runtime runtime;
  handleFailures([&] { mainSequence(runtime); });
  finish();
  return runtime.stop();
}
