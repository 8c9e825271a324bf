#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <utility>

#include "app/app.h"
#include "app/menubar1.h"
#include "app/window1.h"
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

  /// Does `answer` to the dialog that opens next; counts dialogs in `dialogs`.
  void whenDialogOpens(const std::function<void(QDialog&)>& answer) {
    QTimer::singleShot(0, [this, answer] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      if (!dialog) return whenDialogOpens(answer);
      ++dialogs;
      answer(*dialog);
    });
  }
  void choose(const char* button, const fs::path& path) {
    whenDialogOpens([path](QDialog& dialog) {
      auto* name = dialog.findChild<QLineEdit*>("fileNameEdit");
      name->setText(QString::fromStdString(path.string()));
      QTest::keyClick(name, Qt::Key_Return);
    });
    click(button);
  }
  void cancel(const char* button) {
    whenDialogOpens([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    click(button);
  }
  void closeMessage(std::string& text) {
    whenDialogOpens([&text](QDialog& dialog) {
      text = dynamic_cast<QMessageBox&>(dialog).text().toStdString();
      QTest::keyClick(&dialog, Qt::Key_Return);
    });
  }
  void chooseBoth() {
    choose("PushButton1", folder / "photos");
    choose("PushButton2", folder / "CD");
  }

  int argc = 1;
  char programName[8] = "orvelin";
  char* args[2] = {programName, nullptr};
  char** argv = args;
  Runtime runtime;
  QMainWindow* frame = nullptr;
  int dialogs = 0;
  bool running = true;
};

TEST_F(WindowTest, HasItsSixControlsInTheirPlaces) {
  const struct {
    const char* name;
    QRect place;
    const char* text;
    int size;
    bool bold;
  } controls[] = {{"PushButton1", {104, 24, 227, 20}, "Charger un dossier photo", 12, false},
                  {"StaticText1", {7, 20, 64, 25}, "Étape 1", 15, true},
                  {"StaticText2", {7, 62, 64, 25}, "Étape 2", 15, true},
                  {"PushButton2", {104, 66, 227, 20}, "Charger le dossier du DigiFilm", 12, false},
                  {"PushButton3", {104, 108, 227, 20}, "Créer le DigiFilm", 12, false},
                  {"StaticText3", {7, 104, 64, 25}, "Étape 3", 15, true}};
  auto next = frame->centralWidget()->children().begin();
  for (const auto& [name, place, text, size, bold] : controls) {
    auto& widget = control<QWidget>(name);
    EXPECT_EQ(*next++, &widget) << "controls are made in this order";
    EXPECT_EQ(widget.geometry(), place) << name;
    EXPECT_EQ(widget.property("text").toString().toStdString(), text);
    EXPECT_EQ(widget.font().pixelSize(), size);
    EXPECT_EQ(widget.font().bold(), bold);
    EXPECT_LE(widget.fontMetrics().horizontalAdvance(QString(text)), place.width()) << text;
    EXPECT_LE(widget.fontMetrics().height(), place.height()) << text;
  }
  EXPECT_EQ(frame->centralWidget()->size(), QSize(355, 150));
  EXPECT_EQ(frame->minimumSize(), frame->maximumSize());
  EXPECT_EQ(frame->windowTitle(), "Orvelin");
  EXPECT_EQ(enabled(), "110000");
}

TEST_F(WindowTest, EnablesEachStepOnceTheOnesBeforeItAreDone) {
  cancel("PushButton1");
  EXPECT_EQ(enabled(), "110000");
  choose("PushButton1", folder / "photos");
  EXPECT_EQ(enabled(), "111100");
  cancel("PushButton2");
  EXPECT_EQ(enabled(), "111100");
  choose("PushButton2", folder / "photos");
  EXPECT_EQ(enabled(), "111111");
  cancel("PushButton1");
  cancel("PushButton2");
  EXPECT_EQ(enabled(), "111111");
  EXPECT_EQ(dialogs, 6);
  EXPECT_EQ(Window1::Instance()->inFol->Path(), (folder / "photos").string());
  EXPECT_EQ(Window1::Instance()->outFol->Path(), (folder / "photos").string());
}

TEST_F(WindowTest, BuildsNestedUntilTheDestinationIsChosenAnew) {
  write(folder / "photos/a", read(sample("aquarelle.png")));
  chooseBoth();
  std::string message;
  for (const char* order : {"DIGIFILM", "DIGIFILM/DIGIFILM"}) {
    closeMessage(message);
    click("PushButton3");
    EXPECT_EQ(message, "Votre DigiFilm est créé !");
    EXPECT_TRUE(fs::exists(folder / "CD" / order / "dcim/100k6230/001.jpg"));
    EXPECT_TRUE(fs::exists(folder / "CD" / order / "ORVELIN/LISEZMOI.txt"));
    EXPECT_EQ(enabled(), "111111");
  }
  choose("PushButton2", folder / "CD");
  closeMessage(message);
  click("PushButton3");
  EXPECT_FALSE(fs::exists(folder / "CD/DIGIFILM/DIGIFILM/DIGIFILM"));
}

TEST_F(WindowTest, TakesNoInputDuringABuildThenOrAfterwards) {
  for (int i = 0; i < 20; ++i)
    write(folder / "photos" / std::to_string(i), read(sample("plan [2005].bmp")));
  chooseBoth();
  // Input that comes in the middle of the build, both handled then and left in the queue.
  static int dismissed;
  dismissed = 0;
  static std::function<void()> meanwhile;
  meanwhile = [this] {
    for (int i = 0; i < 5; ++i) {
      click("PushButton3");
      control<QPushButton>("PushButton1").click();
      QTest::keyClick(frame, Qt::Key_Return);
      QTest::keyClick(frame, Qt::Key_Q, Qt::ControlModifier);
    }
    letDesktopIn();
    // Return, still in the queue when the message comes, must not dismiss it.
    QTimer::singleShot(0, frame, [this] {
      QWidget* const dialog = QApplication::activeModalWidget();
      dismissed += dialog != nullptr;
      if (dialog) QTest::keyClick(dialog, Qt::Key_Return);
    });
  };
  installBackgroundTask([] { meanwhile(); });
  std::string message;
  whenDialogOpens([&message](QDialog& dialog) {
    message = dynamic_cast<QMessageBox&>(dialog).text().toStdString();
    QTest::qWait(50);
    EXPECT_EQ(dismissed, 0);
    dialog.accept();
  });
  click("PushButton3");
  installBackgroundTask(nullptr);
  QTest::qWait(50);
  EXPECT_EQ(message, "Votre DigiFilm est créé !");
  EXPECT_EQ(dialogs, 3) << "two folders and one message";
  EXPECT_FALSE(fs::exists(folder / "CD/DIGIFILM/DIGIFILM"));
  EXPECT_TRUE(frame->isVisible());
}

TEST_F(WindowTest, ClosesAfterTheBuildThatItWasAskedToCloseIn) {
  write(folder / "photos/a", read(sample("aquarelle.png")));
  chooseBoth();
  static QMainWindow* closing;
  closing = frame;
  installBackgroundTask([] {
    closing->close();
    EXPECT_TRUE(closing->isVisible());
  });
  std::string message;
  closeMessage(message);
  bool ended = false;
  QTimer::singleShot(0, [&] {
    click("PushButton3");
    ended = true;
  });
  runtime.runEventLoop();  // comes back because the window was closed in the end
  installBackgroundTask(nullptr);
  EXPECT_TRUE(ended);
  EXPECT_EQ(message, "Votre DigiFilm est créé !");
  EXPECT_TRUE(fs::exists(folder / "CD/DIGIFILM/autorun.inf"));
  EXPECT_EQ(end(), 0);
}

TEST_F(WindowTest, TellsOfAFailureAndEndsTheProgram) {
  write(folder / "CD/DIGIFILM/digifilm.txt/in the way", "");
  chooseBoth();
  std::string message;
  closeMessage(message);
  QTimer::singleShot(0, [&] { click("PushButton3"); });
  runtime.runEventLoop();
  EXPECT_NE(message.find("« " + (folder / "CD/DIGIFILM/digifilm.txt").string() + " » : un dossier"),
            std::string::npos)
      << message;
  EXPECT_EQ(end(), 1);
}

TEST_F(WindowTest, FailsAtStartUpBeforeTheEventLoop) {
  std::string message;
  closeMessage(message);
  handlingFailures([] { Ref<FolderItem>()->Name(); });
  EXPECT_NE(message, "");
  runtime.runEventLoop();
  EXPECT_EQ(end(), 1);
}

TEST_F(WindowTest, HasOneMenuWithQuitAndAbout) {
  const auto window = Window1::Instance();
  ASSERT_EQ(frame->menuBar()->actions().size(), 1);
  QAction* const fichier = frame->menuBar()->actions().front();
  EXPECT_EQ(fichier->text(), "Fichier");
  const auto items = fichier->menu()->actions();
  ASSERT_EQ(items.size(), 2);
  EXPECT_EQ(items[0]->text(), "Quitter");
  EXPECT_EQ(items[0]->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Q));
  EXPECT_EQ(items[0]->menuRole(), QAction::QuitRole);
  EXPECT_EQ(items[1]->text(), "À propos ...");
  EXPECT_EQ(items[1]->menuRole(), QAction::AboutRole);

  EXPECT_EQ(&window->FichierMenu()->action(), fichier);
  EXPECT_EQ(&window->FileQuit()->action(), items[0]);
  EXPECT_EQ(&window->AppleApropos()->action(), items[1]);
  EXPECT_FALSE(window->UntitledMenu0());

  items[1]->setEnabled(false);
  emit fichier->menu()->aboutToShow();
  EXPECT_TRUE(items[1]->isEnabled());
  items[1]->setEnabled(false);
  QTest::keyClick(frame, Qt::Key_A, Qt::ControlModifier);
  EXPECT_TRUE(items[1]->isEnabled());
}

