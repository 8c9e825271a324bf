#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QFileIconProvider>
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
  /// Chooses the folder in the dialog that opens next, or cancels where none is given.
  void answerFolderDialog(const fs::path& path) {
    whenDialogOpens([path](QDialog& dialog) {
      if (path.empty()) return QTest::keyClick(&dialog, Qt::Key_Escape);
      auto* line = dialog.findChild<QLineEdit*>("fileNameEdit");
      line->setText(QString::fromStdString(path.string()));
      QTest::keyClick(line, Qt::Key_Return);
    });
  }
  void choose(const char* button, const fs::path& path) {
    answerFolderDialog(path);
    click(button);
  }
  /// Chooses both folders and gets ready to build; the final message's text comes to `message`.
  void prepareBuild() {
    choose("PushButton1", folder / "photos");
    choose("PushButton2", folder / "CD");
    closeMessage();
  }
  void closeMessage() {
    whenDialogOpens([this](QDialog& dialog) {
      QTest::qWait(50);
      message = dynamic_cast<QMessageBox&>(dialog).text().toStdString();
      busyOverMessage = QGuiApplication::overrideCursor() != nullptr;
      plainText = dynamic_cast<QMessageBox&>(dialog).textFormat() == Qt::PlainText;
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
  bool plainText = false;
  bool busyOverMessage = false;
  bool running = true;
};

TEST_F(WindowTest, HasItsSixControlsInTheirPlaces) {
  const struct {
    const char* name;
    QRect place;
    const char* text;
    bool button;
  } controls[] = {{"PushButton1", {104, 24, 227, 20}, "Charger un dossier photo", true},
                  {"StaticText1", {7, 20, 64, 25}, "Étape 1", false},
                  {"StaticText2", {7, 62, 64, 25}, "Étape 2", false},
                  {"PushButton2", {104, 66, 227, 20}, "Charger le dossier du DigiFilm", true},
                  {"PushButton3", {104, 108, 227, 20}, "Créer le DigiFilm", true},
                  {"StaticText3", {7, 104, 64, 25}, "Étape 3", false}};
  auto next = frame->centralWidget()->children().begin();
  for (const auto& [name, place, text, button] : controls) {
    auto& widget = control<QWidget>(name);
    EXPECT_EQ(*next++, &widget) << "controls are made in this order";
    EXPECT_EQ(widget.geometry(), place) << name;
    EXPECT_EQ(widget.property("text").toString().toStdString(), text);
    EXPECT_EQ(widget.font().pixelSize(), button ? 12 : 15);
    EXPECT_EQ(widget.font().bold(), !button);
    EXPECT_LE(widget.fontMetrics().horizontalAdvance(QString(text)), place.width()) << text;
    EXPECT_LE(widget.fontMetrics().height(), place.height()) << text;
  }
  EXPECT_EQ(frame->centralWidget()->size(), QSize(355, 150));
  EXPECT_EQ(frame->minimumSize(), frame->maximumSize());
  EXPECT_EQ(frame->windowTitle(), "Orvelin");
}

TEST_F(WindowTest, EnablesEachStepOnceTheOnesBeforeItAreDone) {
  const fs::path photos = folder / "photos";
  const struct {
    const char* button;
    fs::path chosen;
    const char* enabled;
  } steps[] = {{"PushButton1", "", "110000"}, {"PushButton1", photos, "111100"},
               {"PushButton2", "", "111100"}, {"PushButton2", photos, "111111"},
               {"PushButton1", "", "111111"}, {"PushButton2", "", "111111"}};
  EXPECT_EQ(enabled(), "110000");
  for (const auto& [button, chosen, wanted] : steps) {
    choose(button, chosen);
    EXPECT_EQ(enabled(), wanted) << button << chosen;
  }
  EXPECT_EQ(dialogs, 6);
  EXPECT_EQ(Window1::Instance()->inFol->Path(), photos.string());
  EXPECT_EQ(Window1::Instance()->outFol->Path(), photos.string());
}

TEST_F(WindowTest, IsOperatedByKeysAlone) {
  for (const auto& [button, path, key] :
       {std::tuple{"PushButton1", folder / "photos", Qt::Key_Return},
        std::tuple{"PushButton2", folder / "CD", Qt::Key_Space}}) {
    QTest::keyClick(frame, Qt::Key_Tab);
    ASSERT_EQ(frame->focusWidget(), &control<QWidget>(button));
    answerFolderDialog(path);
    QTest::keyClick(frame->focusWidget(), key);
  }
  QTest::keyClick(frame, Qt::Key_Tab);
  closeMessage();
  QTest::keyClick(frame->focusWidget(), Qt::Key_Enter);
  EXPECT_EQ(message, "Votre DigiFilm est créé !");
}

TEST_F(WindowTest, TellsScreenReadersOfItsControlsAndDialogs) {
  const auto read = [](QWidget& widget) { return QAccessible::queryAccessibleInterface(&widget); };
  for (const std::string number : {"1", "2", "3"}) {
    auto& button = control<QPushButton>(("PushButton" + number).c_str());
    auto& label = control<QLabel>(("StaticText" + number).c_str());
    EXPECT_EQ(read(button)->role(), QAccessible::PushButton);
    EXPECT_EQ(read(button)->text(QAccessible::Name), button.text());
    EXPECT_EQ(bool(read(button)->state().disabled), number != "1");
    EXPECT_EQ(read(label)->role(), QAccessible::StaticText);
    EXPECT_EQ(read(label)->text(QAccessible::Name), label.text());
    const auto labels = read(button)->relations(QAccessible::Label);
    ASSERT_EQ(labels.size(), 1);
    EXPECT_EQ(labels.front().first, read(label));
  }
  EXPECT_EQ(read(*frame->menuBar())->child(0)->text(QAccessible::Name), "Fichier");

  // The dialogs speak French in a German session too.
  QStringList texts;
  whenDialogOpens([&](QDialog& dialog) {
    EXPECT_EQ(read(dialog)->role(), QAccessible::Dialog);
    texts << read(dialog)->text(QAccessible::Name);
    for (const auto* button : dialog.findChildren<QAbstractButton*>())
      texts << QString(button->text() + button->toolTip()).remove('&');
    for (const auto* label : dialog.findChildren<QLabel*>()) texts << label->text();
    texts << QFileIconProvider().type(QFileInfo("/"));
    dialog.reject();
  });
  click("PushButton1");
  for (const char* text : {"Chercher dans le dossier", "Choisir", "Annuler", "Dossier parent",
                           "Créer un nouveau dossier", "Vue détaillée", "Dossier :", "Disque"})
    EXPECT_TRUE(texts.contains(text))
        << text << " is missing in " << texts.join(", ").toStdString();
  whenDialogOpens([&](QDialog& dialog) {
    EXPECT_EQ(read(dialog)->role(), QAccessible::AlertMessage);
    EXPECT_EQ(read(dialog)->text(QAccessible::Name), "Bonjour");
    dialog.accept();
  });
  MsgBox("Bonjour");
}

TEST_F(WindowTest, ShowsTheBusyPointerWhileAnActionRuns) {
  write(folder / "photos/a", read(sample("plan [2005].bmp")));
  static std::vector<bool> busy;
  static bool letIn;
  busy.clear();
  letIn = false;
  const fs::path last = folder / "CD/DIGIFILM/autorun.inf";
  installBackgroundTask([] {
    busy.push_back(QGuiApplication::overrideCursor() != nullptr);
    letDesktopIn();
    QThread::msleep(25);
  });
  prepareBuild();
  QTimer::singleShot(0, [&] { letIn = !fs::exists(last); });
  click("PushButton3");
  installBackgroundTask(nullptr);
  ASSERT_FALSE(busy.empty());
  EXPECT_TRUE(letIn) << "the desktop was let in before the end";
  EXPECT_FALSE(busyOverMessage);
  EXPECT_EQ(busy, std::vector<bool>(busy.size(), true));
  EXPECT_FALSE(QGuiApplication::overrideCursor());

  fs::remove_all(folder / "CD");
  closeMessage();
  click("PushButton3");
  EXPECT_NE(message.find("cet emplacement n'existe pas, ou plus.\n\nVérifiez"), std::string::npos)
      << message;
  EXPECT_FALSE(QGuiApplication::overrideCursor()) << "after a failure";
}

TEST_F(WindowTest, TakesNoInputDuringABuildThenOrAfterwards) {
  for (int i = 0; i < 20; ++i)
    write(folder / "photos" / std::to_string(i), read(sample("plan [2005].bmp")));
  static std::function<void()> meanwhile;
  bool dismissed = false;
  meanwhile = [&] {
    click("PushButton3");
    control<QPushButton>("PushButton1").click();
    QTest::keyClick(frame, Qt::Key_Return);
    QTest::keyClick(frame, Qt::Key_Q, Qt::ControlModifier);
    letDesktopIn();
    // Return, still in the queue when the message comes, must not dismiss it.
    QTimer::singleShot(0, frame, [&] {
      QWidget* const dialog = QApplication::activeModalWidget();
      dismissed = dismissed || dialog;
      if (dialog) QTest::keyClick(dialog, Qt::Key_Return);
    });
  };
  prepareBuild();
  installBackgroundTask([] { meanwhile(); });
  click("PushButton3");
  installBackgroundTask(nullptr);
  QTest::qWait(50);
  EXPECT_FALSE(dismissed);
  EXPECT_EQ(message, "Votre DigiFilm est créé !");
  EXPECT_EQ(dialogs, 3) << "two folders and one message";
  EXPECT_FALSE(fs::exists(folder / "CD/DIGIFILM/DIGIFILM"));
  EXPECT_TRUE(frame->isVisible());
  EXPECT_EQ(enabled(), "111111");
}

TEST_F(WindowTest, ClosesAfterTheBuildThatItWasAskedToCloseIn) {
  write(folder / "photos/a", read(sample("aquarelle.png")));
  static QMainWindow* closing;
  closing = frame;
  prepareBuild();
  installBackgroundTask([] { closing->close(); });
  EXPECT_EQ(statusAfter([&] { click("PushButton3"); }), 0);
  installBackgroundTask(nullptr);
  EXPECT_EQ(message, "Votre DigiFilm est créé !");
  EXPECT_TRUE(fs::exists(folder / "CD/DIGIFILM/autorun.inf"));
}

TEST_F(WindowTest, EndsBeforeTheEventLoopWhenStartUpFails) {
  closeMessage();
  handlingFailures([] { Ref<FolderItem>(Failure{"Impossible", "/a", "raison"})->Name(); });
  EXPECT_NE(message.find("Impossible « /a » : raison."), std::string::npos);
  EXPECT_EQ(statusAfter([] { FAIL() << "the event loop was entered"; }), 1);
}

TEST_F(WindowTest, EndsTheProgramWhenClosed) {
  EXPECT_EQ(statusAfter([this] { frame->close(); }), 0);
}

TEST_F(WindowTest, HasOneMenuWithQuitAndAbout) {
  const auto window = Window1::Instance();
  EXPECT_EQ(window, Window1::Instance());
  ASSERT_EQ(frame->menuBar()->actions().size(), 1);
  const QList<QAction*> items{&window->FichierMenu()->action(), &window->FileQuit()->action(),
                              &window->AppleApropos()->action()};
  EXPECT_EQ(frame->menuBar()->actions().front(), items[0]);
  EXPECT_EQ(items[0]->menu()->actions(), items.mid(1));
  EXPECT_EQ(items[0]->text() + items[1]->text() + items[2]->text(), "FichierQuitterÀ propos ...");
  EXPECT_EQ(items[1]->menuRole(), QAction::QuitRole);
  EXPECT_EQ(items[2]->menuRole(), QAction::AboutRole);
  EXPECT_FALSE(window->UntitledMenu0());

  items[2]->setEnabled(false);
  emit items[0]->menu()->aboutToShow();
  EXPECT_TRUE(items[2]->isEnabled());
  items[2]->setEnabled(false);
  QTest::keyClick(frame, Qt::Key_A, Qt::ControlModifier);
  EXPECT_TRUE(items[2]->isEnabled());
}

TEST_F(WindowTest, ShowsTheAboutBoxAsPlainLines) {
  closeMessage();
  Window1::Instance()->AppleApropos()->action().trigger();
  EXPECT_TRUE(plainText);
  const std::string description =
      "Orvelin permet de créer, à partir d'un dossier photo, un dossier contenant la structure "
      "d'un DigiFilm© qui peut être graver pour optenir un CD DigiFilm©\nCréé par ";
  EXPECT_EQ(message.substr(0, description.size()), description);
  EXPECT_EQ(std::count(message.begin(), message.end(), '\n'), 4);
  EXPECT_NE(message.find("\n\nIcône : "), std::string::npos);
}

}  // namespace orvelin::test
