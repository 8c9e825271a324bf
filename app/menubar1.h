#pragma once

#include "platform/ui/menus.h"

namespace orvelin {

/// The application's menu bar: the menu "Fichier" with the quit and about items.
class MenuBar1 : public MenuBar {
 public:
  MenuBar1();

  /// The single menu bar, created on the first call.
  static Ref<MenuBar1> Instance();
  /// Releases the single menu bar; the next call of Instance creates a new one.
  static void release();

 private:
  void Untitled1();
};

}  // namespace orvelin
