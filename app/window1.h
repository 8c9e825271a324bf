#pragma once

#include <string>

#include "builder/state.h"
#include "platform/ui/menus.h"
#include "platform/ui/window.h"

namespace orvelin {

/// The main window: three numbered steps, each usable once the steps before it are done. What the
/// builds work on, `tabItem`, `inFol`, `outFol` and `appFolder`, are members of its own.
class Window1 : public Window, public BuildState {
 public:
  /// The open main window; opened if there is none.
  static Ref<Window1> Instance();

  /// Finds the pictures of `folder` for `tabItem`.
  void BuildTab(const Ref<FolderItem>& folder);
  bool isOpenablePicture(const Ref<FolderItem>& f) const;
  /// A file among the application's own resources; nil when they are not found.
  Ref<FolderItem> GetResource(const std::string& name);

  Ref<MenuItem> FichierMenu() const;
  Ref<AppleMenuItem> AppleApropos() const;
  Ref<QuitMenuItem> FileQuit() const;
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
  bool _AppleApropos_Action();

  /// Lets the user choose a folder for the property; then enables the steps that can be done.
  void chooseFolder(const std::string& button, Ref<FolderItem>& property);
};

}  // namespace orvelin
