#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/core/ref.h"

class QAction;
class QMenu;
class QMenuBar;

namespace orvelin {

/// A menu item. It becomes a menu when an item is appended to it. Texts are UTF-8.
class MenuItem {
 public:
  MenuItem();
  MenuItem(const MenuItem&) = delete;
  MenuItem& operator=(const MenuItem&) = delete;
  virtual ~MenuItem();

  const std::string& Name() const { return name_; }
  void Name(const std::string& name) { name_ = name; }
  /// Whether MenuBar::autoEnable enables the item.
  bool AutoEnable() const { return autoEnable_; }
  void AutoEnable(bool autoEnable) { autoEnable_ = autoEnable; }
  void Text(const std::string& text);
  /// Sets the shortcut, such as "Cmd+Q", or none if empty. Cmd is the command key of the platform.
  void KeyboardShortcut(const std::string& shortcut);
  bool Enabled() const;
  void Enabled(bool enabled);
  void Append(const Ref<MenuItem>& item);

  const std::vector<Ref<MenuItem>>& items() const { return items_; }
  QAction& action() const { return *action_; }
  /// Null if there are no items.
  QMenu* menu() const { return menu_.get(); }

 private:
  std::string name_;
  bool autoEnable_ = false;
  std::vector<Ref<MenuItem>> items_;
  std::unique_ptr<QAction> action_;
  std::unique_ptr<QMenu> menu_;
};

/// An item that quits the program.
class QuitMenuItem : public MenuItem {
 public:
  QuitMenuItem();
};

/// An item that is shown in the application menu if the platform has one.
class AppleMenuItem : public MenuItem {
 public:
  AppleMenuItem();
};

class MenuBar {
 public:
  MenuBar();
  MenuBar(const MenuBar&) = delete;
  MenuBar& operator=(const MenuBar&) = delete;
  virtual ~MenuBar();

  void Append(const Ref<MenuItem>& item);
  /// The item of that name in the bar itself; nil if there is none.
  Ref<MenuItem> Child(const std::string& name) const;
  /// The item of that name in the bar or its menus; nil if there is none.
  Ref<MenuItem> find(const std::string& name) const;

  /// Enables the items that are auto-enabled.
  void autoEnable();
  /// Calls `handler` with the name of an item that the user chooses.
  void onChosen(const std::function<void(const std::string& name)>& handler);
  /// Calls `handler` before a menu is shown.
  void onShowing(const std::function<void()>& handler);
  QMenuBar& widget() const { return *widget_; }

 private:
  std::vector<Ref<MenuItem>> items_;
  std::unique_ptr<QMenuBar> widget_;
};

}  // namespace orvelin
