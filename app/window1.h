#pragma once

#include <string>

#include "builder/buildstate.h"
#include "platform/ui/menus.h"
#include "platform/ui/window.h"

namespace orvelin {

/// The main window with its three numbered steps; each is enabled once the steps before it are
/// done. BuildState has the state that the steps set and a build uses.
class Window1 : public Window, public BuildState {
 public:
  /// The main window; opens it if it is not open.
  static Ref<Window1> Instance();

  Ref<MenuItem> FichierMenu() const;
  Ref<AppleMenuItem> AppleApropos() const;
  Ref<QuitMenuItem> FileQuit() const;
  /// Nil: the menu bar has no such item.
  Ref<MenuItem> UntitledMenu0() const;

 protected:
  void Layout() override;
  void CreateControls() override;
  void AddMenuHandlers() override;
  void Event_Close() override;
  void Event_EnableMenuItems() override;

 private:
  void _CreateControls0();
  void PushButton1_Action();
  void PushButton2_Action();
  void PushButton3_Action();
  /// Shows the about box. Returns false; the result is ignored.
  bool _AppleApropos_Action();

  /// Opens the folder dialog for the property, then enables the steps that can be done.
  void chooseFolder(const std::string& button, Ref<FolderItem>& property);
};

}  // namespace orvelin
