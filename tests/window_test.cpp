#include <QtTest>
#include <QtWidgets>
#include <utility>

#include "app/menubar1.h"
#include "app/window1.h"
#include "builder/driver.h"
#include "platform/core/background.h"
#include "platform/ui/dialogs.h"
#include "platform/ui/runtime.h"
#include "platform/ui/useraction.h"
#include "support.h"

namespace orvelin::test {

/// The open window, driven by clicks and keys, in a runtime of its own.
class WindowTest : public FileTest {
 protected:
  WindowTest() : runtime(argc, argv) {
    Window1::Instance();
    for (QWidget* widget : QApplication::topLevelWidgets())
      if (auto* main = qobject_cast<QMainWindow*>(widget)) frame = main;
    EXPECT_TRUE(QTest::qWaitForWindowExposed(frame));
    fs::create_directories(folder / "photos");
    fs::create_directories(folder / "CD");
  }
  ~WindowTest() override { end(); }
  /// Finishes the program and answers its exit status.
  int end() {
    Window::releaseWindows();
    MenuBar1::release();
    return std::exchange(running, false) ? runtime.stop() : 0;
  }

  template <class Widget>
  Widget& control(const char* name) {
    return *frame->findChild<Widget*>(name);
  }
  void click(const char* name) { QTest::mouseClick(&control<QPushButton>(name), Qt::LeftButton); }
  /// The enabled state of the six controls, as the table of the window orders them.
  std::string enabled() {
    std::string state;
    for (const char* name : {"PushButton1", "StaticText1", "StaticText2", "PushButton2",
                             "PushButton3", "StaticText3"}) {
      EXPECT_TRUE(control<QWidget>(name).isVisible());
      state += control<QWidget>(name).isEnabled() ? '1' : '0';
    }
    return state;
  }

  /// Runs the event loop, with `action` as the first thing that happens in it, and ends.
  int statusAfter(const std::function<void()>& action) {
    QTimer::singleShot(0, frame, action);
    runtime.runEventLoop();
    return end();
  }
  /// Does `answer` to the dialog that opens next; counts dialogs in `dialogs`.
  void whenDialogOpens(const std::function<void(QDialog&)>& answer) {
    QTimer::singleShot(0, [this, answer] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      if (!dialog) return whenDialogOpens(answer);
      ++dialogs;
      answer(*dialog);
    });
  }
  /// Presses the button and chooses the folder, or cancels where none is given.
  void choose(const char* button, const fs::path& path) {
    whenDialogOpens([path](QDialog& dialog) {
      if (path.empty()) return QTest::keyClick(&dialog, Qt::Key_Escape);
      auto* line = dialog.findChild<QLineEdit*>("fileNameEdit");
      line->setText(QString::fromStdString(path.string()));
      QTest::keyClick(line, Qt::Key_Return);
    });
    click(button);
  }
  /// Builds a DigiFilm in full, and does `meanwhile` wherever the build lets the desktop in.
  void build(const std::function<void()>& meanwhile) {
    static const std::function<void()>* task;
    task = &meanwhile;
    choose("PushButton1", folder / "photos");
    choose("PushButton2", folder / "CD");
    closeMessage();
    installBackgroundTask([] { (*task)(); });
    click("PushButton3");
    installBackgroundTask(nullptr);
  }
  /// Presses Return in the message that opens next, and keeps its text.
  void closeMessage() {
    whenDialogOpens([this](QDialog& dialog) {
      QTest::qWait(50);
      const auto& box = dynamic_cast<QMessageBox&>(dialog);
      message = box.text().toStdString();
      EXPECT_EQ(box.textFormat(), Qt::PlainText);
      EXPECT_FALSE(QGuiApplication::overrideCursor()) << "the pointer is busy over a message";
      QTest::keyClick(&dialog, Qt::Key_Return);
    });
  }

  int argc = 1;
  char programName[8] = "orvelin";
  char* args[2] = {programName, nullptr};
  char** argv = args;
  Runtime runtime;
  QMainWindow* frame = nullptr;
  int dialogs = 0;
  std::string message;
  bool running = true;
};

