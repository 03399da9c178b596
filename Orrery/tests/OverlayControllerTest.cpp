#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickView>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Orrery/overlay/OverlayController.h"
#include "Orrery/tests/ManualClock.h"
#include "OrreryCore/storage/MemoryFileSystem.h"
#include "OrreryCore/testing/LayoutBuilders.h"

namespace orrery::app {
namespace {

using namespace std::chrono_literals;
using orrery::testing::app;
using orrery::testing::appInfo;
using orrery::testing::byID;
using orrery::testing::folder;
using orrery::testing::layoutOf;
using testing::ManualClock;

// Records what the controller asks of the desktop-wide Esc and lets a test
// press it.
class RecordingEscapeFallback final : public EscapeFallback {
 public:
  void setHandler(Handler handler) override { handler_ = std::move(handler); }
  void setActive(bool active) override { active_ = active; }
  bool isActive() const override { return active_; }
  void press() const {
    if (active_ && handler_) handler_();
  }

 private:
  Handler handler_;
  bool active_ = false;
};

// A window manager that refuses to hand the keyboard over, as focus
// stealing prevention may.
class RefusingWindowSystem final : public WindowSystem {
 public:
  std::optional<WindowId> activeWindow() override { return std::nullopt; }
  void activate(WindowId) override {}
  void activate(QWindow&) override { ++asked; }
  void prepareOverlay(QWindow&) override {}
  void setBlurBehind(QWindow&, bool) override {}
  int asked = 0;
};

QKeyEvent key(int code, const QString& text = {}) {
  return QKeyEvent(QEvent::KeyPress, code, Qt::NoModifier, text);
}

class OverlayControllerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::vector<LayoutItem> items{folder("Games", {"chess", "mines"})};
    for (int i = 0; i < 40; ++i) items.push_back(app("app" + std::to_string(i)));
    files.writeFile("/data/Orrery/layout.json", layoutOf(items).encoded());
    arrangement = std::make_unique<ArrangementController>(LayoutStore("/data/Orrery", files), false);
    model = std::make_unique<OverlayModel>(*arrangement);
    std::vector<AppInfo> apps{appInfo("chess", "Chess"), appInfo("mines", "Mines")};
    for (int i = 0; i < 40; ++i)
      apps.push_back(appInfo("app" + std::to_string(i), "App " + std::to_string(i)));
    model->sync(arrangement->layout(), byID(apps), Settings());
    QObject::connect(model.get(), &OverlayModel::launchRequested,
                     [this](const AppInfo& chosen) { launched.push_back(chosen.id); });
    controller = std::make_unique<OverlayController>(*model, clock);
  }

  bool press(int code, const QString& text = {}) { return controller->handleKey(key(code, text)); }

  MemoryFileSystem files;
  ManualClock clock;
  // Before the controller, which uses them until it is gone.
  RecordingEscapeFallback escape;
  RefusingWindowSystem windows;
  std::unique_ptr<ArrangementController> arrangement;
  std::unique_ptr<OverlayModel> model;
  std::unique_ptr<OverlayController> controller;
  std::vector<std::string> launched;
};

TEST_F(OverlayControllerTest, TheViewsLoadAndTheWindowIsReusedHidden) {
  ASSERT_NE(controller->window(), nullptr);
  EXPECT_TRUE(controller->window()->errors().isEmpty());
  ASSERT_NE(controller->window()->rootObject(), nullptr);
  EXPECT_FALSE(controller->window()->isVisible());
  EXPECT_TRUE(controller->window()->flags().testFlag(Qt::FramelessWindowHint));
  EXPECT_TRUE(controller->window()->flags().testFlag(Qt::WindowStaysOnTopHint));
}

TEST_F(OverlayControllerTest, AShowDuringAFadeOutStaysShown) {
  controller->show();
  EXPECT_TRUE(controller->window()->isVisible());
  controller->hide();
  EXPECT_FALSE(controller->revealed());
  clock.advance(100ms);
  EXPECT_TRUE(controller->window()->isVisible());  // still fading out
  controller->show();
  clock.advance(500ms);  // the end of the first fade comes and goes
  EXPECT_TRUE(controller->window()->isVisible());
  EXPECT_TRUE(controller->revealed());

  controller->hide();
  clock.advance(OverlayController::fadeDuration);
  EXPECT_FALSE(controller->window()->isVisible());
  EXPECT_FALSE(controller->isVisible());
}

TEST_F(OverlayControllerTest, EscClosesTheFolderBeforeItHidesTheOverlay) {
  controller->show();
  model->openFolder(QString::fromStdString(arrangement->layout().items[0].asFolder()->id.text()));
  ASSERT_FALSE(model->openFolderID().isEmpty());
  EXPECT_TRUE(press(Qt::Key_Escape));
  EXPECT_TRUE(model->openFolderID().isEmpty());
  EXPECT_TRUE(controller->isVisible());
  EXPECT_TRUE(press(Qt::Key_Escape));
  EXPECT_FALSE(controller->isVisible());
}

TEST_F(OverlayControllerTest, TypingSearchesFromAnywhereAndReturnLaunchesOnlyWhatItFound) {
  controller->show();
  QQuickView& window = *controller->window();
  // Into the search field, which has the keyboard.
  for (const char letter : {'m', 'i'}) QTest::keyClick(&window, letter);
  EXPECT_EQ(model->query(), "mi");
  QTest::keyClick(&window, Qt::Key_Return);
  EXPECT_EQ(launched, std::vector<std::string>{"mines"});

  // With the keyboard elsewhere in the window, a letter still lands in the
  // search and the field takes the keyboard back.
  window.contentItem()->forceActiveFocus();
  QTest::keyClick(&window, Qt::Key_S, Qt::NoModifier);
  EXPECT_EQ(model->query(), "mis");
  ASSERT_NE(window.activeFocusItem(), nullptr);
  EXPECT_EQ(window.activeFocusItem()->objectName(), "searchInput");

  model->setQuery("nothing like it");
  QTest::keyClick(&window, Qt::Key_Enter);
  EXPECT_EQ(launched.size(), 1u);
}

