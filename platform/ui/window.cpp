#include "platform/ui/window.h"

#include <QCloseEvent>
#include <QLayout>
#include <QMainWindow>
#include <QMenuBar>
#include <QWidget>
#include <utility>
#include <vector>

#include "platform/ui/useraction.h"

namespace orvelin {

namespace {

/// The area below the menu bar; its size hint determines the window's size.
class Content : public QWidget {
 public:
  QSize sizeHint() const override { return preferred; }
  QSize preferred;
};

std::vector<std::pair<std::string, Ref<Window>>> windows;

}  // namespace

class Window::Frame : public QMainWindow {
 public:
  explicit Frame(Window& window) : window_(window) {
    setCentralWidget(&content);
    layout()->setSizeConstraint(QLayout::SetFixedSize);
    setWindowFlag(Qt::WindowMaximizeButtonHint, false);
    setContextMenuPolicy(Qt::NoContextMenu);
  }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;
  // QMainWindow would delete these two, which have other owners.
  ~Frame() override {
    takeCentralWidget()->setParent(nullptr);
    if (window_.menuBar_) window_.menuBar_->widget().setParent(nullptr);
  }

  Content content;

 protected:
  void closeEvent(QCloseEvent* event) override {
    event->ignore();
    window_.Event_Close();
  }
  bool event(QEvent* event) override {
    if (event->type() == QEvent::ShortcutOverride) window_.enableMenuItems();
    return QMainWindow::event(event);
  }

 private:
  Window& window_;
};

Window::Window() : frame_(std::make_unique<Frame>(*this)) {}

Window::~Window() = default;

Ref<Window> Window::openWindow(const std::string& className) {
  for (const auto& [name, window] : windows)
    if (name == className) return window;
  return nullptr;
}

void Window::open(const std::string& className, const Ref<Window>& window) {
  windows.emplace_back(className, window);
  window->Layout();
  window->CreateControls();
  window->AddMenuHandlers();
  window->frame_->show();
}

void Window::releaseWindows() { windows.clear(); }

Ref<RectControl> Window::Control(const std::string& name) const {
  const auto found = controls_.find(name);
  return found == controls_.end() ? nullptr : found->second;
}

void Window::MenuBar(const Ref<orvelin::MenuBar>& menuBar) {
  menuBar_ = menuBar;
  frame_->setMenuBar(&menuBar->widget());
  menuBar->onShowing([this] { enableMenuItems(); });
  menuBar->onChosen([this](const std::string& name) {
    if (const auto handler = menuHandlers_.find(name); handler != menuHandlers_.end())
      performAction(handler->second);
  });
}

void Window::enableMenuItems() {
  menuBar_->autoEnable();
  Event_EnableMenuItems();
}

void Window::Title(const std::string& title) {
  frame_->setWindowTitle(QString::fromStdString(title));
}

void Window::Size(int width, int height) { frame_->content.preferred = QSize(width, height); }

void Window::SizeLimits(int min, int max) {
  frame_->content.setMinimumSize(min, min);
  frame_->content.setMaximumSize(max, max);
}

QWidget& Window::content() const { return frame_->content; }

void Window::add(const std::string& name, const Ref<RectControl>& control) {
  controls_[name] = control;
}

void Window::addMenuHandler(const std::string& name, std::function<void()> handler) {
  menuHandlers_[name] = std::move(handler);
}

}  // namespace orvelin
