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

/// A window of fixed size. Programs derive from it and override the virtual functions, which `open`
/// and events call.
class Window {
 public:
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;
  virtual ~Window();

  /// The open window of that class; nil if there is none.
  static Ref<Window> openWindow(const std::string& className);
  /// Lays out and shows the window, and registers it under its class name.
  static void open(const std::string& className, const Ref<Window>& window);
  /// Releases all open windows.
  static void releaseWindows();

  Ref<orvelin::MenuBar> MenuBar() const { return menuBar_; }
  /// The control of that name; nil if there is none.
  Ref<RectControl> Control(const std::string& name) const;

 protected:
  Window();

  virtual void Layout() = 0;
  virtual void CreateControls() = 0;
  virtual void AddMenuHandlers() = 0;
  /// Called when the user or the desktop asks to close the window; it stays open.
  virtual void Event_Close() = 0;
  /// Called before a menu is shown and before a shortcut is tried.
  virtual void Event_EnableMenuItems() = 0;

  void MenuBar(const Ref<orvelin::MenuBar>& menuBar);
  void Title(const std::string& title);
  /// The size of the content, without menu bar and frame.
  void Size(int width, int height);
  /// Limits of the content's width and height.
  void SizeLimits(int min, int max);
  QWidget& content() const;
  void add(const std::string& name, const Ref<RectControl>& control);
  /// Sets the handler of the menu item of that name.
  void addMenuHandler(const std::string& name, std::function<void()> handler);

 private:
  class Frame;
  void enableMenuItems();

  Ref<orvelin::MenuBar> menuBar_;
  std::unique_ptr<Frame> frame_;
  std::map<std::string, std::function<void()>> menuHandlers_;
  std::map<std::string, Ref<RectControl>> controls_;
};

}  // namespace orvelin