TEST_F(OverlayControllerTest, ArrowsTurnPagesExceptWhileSearching) {
  Settings small;
  small.columns = 5;
  small.rows = 4;
  model->sync(arrangement->layout(), OverlayModel::AppMap(), small);  // 41 items, 20 a page: 3 pages
  controller->show();
  EXPECT_TRUE(press(Qt::Key_Right));
  EXPECT_EQ(model->page(), 1);
  EXPECT_TRUE(press(Qt::Key_End));
  EXPECT_EQ(model->page(), 2);
  EXPECT_TRUE(press(Qt::Key_PageUp));
  EXPECT_EQ(model->page(), 1);

  model->setQuery("app");
  EXPECT_FALSE(press(Qt::Key_Left));  // left to the text field
  EXPECT_FALSE(press(Qt::Key_Home));
  EXPECT_EQ(model->page(), 1);
}

TEST_F(OverlayControllerTest, WheelClicksTurnPagesAndScrollInScrollMode) {
  Settings small;
  small.columns = 5;
  small.rows = 4;
  model->sync(arrangement->layout(), OverlayModel::AppMap(), small);
  controller->show();
  EXPECT_TRUE(controller->handleWheel({WheelInput::Phase::none, 0, -15, 1000ms}));
  EXPECT_TRUE(controller->handleWheel({WheelInput::Phase::none, 0, -15, 1100ms}));
  EXPECT_EQ(model->page(), 1);

  small.layoutMode = LayoutMode::scroll;
  model->sync(arrangement->layout(), OverlayModel::AppMap(), small);
  model->setViewport(400, 2000);
  controller->handleWheel({WheelInput::Phase::none, 0, -120, 2000ms});
  EXPECT_EQ(model->scrollOffset(), 120);
}

TEST_F(OverlayControllerTest, TheOverlayTakesTheKeyboardBackUnlessTheUserGaveItAway) {
  controller->setEscapeFallback(&escape);
  QSignalSpy reclaimed(controller.get(), &OverlayController::reclaimingKeyboard);
  controller->show();
  QQuickView& overlay = *controller->window();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&overlay));
  EXPECT_FALSE(escape.isActive());

  // Another window of ours takes the keyboard by itself: the overlay takes
  // it back, and until then Esc is caught for it.
  QWindow other;
  other.resize(200, 100);
  other.show();
  other.requestActivate();
  ASSERT_TRUE(QTest::qWaitFor([&] { return QGuiApplication::focusWindow() == &other; }));
  EXPECT_TRUE(escape.isActive());
  ASSERT_TRUE(QTest::qWaitFor([&] { return QGuiApplication::focusWindow() == &overlay; }));
  ASSERT_EQ(reclaimed.count(), 1);
  EXPECT_EQ(reclaimed.at(0).at(0).toString(), "QWindow");
  EXPECT_FALSE(escape.isActive());

  // A click there is the user's choice: the keyboard stays with that window
  // and no global Esc is taken from it.
  QTest::mouseClick(&other, Qt::LeftButton);
  other.requestActivate();
  ASSERT_TRUE(QTest::qWaitFor([&] { return QGuiApplication::focusWindow() == &other; }));
  QTest::qWait(20);
  EXPECT_EQ(QGuiApplication::focusWindow(), &other);
  EXPECT_TRUE(controller->keyboardYielded());
  EXPECT_EQ(reclaimed.count(), 1);
  EXPECT_FALSE(escape.isActive());

  // A click back into the overlay brings the keyboard home.
  QTest::mouseClick(&overlay, Qt::RightButton, {}, QPoint(4, 4));
  EXPECT_FALSE(controller->keyboardYielded());
  ASSERT_TRUE(QTest::qWaitFor([&] { return QGuiApplication::focusWindow() == &overlay; }));
  EXPECT_EQ(reclaimed.count(), 2);

  // Once hidden, the overlay wants nothing.
  controller->hide();
  other.requestActivate();
  ASSERT_TRUE(QTest::qWaitFor([&] { return QGuiApplication::focusWindow() == &other; }));
  QTest::qWait(20);
  EXPECT_EQ(QGuiApplication::focusWindow(), &other);
  EXPECT_FALSE(escape.isActive());
}

TEST_F(OverlayControllerTest, EscCaughtForTheOverlayFollowsTheEscLadderAndAsksOnlyOnce) {
  controller = std::make_unique<OverlayController>(*model, clock, nullptr, &windows);
  controller->setEscapeFallback(&escape);
  controller->show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(controller->window()));
  const int askedAtShow = windows.asked;

  QWindow other;
  other.resize(200, 100);
  other.show();
  ASSERT_TRUE(QTest::qWaitFor([&] { return QGuiApplication::focusWindow() == &other; }));
  QTest::qWait(20);
  // One request, not a loop of them while the window manager says no.
  EXPECT_EQ(windows.asked, askedAtShow + 1);
  ASSERT_TRUE(escape.isActive());

  model->openFolder(QString::fromStdString(arrangement->layout().items[0].asFolder()->id.text()));
  escape.press();
  EXPECT_TRUE(model->openFolderID().isEmpty());
  EXPECT_TRUE(controller->isVisible());
  escape.press();
  EXPECT_FALSE(controller->isVisible());
  EXPECT_FALSE(escape.isActive());
}

}  // namespace
}  // namespace orrery::app
