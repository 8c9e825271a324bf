#include "platform/ui/menus.h"

#include <QAction>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>

#include "platform/ui/runtime.h"

namespace orvelin {

namespace {

Ref<MenuItem> findIn(const std::vector<Ref<MenuItem>>& items, const std::string& name) {
  for (const auto& item : items) {
    if (item->Name() == name) return item;
    if (auto found = item->find(name)) return found;
  }
  return nullptr;
}

}  // namespace

MenuItem::MenuItem() : action_(std::make_unique<QAction>()) {}

MenuItem::~MenuItem() = default;

void MenuItem::Text(const std::string& text) { action_->setText(QString::fromStdString(text)); }

void MenuItem::KeyboardShortcut(const std::string& shortcut) {
  // The toolkit calls the key for commands Ctrl on every platform.
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

Ref<MenuItem> MenuItem::find(const std::string& name) const { return findIn(items_, name); }

void MenuItem::autoEnable() {
  if (autoEnable_) Enabled(true);
  for (const auto& item : items_) item->autoEnable();
}

void MenuItem::onChosen(const std::function<void(const std::string&)>& chosen) {
  if (!menu_)
    QObject::connect(action_.get(), &QAction::triggered, [this, chosen] { chosen(name_); });
  for (const auto& item : items_) item->onChosen(chosen);
}

void MenuItem::onShowing(const std::function<void()>& showing) {
  if (menu_) QObject::connect(menu_.get(), &QMenu::aboutToShow, showing);
  for (const auto& item : items_) item->onShowing(showing);
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

Ref<MenuItem> MenuBar::find(const std::string& name) const { return findIn(items_, name); }

void MenuBar::autoEnable() {
  for (const auto& item : items_) item->autoEnable();
}

void MenuBar::onChosen(const std::function<void(const std::string&)>& chosen) {
  for (const auto& item : items_) item->onChosen(chosen);
}

void MenuBar::onShowing(const std::function<void()>& showing) {
  for (const auto& item : items_) item->onShowing(showing);
}

}  // namespace orvelin