TEST_F(WindowTest, HasItsSixControlsInTheirPlaces) {
  auto next = frame->centralWidget()->children().begin();
  for (const auto& [name, place, text, pixels] :
       {std::tuple{"PushButton1", QRect{104, 24, 227, 20}, "Charger un dossier photo", 12},
        {"StaticText1", {7, 20, 64, 25}, "Étape 1", 15},
        {"StaticText2", {7, 62, 64, 25}, "Étape 2", 15},
        {"PushButton2", {104, 66, 227, 20}, "Charger le dossier du DigiFilm", 12},
        {"PushButton3", {104, 108, 227, 20}, "Créer le DigiFilm", 12},
        {"StaticText3", {7, 104, 64, 25}, "Étape 3", 15}}) {
    auto& widget = control<QWidget>(name);
    EXPECT_EQ(*next++, &widget) << "controls are made in this order";
    EXPECT_EQ(widget.geometry(), place) << name;
    EXPECT_EQ(widget.property("text").toString().toStdString(), text);
    EXPECT_EQ(widget.font().pixelSize(), pixels);
    EXPECT_EQ(widget.font().bold(), pixels == 15);
    EXPECT_LE(widget.fontMetrics().horizontalAdvance(QString(text)), place.width()) << text;
    EXPECT_LE(widget.fontMetrics().height(), place.height()) << text;
  }
  EXPECT_EQ(frame->centralWidget()->size(), QSize(355, 150));
  EXPECT_EQ(frame->minimumSize(), frame->maximumSize());
  EXPECT_EQ(frame->windowTitle(), "Orvelin");
}

TEST_F(WindowTest, EnablesEachStepOnceTheOnesBeforeItAreDone) {
  const fs::path none, photos = folder / "photos";
  EXPECT_EQ(enabled(), "110000");
  for (const auto& [button, chosen, wanted] : {std::tuple{"PushButton1", none, "110000"},
                                               {"PushButton1", photos, "111100"},
                                               {"PushButton2", none, "111100"},
                                               {"PushButton2", photos, "111111"},
                                               {"PushButton1", none, "111111"},
                                               {"PushButton2", none, "111111"}}) {
    choose(button, chosen);
    EXPECT_EQ(enabled(), wanted) << button << chosen;
  }
  EXPECT_EQ(dialogs, 6);
  EXPECT_EQ(Window1::Instance()->inFol->Path(), photos.string());
  EXPECT_EQ(Window1::Instance()->outFol->Path(), photos.string());
}

TEST_F(WindowTest, TellsScreenReadersOfItsControlsAndDialogsInFrench) {
  const auto told = [](QWidget& widget) { return QAccessible::queryAccessibleInterface(&widget); };
  for (const std::string number : {"1", "2", "3"}) {
    auto* const button = told(control<QPushButton>(("PushButton" + number).c_str()));
    auto* const label = told(control<QLabel>(("StaticText" + number).c_str()));
    EXPECT_EQ(button->relations(QAccessible::Label).value(0).first, label);
  }
  EXPECT_EQ(told(*frame->menuBar())->child(0)->text(QAccessible::Name), "Fichier");

  QStringList texts;
  whenDialogOpens([&](QDialog& dialog) {
    EXPECT_EQ(told(dialog)->role(), QAccessible::Dialog);
    texts << told(dialog)->text(QAccessible::Name) << QFileIconProvider().type(QFileInfo("/"));
    for (const auto* button : dialog.findChildren<QAbstractButton*>())
      texts << QString(button->text() + button->toolTip()).remove('&');
    for (const auto* label : dialog.findChildren<QLabel*>()) texts << label->text();
    dialog.reject();
  });
  click("PushButton1");
  for (const char* text : {"Choisir un dossier", "Choisir", "Annuler", "Dossier parent",
                           "Créer un nouveau dossier", "Vue détaillée", "Dossier :", "Disque"})
    EXPECT_TRUE(texts.contains(text)) << text << " is not in " << texts.join(", ").toStdString();
  whenDialogOpens([&](QDialog& dialog) {
    EXPECT_EQ(told(dialog)->role(), QAccessible::AlertMessage);
    EXPECT_EQ(told(dialog)->text(QAccessible::Name), "Bonjour");
    dialog.accept();
  });
  MsgBox("Bonjour");
}

