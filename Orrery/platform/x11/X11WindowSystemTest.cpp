// The X11 window system against a real window manager: openbox in a
// desktop session of the test's own, with this process as a Qt client on
// that display and other X clients beside it.
#include <QWindow>

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Orrery/platform/PlatformFactory.h"
#include "Orrery/tests/program/QtDesktopTest.h"

namespace orrery::platform {
namespace {

using namespace std::chrono_literals;
using testing::WindowQuery;
using testing::XWindow;

class X11WindowSystemTest : public testing::QtDesktopTest {
 protected:
  void SetUp() override {
    if (session == nullptr) GTEST_SKIP() << "no desktop session";
    windowSystem = makeWindowSystem();
  }

  static XWindow idOf(QWindow& window) { return static_cast<XWindow>(window.winId()); }

  void expectOverlay(XWindow window) const {
    EXPECT_TRUE(session->waitUntilFullscreen(window, 20s)) << session->geometry(window).has_value();
    const auto states = session->netWmState(window);
    for (const char* state : {"_NET_WM_STATE_ABOVE", "_NET_WM_STATE_FULLSCREEN", "_NET_WM_STATE_SKIP_TASKBAR",
                              "_NET_WM_STATE_SKIP_PAGER"}) {
      EXPECT_TRUE(states.contains(state)) << state;
    }
    EXPECT_EQ(session->property(window, "_NET_WM_BYPASS_COMPOSITOR"), "2");
    EXPECT_NE(
        session->property(window, "_NET_WM_WINDOW_TYPE").value_or("").find("_NET_WM_WINDOW_TYPE_NORMAL"),
        std::string::npos);
    EXPECT_EQ(session->property(window, "_NET_FRAME_EXTENTS"), "0, 0, 0, 0");
  }

  std::unique_ptr<app::WindowSystem> windowSystem;
};

TEST_F(X11WindowSystemTest, MakesAnOverlayThatStaysOneWhenShownAgain) {
  QWindow overlay;
  overlay.setTitle("overlay");
  overlay.resize(320, 200);
  windowSystem->prepareOverlay(overlay);
  overlay.show();
  const XWindow window = idOf(overlay);
  ASSERT_TRUE(session->waitUntilMapped(window, 20s)) << session->logs();
  expectOverlay(window);

  // The window is built once and reused; a hidden window loses its states.
  overlay.hide();
  ASSERT_TRUE(session->waitUntil([&] { return !session->isViewable(window); }, 20s));
  windowSystem->prepareOverlay(overlay);
  overlay.show();
  ASSERT_TRUE(session->waitUntilMapped(window, 20s));
  expectOverlay(window);
}

TEST_F(X11WindowSystemTest, TurnsAShownWindowIntoAnOverlay) {
  QWindow overlay;
  overlay.setTitle("late overlay");
  overlay.resize(320, 200);
  overlay.show();
  const XWindow window = idOf(overlay);
  ASSERT_TRUE(session->waitUntilMapped(window, 20s));
  ASSERT_FALSE(session->netWmState(window).contains("_NET_WM_STATE_SKIP_TASKBAR"));

  windowSystem->prepareOverlay(overlay);
  expectOverlay(window);
}

// KWin blurs what lies behind a window that carries this property; the
// glass look turns it on and every other look off again.
TEST_F(X11WindowSystemTest, AsksForTheDesktopToBeBlurredBehindTheGlass) {
  QWindow overlay;
  overlay.setTitle("glass");
  overlay.resize(320, 200);
  windowSystem->prepareOverlay(overlay);
  overlay.show();
  const XWindow window = idOf(overlay);
  ASSERT_TRUE(session->waitUntilMapped(window, 20s));
  EXPECT_FALSE(session->property(window, "_KDE_NET_WM_BLUR_BEHIND_REGION"));

  windowSystem->setBlurBehind(overlay, true);
  EXPECT_TRUE(session->property(window, "_KDE_NET_WM_BLUR_BEHIND_REGION"));
  windowSystem->setBlurBehind(overlay, false);
  EXPECT_FALSE(session->property(window, "_KDE_NET_WM_BLUR_BEHIND_REGION"));
}

TEST_F(X11WindowSystemTest, GivesTheKeyboardBackToTheWindowThatHadIt) {
  EXPECT_EQ(windowSystem->activeWindow(), session->activeWindow());

  session->launch({"xmessage", "-name", "before", "the window the user was in"});
  const auto before = session->waitForWindow(WindowQuery::byInstance("^before$"), 20s);
  ASSERT_TRUE(before) << session->logs();
  ASSERT_TRUE(session->waitForActiveWindow(*before, 20s));
  EXPECT_EQ(windowSystem->activeWindow(), before);

  QWindow overlay;
  overlay.setTitle("overlay");
  windowSystem->prepareOverlay(overlay);
  overlay.show();
  windowSystem->activate(overlay);
  const XWindow window = idOf(overlay);
  ASSERT_TRUE(session->waitForActiveWindow(window, 20s));
  EXPECT_EQ(windowSystem->activeWindow(), window);

  windowSystem->activate(*before);
  EXPECT_TRUE(session->waitForActiveWindow(*before, 20s));
  EXPECT_EQ(windowSystem->activeWindow(), before);

  // And back, by its id like any other window.
  windowSystem->activate(window);
  EXPECT_TRUE(session->waitForActiveWindow(window, 20s));
}

}  // namespace
}  // namespace orrery::platform
