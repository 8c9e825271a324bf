#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/core/ref.h"
#include "platform/ui/controls.h"
#include "platform/ui/menus.h"

class QWidget;

namespace orvelin {

/// A document window of fixed size with a close box. What a program's own window adds, it adds in
/// the virtual operations, which `open` and the events call.
class Window {
 public:
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;
  virtual ~Window();

  /// The open window of that class, nil if there is none.
  static Ref<Window> openWindow(const std::string& className);
  /// Builds the window, shows it and keeps it, under its class, until `releaseWindows`.
  static void open(const std::string& className, const Ref<Window>& window);
  static void releaseWindows();

  Ref<orvelin::MenuBar> MenuBar() const { return menuBar_; }
  /// The control of that name; nil if there is none.
  Ref<RectControl> Control(const std::string& name) const;

 protected:
  Window();

  virtual void Layout() = 0;
  virtual void CreateControls() = 0;
  virtual void AddMenuHandlers() = 0;
  /// The user, or the desktop, asks the window to close.
  virtual void Event_Close() = 0;
  /// The menus are being brought up to date: before one is shown or a shortcut is tried.
  virtual void Event_EnableMenuItems() = 0;

  void MenuBar(const Ref<orvelin::MenuBar>& menuBar);
  void Title(const std::string& title);
  /// The size of the content, without menu bar and frame, and its limits.
  void Size(int width, int height);
  void SizeLimits(int least, int most);
  QWidget& content() const;
  void add(const std::string& name, const Ref<RectControl>& control);
  /// What choosing the menu item of that name calls; it answers whether others are to be passed
  /// over.
  void addMenuHandler(const std::string& name, std::function<bool()> handler);

 private:
  class Frame;
  void enableMenuItems();

  Ref<orvelin::MenuBar> menuBar_;
  std::unique_ptr<Frame> frame_;
  std::map<std::string, std::function<bool()>> menuHandlers_;
  std::map<std::string, Ref<RectControl>> controls_;
};

}  // namespace orvelin
