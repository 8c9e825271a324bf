#include "app/window1.h"

#include "app/app.h"
#include "builder/driver.h"
#include "platform/core/text.h"
#include "platform/ui/dialogs.h"
#include "platform/ui/runtime.h"

namespace orvelin {

namespace {

constexpr const char* className = "Window1.Window1";

}

Ref<Window1> Window1::Instance() {
  if (!openWindow(className)) open(className, makeRef<Window1>());
  return openWindow(className).as<Window1>();
}

void Window1::Layout() {
  MenuBar(App::Instance()->MenuBar());
  Title("Orvelin");
  Size(355, 150);
  SizeLimits(64, 32000);  // without effect: the window can't be resized
}

void Window1::CreateControls() { _CreateControls0(); }

void Window1::_CreateControls0() {
  const auto button = [this](const char* name, void (Window1::*action)(), const Appearance& look) {
    add(name, makeRef<PushButton>(content(), name, look, [this, action] { (this->*action)(); }));
  };
  const auto label = [this](const char* name, const Appearance& look) {
    add(name, makeRef<StaticText>(content(), name, look));
  };
  constexpr auto step1 = &Window1::PushButton1_Action;
  constexpr auto step2 = &Window1::PushButton2_Action;
  constexpr auto step3 = &Window1::PushButton3_Action;

  // left, top, width, height, text, font, size, bold, enabled
  // clang-format off
  button("PushButton1", step1, {104,  24, 227, 20, "Charger un dossier photo",       "System", 12, false, true});
  label ("StaticText1",        {  7,  20,  64, 25, "Étape 1",                        "System", 15, true,  true});
  label ("StaticText2",        {  7,  62,  64, 25, "Étape 2",                        "System", 15, true,  false});
  button("PushButton2", step2, {104,  66, 227, 20, "Charger le dossier du DigiFilm", "System", 12, false, false});
  button("PushButton3", step3, {104, 108, 227, 20, "Créer le DigiFilm",              "System", 12, false, false});
  label ("StaticText3",        {  7, 104,  64, 25, "Étape 3",                        "System", 15, true,  false});
  // clang-format on

  for (const std::string number : {"1", "2", "3"})
    Control("StaticText" + number).as<StaticText>()->labels(*Control("PushButton" + number));
}

void Window1::PushButton1_Action() { chooseFolder("PushButton1", inFol); }

void Window1::PushButton2_Action() { chooseFolder("PushButton2", outFol); }

void Window1::PushButton3_Action() {
  if (buildDigiFilm(*this)) MsgBox("Votre DigiFilm est créé !");
}

void Window1::chooseFolder(const std::string& button, Ref<FolderItem>& property) {
  if (const Ref<FolderItem> folder = SelectFolder()) {
    property = folder;
    Control(button)->describe(folder->Path());
  }
  const bool step2 = static_cast<bool>(inFol);
  const bool step3 = inFol && outFol;
  Control("PushButton2")->Enabled(step2);
  Control("StaticText2")->Enabled(step2);
  Control("PushButton3")->Enabled(step3);
  Control("StaticText3")->Enabled(step3);
}

void Window1::Event_Close() { Quit(); }

Ref<MenuItem> Window1::FichierMenu() const { return MenuBar()->find("FichierMenu"); }

Ref<AppleMenuItem> Window1::AppleApropos() const {
  return MenuBar()->find("AppleApropos").as<AppleMenuItem>();
}

Ref<QuitMenuItem> Window1::FileQuit() const {
  return MenuBar()->find("FileQuit").as<QuitMenuItem>();
}

Ref<MenuItem> Window1::UntitledMenu0() const { return MenuBar()->find("UntitledMenu0"); }

void Window1::AddMenuHandlers() {
  addMenuHandler("AppleApropos", [this] { _AppleApropos_Action(); });
}

void Window1::Event_EnableMenuItems() { AppleApropos()->Enabled(true); }

bool Window1::_AppleApropos_Action() {
  // This text is fixed, errors included.
  std::string text =
      "Orvelin permet de créer, à partir d'un dossier photo, un dossier contenant la structure "
      "d'un DigiFilm© qui peut être graver pour optenir un CD DigiFilm©";
  text += Chr(13) + "Créé par l'équipe Orvelin";
  text += Chr(13) + "https://orvelin.example.org - equipe@orvelin.example.org";
  text += Chr(13) + Chr(13) + "Icône : l'équipe Orvelin (https://icones.orvelin.example.org)";
  MsgBox(text);
  return false;
}

}  // namespace orvelin
