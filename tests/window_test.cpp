#include <sys/wait.h>

#include <QtTest>
#include <QtWidgets>
#include <utility>

#include "app/app.h"
#include "app/menubar1.h"
#include "app/window1.h"
#include "builder/driver.h"
#include "platform/core/background.h"
#include "platform/ui/runtime.h"
#include "support.h"

namespace orvelin::test {

/// Opens the window and controls it with mouse and keyboard.
class WindowTest : public FileTest {
 protected:
  WindowTest() {
    const auto app = makeRef<App>();
    app->MenuBar(MenuBar1::Instance());
    Application::Register(app);
    Window1::Instance();
    for (QWidget* widget : QApplication::topLevelWidgets())
      if (auto* main = qobject_cast<QMainWindow*>(widget)) frame = main;
    frame->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(frame));
    fs::create_directories(folder / "photos");
    fs::create_directories(folder / "CD");
  }
  void TearDown() override { release(); }
  static void release() {
    Window::releaseWindows();
    MenuBar1::release();
    Application::Register(nullptr);
  }

  template <class Widget>
  Widget& control(const char* name) {
    return *frame->findChild<Widget*>(name);
  }
  /// Clicks like the window system: the event goes to the window.
  void click(const char* name) {
    auto& button = control<QPushButton>(name);
    const QPoint centre = button.mapTo(frame, button.rect().center());
    QTest::mouseClick(frame->windowHandle(), Qt::LeftButton, {}, centre);
  }
  /// For each control in order of creation, 1 if it is visible and enabled, else 0.
  std::string enabled() {
    std::string state;
    for (const auto* widget : frame->centralWidget()->findChildren<QWidget*>())
      state += widget->isEnabled() && widget->isVisible() ? '1' : '0';
    return state;
  }

  /// Runs the event loop with `action` as its first event. Returns the program's exit status.
  int statusAfter(const std::function<void()>& action) {
    QTimer::singleShot(0, frame, action);
    runtime.runEventLoop();
    release();
    return runtime.stop();
  }
  /// Calls `answer` with the next dialog that opens, and counts it in `dialogs`.
  void whenDialogOpens(const std::function<void(QDialog&)>& answer) {
    QTimer::singleShot(0, [this, answer] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      if (!dialog) return whenDialogOpens(answer);
      ++dialogs;
      answer(*dialog);
    });
  }
  /// Clicks the button and chooses the folder in the dialog; cancels if `path` is empty.
  void choose(const char* button, const fs::path& path) {
    whenDialogOpens([path](QDialog& dialog) {
      if (path.empty()) return QTest::keyClick(&dialog, Qt::Key_Escape);
      type(dialog, path);
    });
    click(button);
  }
  static void type(QDialog& folderDialog, const fs::path& path) {
    auto* line = folderDialog.findChild<QLineEdit*>("fileNameEdit");
    line->setText(QString::fromStdString(path));
    QTest::keyClick(line, Qt::Key_Return);
  }
  /// Does all three steps, and calls `act` at each yield of the build.
  void build(const std::function<void()>& act) {
    choose("PushButton1", folder / "photos");
    choose("PushButton2", folder / "CD");
    closeMessage();
    frame->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(frame));
    atYields(act);
    click("PushButton3");
    atYields({});
  }
  /// Closes the next message with Return and stores its text in `message`.
  void closeMessage() {
    whenDialogOpens([this](QDialog& dialog) {
      QTest::qWait(50);
      const auto& box = dynamic_cast<QMessageBox&>(dialog);
      message = box.text().toStdString();
      EXPECT_EQ(box.textFormat(), Qt::PlainText);
      EXPECT_FALSE(QGuiApplication::overrideCursor()) << "busy pointer during a message";
      // A killed process may take a while to exit.
      const auto childless = [] { return ::waitpid(-1, nullptr, WNOHANG) == -1; };
      EXPECT_TRUE(QTest::qWaitFor(childless)) << "the picture process runs during a message";
      QTest::keyClick(&dialog, Qt::Key_Return);
    });
  }

  Runtime runtime;
  QMainWindow* frame = nullptr;
  int dialogs = 0;
  std::string message;
};

TEST_F(WindowTest, EnablesTheStepsInOrder) {
  const fs::path none, photos = folder / "<i>photos";
  fs::create_directory(photos);
  const QPushButton &first = control<QPushButton>("PushButton1"),
                    &second = control<QPushButton>("PushButton2");
  EXPECT_TRUE(first.hasFocus() && !first.isDefault());
  EXPECT_EQ(enabled(), "110000");
  for (const auto& [button, chosen, wanted] : {std::tuple{"PushButton1", none, "110000"},
                                               {"PushButton1", photos, "111100"},
                                               {"PushButton2", none, "111100"},
                                               {"PushButton2", folder / "CD", "111111"},
                                               {"PushButton1", none, "111111"}}) {
    choose(button, chosen);
    EXPECT_EQ(enabled(), wanted) << button << chosen;
  }
  EXPECT_EQ(first.accessibleDescription().toStdString(), photos);
  EXPECT_EQ(second.accessibleDescription().toStdString(), folder / "CD");
  EXPECT_TRUE(first.toolTip().endsWith("/&lt;i&gt;photos"));
  for (const auto* label : frame->findChildren<QLabel*>())
    EXPECT_EQ(label->buddy()->objectName().back(), label->objectName().back());
}