TEST_F(WindowTest, BuildsTheSameUnderAStormOfInputAndThenClosesAsAsked) {
  for (const char* name : {"a", "b"})
    write(folder / "photos" / name, read(sample("plan [2005].bmp")));
  BuildState calm{{}, item(folder / "photos"), item(folder), nullptr};
  buildDigiFilm(calm);
  int sent = 0;
  bool letIn = false, dismissed = false;
  const auto storm = [&] {
    EXPECT_TRUE(QGuiApplication::overrideCursor());
    for (int i = 0; i < 50; ++i, ++sent) {
      click(("PushButton" + std::to_string(1 + i % 3)).c_str());
      control<QPushButton>("PushButton1").click();
      QTest::keyClick(frame, i % 2 ? Qt::Key_Space : Qt::Key_Return);
      QTest::keyClick(frame, Qt::Key_Q, Qt::ControlModifier);
      frame->close();
    }
    QTest::qSleep(25);
    letDesktopIn();
    // Return, still in the queue when the message comes, must not dismiss it.
    QTimer::singleShot(0, frame, [&] {
      QWidget* const dialog = QApplication::activeModalWidget();
      letIn |= !dialog && !fs::exists(folder / "CD/DIGIFILM/autorun.inf");
      dismissed |= dialog != nullptr;
      if (dialog) QTest::keyClick(dialog, Qt::Key_Return);
    });
  };
  EXPECT_EQ(statusAfter([&] {
              build(storm);
              EXPECT_FALSE(QGuiApplication::overrideCursor());
            }),
            0);
  EXPECT_EQ(message, "Votre DigiFilm est créé !");
  EXPECT_EQ(dialogs, 3) << "two folders and one message";
  EXPECT_EQ(contentsOf(folder / "CD/DIGIFILM"), contentsOf(folder / "DIGIFILM"));
  EXPECT_GE(sent, 200);
  EXPECT_TRUE(letIn) << "the desktop, before the end";
  EXPECT_FALSE(dismissed);
}

TEST_F(WindowTest, SaysWhatToDoAboutAFailureAndEnds) {
  write(folder / "photos/a", "");
  build([this] { fs::remove_all(folder / "CD"); });
  EXPECT_NE(
      message.find("DIGIFILM\u00A0»\u00A0: cet emplacement n'existe pas, ou plus.\n\nVérifiez"),
      std::string::npos)
      << message;
  EXPECT_FALSE(QGuiApplication::overrideCursor());
  EXPECT_EQ(statusAfter([] { FAIL() << "the event loop was entered"; }), 1);
}

TEST_F(WindowTest, HasOneMenuWithQuitAndAbout) {
  const auto window = Window1::Instance();
  EXPECT_EQ(window, Window1::Instance());
  EXPECT_FALSE(window->UntitledMenu0());
  QAction &file = window->FichierMenu()->action(), &quit = window->FileQuit()->action(),
          &about = window->AppleApropos()->action();
  EXPECT_EQ(frame->menuBar()->actions(), QList<QAction*>{&file});
  EXPECT_EQ(file.menu()->actions(), (QList<QAction*>{&quit, &about}));
  EXPECT_EQ(file.text() + quit.text() + about.text(), "FichierQuitterÀ propos ...");
  EXPECT_EQ(quit.menuRole(), QAction::QuitRole);
  EXPECT_EQ(about.menuRole(), QAction::AboutRole);

  // Opening the menu and using a key of it both enable the item.
  about.setEnabled(false);
  emit file.menu()->aboutToShow();
  EXPECT_TRUE(about.isEnabled());
  about.setEnabled(false);
  QTest::keyClick(frame, Qt::Key_A, Qt::ControlModifier);
  EXPECT_TRUE(about.isEnabled());

  closeMessage();
  about.trigger();
  EXPECT_TRUE(message.starts_with(
      "Orvelin permet de créer, à partir d'un dossier photo, un dossier contenant la structure "
      "d'un DigiFilm© qui peut être graver pour optenir un CD DigiFilm©\nCréé par "));
  EXPECT_EQ(std::count(message.begin(), message.end(), '\n'), 4);
  EXPECT_NE(message.find("\n\nIcône : "), std::string::npos);
}

}  // namespace orvelin::test
