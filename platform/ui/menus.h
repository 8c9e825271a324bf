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

/// An item of a menu, or a menu once items are appended to it. Texts are UTF-8.
class MenuItem {
 public:
  MenuItem();
  MenuItem(const MenuItem&) = delete;
  MenuItem& operator=(const MenuItem&) = delete;
  virtual ~MenuItem();

  const std::string& Name() const { return name_; }
  void Name(const std::string& name) { name_ = name; }
  /// An auto-enabled item is usable whenever the menus are brought up to date.
  void AutoEnable(bool autoEnable) { autoEnable_ = autoEnable; }
  void Text(const std::string& text);
  /// "Cmd+Q", or empty for none; Cmd stands for the platform's own key for commands.
  void KeyboardShortcut(const std::string& shortcut);
  bool Enabled() const;
  void Enabled(bool enabled);
  void Append(const Ref<MenuItem>& item);

  /// The item of that name here or further down; nil if there is none.
  Ref<MenuItem> find(const std::string& name) const;
  void autoEnable();
  /// What choosing the item, or showing its menu, calls; handed on to all items below.
  void onChosen(const std::function<void(const std::string& name)>& chosen);
  void onShowing(const std::function<void()>& showing);
  QAction& action() const { return *action_; }

 private:
  std::string name_;
  bool autoEnable_ = false;
  std::vector<Ref<MenuItem>> items_;
  std::unique_ptr<QAction> action_;
  std::unique_ptr<QMenu> menu_;  // once there are items
};

/// An item that quits the program by itself.
class QuitMenuItem : public MenuItem {
 public:
  QuitMenuItem();
};

/// An item that belongs in the application's own menu, where the platform has one.
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
  /// The bar's own item of that name; nil if there is none.
  Ref<MenuItem> Child(const std::string& name) const;
  /// The item of that name anywhere in the bar; nil if there is none.
  Ref<MenuItem> find(const std::string& name) const;

  void autoEnable();
  void onChosen(const std::function<void(const std::string& name)>& chosen);
  void onShowing(const std::function<void()>& showing);
  QMenuBar& widget() const { return *widget_; }

 private:
  std::vector<Ref<MenuItem>> items_;
  std::unique_ptr<QMenuBar> widget_;
};

}  // namespace orvelin