TEST_F(WindowTest, OpensAFrenchDialogThatAcceptsOnlyExistingFolders) {
  QStringList texts;
  whenDialogOpens([&](QDialog& dialog) {
    EXPECT_TRUE(dialog.findChild<QListView*>("sidebar")) << "for the removable volumes";
    texts << dialog.windowTitle() << QFileIconProvider().type(QFileInfo("/"));
    for (const auto* button : dialog.findChildren<QAbstractButton*>())
      texts << button->text().remove('&') << button->toolTip();
    QObject::connect(&dialog, &QDialog::accepted, [this] { fs::remove_all(folder / "photos"); });
    type(dialog, folder / "photos");
    whenDialogOpens([&](QDialog& report) {
      texts << dynamic_cast<QMessageBox&>(report).text().split('\n');
      report.accept();
      whenDialogOpens([](QDialog& again) { again.reject(); });
    });
  });
  click("PushButton1");
  for (const char* text : {"Choisir un dossier", "Choisir", "Annuler", "Dossier parent", "Disque",
                           "Dossier introuvable."})
    EXPECT_TRUE(texts.contains(text)) << text << " is not in " << texts.join(", ").toStdString();
  EXPECT_TRUE(dialogs == 3 && !Window1::Instance()->inFol);
}

TEST_F(WindowTest, DiscardsInputDuringABuildAndQuitsAfterIt) {
  for (const char* name : {"a", "b"}) addPhoto(name, "plan [2005].bmp");
  BuildState calm(item(folder / "photos"), item(folder));
  buildDigiFilm(calm);
  bool processed = false, dismissed = false;
  runtime.perform([&] {
    QTimer::singleShot(0, frame, [&] { processed = true; });
    QTest::qSleep(25);
    RuntimeBackgroundTask();
    EXPECT_TRUE(processed);
  });
  const auto storm = [&] {
    EXPECT_TRUE(QGuiApplication::overrideCursor());
    QWidget* const focus = frame->focusWidget();
    QWindow* const window = frame->windowHandle();
    for (const char* button : {"PushButton3", "PushButton2", "PushButton1"}) {
      click(button);
      control<QPushButton>(button).click();  // as assistive technology does
      for (const auto key : {Qt::Key_Space, Qt::Key_Return}) QTest::keyClick(window, key);
    }
    EXPECT_EQ(frame->focusWidget(), focus);
    QTest::keyClick(window, Qt::Key_Tab);
    QTest::keyClick(window, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(frame->focusWidget(), focus);
    // A Return that is still queued when the message opens must not close it.
    QTimer::singleShot(0, frame, [&] {
      QWidget* const dialog = QApplication::activeModalWidget();
      dismissed |= dialog != nullptr;
      if (dialog) QTest::keyClick(dialog, Qt::Key_Return);
    });
  };
  const auto bothBuilds = [&] {
    build(storm);
    EXPECT_EQ(std::exchange(message, ""), "Votre DigiFilm est créé !");
    build([this] { EXPECT_FALSE(frame->close()) << "the window goes away during a build"; });
  };
  EXPECT_EQ(statusAfter(bothBuilds), 0);
  EXPECT_EQ(message, "Votre DigiFilm est créé !");
  EXPECT_EQ(dialogs, 6) << "two folder dialogs and a message per build";
  EXPECT_EQ(contentsOf(folder / "CD/DIGIFILM"), contentsOf(folder / "DIGIFILM"));
  EXPECT_FALSE(dismissed);
}

TEST_F(WindowTest, ShowsAFailureWithAdviceAndQuits) {
  write(folder / "photos/a", "");
  build([this] {
    Window1::Instance()->FileQuit()->action().trigger();  // must not prevent the message
    fs::remove_all(folder / "CD");
  });
  const char* const wanted =
      "DIGIFILM\u00A0»\u00A0: cet emplacement n’existe pas, ou plus.\n\nVérif";
  EXPECT_NE(message.find(wanted), std::string::npos) << message;
  EXPECT_EQ(statusAfter([] { FAIL() << "the event loop ran"; }), 1);
}

TEST_F(WindowTest, UpdatesItsMenuAndShowsTheAboutBox) {
  const auto window = Window1::Instance();
  QMenu* const menu = window->FichierMenu()->action().menu();
  for (auto* action : menu->actions()) {
    action->setEnabled(false);
    emit menu->aboutToShow();
    EXPECT_TRUE(action->isEnabled());
    action->setEnabled(false);
    QTest::keyClick(frame->windowHandle(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(action->isEnabled());
  }
  closeMessage();
  menu->actions().at(1)->trigger();
  EXPECT_NE(message.find("graver pour optenir un CD DigiFilm©\nCréé par "), std::string::npos);
  EXPECT_EQ(std::count(message.begin(), message.end(), '\n'), 4);
}

}  // namespace orvelin::test
