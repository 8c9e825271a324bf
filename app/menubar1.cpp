#include "app/menubar1.h"

#include <string>

namespace orvelin {

namespace {

Ref<MenuBar1> instance;

template <class Item>
Ref<Item> makeItem(const std::string& name, const std::string& text, const std::string& shortcut) {
  auto item = makeRef<Item>();
  item->Name(name);
  item->AutoEnable(true);
  item->Text(text);
  item->KeyboardShortcut(shortcut);
  return item;
}

}  // namespace

MenuBar1::MenuBar1() { Untitled1(); }

void MenuBar1::Untitled1() {
  Append(makeItem<MenuItem>("FichierMenu", "Fichier", ""));
  Child("FichierMenu")->Append(makeItem<QuitMenuItem>("FileQuit", "Quitter", "Cmd+Q"));
  Child("FichierMenu")->Append(makeItem<AppleMenuItem>("AppleApropos", "À propos ...", ""));
}

Ref<MenuBar1> MenuBar1::Instance() {
  if (!instance) instance = makeRef<MenuBar1>();
  return instance;
}

void MenuBar1::release() { instance = nullptr; }

}  // namespace orvelin