TEST_F(WindowTest, ShowsTheAboutBoxAsPlainLines) {
  std::string text;
  bool plain = false;
  whenDialogOpens([&](QDialog& dialog) {
    auto& box = dynamic_cast<QMessageBox&>(dialog);
    plain = box.textFormat() == Qt::PlainText;
    text = box.text().toStdString();
    EXPECT_EQ(box.buttons().size(), 1);
    box.accept();
  });
  Window1::Instance()->AppleApropos()->action().trigger();
  EXPECT_TRUE(plain);
  EXPECT_EQ(
      text.find("\nCréé par "),
      std::string("Orvelin permet de créer, à partir d'un dossier photo, un dossier contenant "
                  "la structure d'un DigiFilm© qui peut être graver pour optenir un CD "
                  "DigiFilm©")
          .size());
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4);
  EXPECT_NE(text.find("\n\nIcône : "), std::string::npos);
}

TEST_F(WindowTest, EndsTheProgramWhenClosedOrQuit) {
  QTimer::singleShot(0, frame, &QWidget::close);
  runtime.runEventLoop();
  EXPECT_EQ(end(), 0);
}

TEST_F(WindowTest, QuitsAtTheShortcut) {
  QTimer::singleShot(0, [this] { QTest::keyClick(frame, Qt::Key_Q, Qt::ControlModifier); });
  runtime.runEventLoop();
  EXPECT_EQ(end(), 0);
}

