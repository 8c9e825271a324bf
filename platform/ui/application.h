#pragma once

#include "platform/core/ref.h"
#include "platform/ui/menus.h"

namespace orvelin {

/// The application object. A program has one and registers it while it runs.
class Application {
 public:
  Application() = default;
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;
  virtual ~Application() = default;

  Ref<orvelin::MenuBar> MenuBar() const { return menuBar_; }
  void MenuBar(const Ref<orvelin::MenuBar>& menuBar) { menuBar_ = menuBar; }

  static void Register(const Ref<Application>& application);
  /// The registered object; nil if there is none.
  static Ref<Application> Registered();

 private:
  Ref<orvelin::MenuBar> menuBar_;
};

}  // namespace orvelin
