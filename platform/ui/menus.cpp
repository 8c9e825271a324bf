#include "platform/ui/menus.h"

#include <QAction>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>

#include "platform/ui/runtime.h"

namespace orvelin {

namespace {

/// Calls `visit` for each item and all items below it.
template <class Visit>
void forEach(const std::vector<Ref<MenuItem>>& items, const Visit& visit) {
  for (const auto& item : items) {
    visit(item);
    forEach(item->items(), visit);
  }
}

}  // namespace

MenuItem::MenuItem() : action_(std::make_unique<QAction>()) {}

MenuItem::~MenuItem() = default;

void MenuItem::Text(const std::string& text) { action_->setText(QString::fromStdString(text)); }

void MenuItem::KeyboardShortcut(const std::string& shortcut) {
  // Qt calls the command key Ctrl on every platform.
  action_->setShortcut(QKeySequence(QString::fromStdString(shortcut).replace("Cmd", "Ctrl")));
}

bool MenuItem::Enabled() const { return action_->isEnabled(); }

void MenuItem::Enabled(bool enabled) { action_->setEnabled(enabled); }

void MenuItem::Append(const Ref<MenuItem>& item) {
  if (!menu_) {
    menu_ = std::make_unique<QMenu>();
    action_->setMenu(menu_.get());
  }
  menu_->addAction(&item->action());
  items_.push_back(item);
}

QuitMenuItem::QuitMenuItem() {
  action().setMenuRole(QAction::QuitRole);
  QObject::connect(&action(), &QAction::triggered, [] { Quit(); });
}

AppleMenuItem::AppleMenuItem() { action().setMenuRole(QAction::AboutRole); }

MenuBar::MenuBar() : widget_(std::make_unique<QMenuBar>()) {}

MenuBar::~MenuBar() = default;

void MenuBar::Append(const Ref<MenuItem>& item) {
  widget_->addAction(&item->action());
  items_.push_back(item);
}

Ref<MenuItem> MenuBar::Child(const std::string& name) const {
  for (const auto& item : items_)
    if (item->Name() == name) return item;
  return nullptr;
}

Ref<MenuItem> MenuBar::find(const std::string& name) const {
  Ref<MenuItem> found;
  forEach(items_, [&](const Ref<MenuItem>& item) {
    if (!found && item->Name() == name) found = item;
  });
  return found;
}

void MenuBar::autoEnable() {
  forEach(items_, [](const Ref<MenuItem>& item) {
    if (item->AutoEnable()) item->Enabled(true);
  });
}

void MenuBar::onChosen(const std::function<void(const std::string&)>& handler) {
  forEach(items_, [&](const Ref<MenuItem>& item) {
    if (item->menu()) return;
    const auto call = [handler, name = item->Name()] { handler(name); };
    QObject::connect(&item->action(), &QAction::triggered, call);
  });
}

void MenuBar::onShowing(const std::function<void()>& handler) {
  forEach(items_, [&](const Ref<MenuItem>& item) {
    if (item->menu()) QObject::connect(item->menu(), &QMenu::aboutToShow, handler);
  });
}

}  // namespace orvelin