TEST_F(WindowTest, ExistsOnceAndSharesTheOneMenuBar) {
  EXPECT_EQ(Window1::Instance(), Window1::Instance());
  int windows = 0;
  for (QWidget* widget : QApplication::topLevelWidgets())
    windows += widget->inherits("QMainWindow");
  EXPECT_EQ(windows, 1);
  EXPECT_EQ(&Window1::Instance()->MenuBar()->find("FileQuit")->action(),
            &MenuBar1::Instance()->find("FileQuit")->action());
  EXPECT_FALSE(Window1::Instance()->Control("PushButton4"));
  Application::Register(makeRef<App>());
  EXPECT_TRUE(App::Instance());
  Application::Register(nullptr);
}

TEST_F(WindowTest, KeepsTheStateAndHandsItsWorkToTheBuilder) {
  auto window = Window1::Instance();
  window->outFol = item(folder / "CD");
  EXPECT_TRUE(window->isOpenablePicture(item(sample("oiseau.webp"))));
  write(folder / "photos/a", read(sample("oiseau.webp")));
  window->BuildTab(item(folder / "photos"));
  EXPECT_EQ(window->tabItem.size(), 1U);
  EXPECT_EQ(window->GetResource("datafile")->Name(), "datafile");
  EXPECT_EQ(window->appFolder->Name(), "Resources");
}

}  // namespace orvelin::test
