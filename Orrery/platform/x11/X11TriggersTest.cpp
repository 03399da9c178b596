// The triggers' X11 adapters against a real X server with openbox: key
// grabs that other clients see, the Esc fallback, and the pointer's raw
// motion, driven by xdotool like a user's hands.
#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "Orrery/platform/x11/X11EventConnection.h"
#include "Orrery/platform/x11/X11GlobalPointer.h"
#include "Orrery/platform/x11/X11KeyGrabs.h"
#include "Orrery/platform/x11/X11KeyboardLayout.h"
#include "Orrery/tests/program/QtDesktopTest.h"
#include "OrreryCore/triggers/KeyCombo.h"
#include "OrreryCore/triggers/X11KeyTable.h"

namespace orrery::platform {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t kKeysymO = 0x6f;
const HotKey kOptionO{31, HotKey::kOption};  // the O key with Alt

class X11TriggersTest : public testing::QtDesktopTest {
 protected:
  void SetUp() override {
    if (session == nullptr) GTEST_SKIP() << "no desktop session";
    connection = X11EventConnection::open(display);
    ASSERT_TRUE(connection);
  }

  // Another client grabbing one exact key and modifier mask on the root
  // window, as a desktop's shortcut daemon would.
  struct OtherClient {
    OtherClient() : connection(xcb_connect(display.c_str(), nullptr)) {}
    ~OtherClient() { xcb_disconnect(connection); }
    OtherClient(const OtherClient&) = delete;
    OtherClient& operator=(const OtherClient&) = delete;
    bool grab(std::uint32_t keysym, std::uint16_t modifiers) {
      xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(connection);
      xcb_keycode_t* codes = xcb_key_symbols_get_keycode(symbols, keysym);
      const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
      xcb_generic_error_t* error =
          xcb_request_check(connection, xcb_grab_key_checked(connection, 1, root, modifiers, codes[0],
                                                             XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
      std::free(codes);
      xcb_key_symbols_free(symbols);
      const bool granted = error == nullptr;
      std::free(error);
      return granted;
    }
    xcb_connection_t* connection;
  };

  bool waitFor(const int& counter, int value) const {
    return session->waitUntil([&] { return counter >= value; }, 10s);
  }

  std::shared_ptr<X11EventConnection> connection;
};

TEST_F(X11TriggersTest, AGrabbedShortcutFiresWithAnyLockAndIsFreeAgainAfterRelease) {
  X11KeyGrabs grabs(connection);
  int pressed = 0;
  const auto held = grabs.grab(kOptionO);
  ASSERT_EQ(held.outcome, app::KeyGrabService::Outcome::grabbed);
  grabs.setOnPressed([&](app::KeyGrabService::GrabId id) { pressed += id == held.id ? 1 : 100; });

  ASSERT_TRUE(session->key({"alt+o"}));
  ASSERT_TRUE(waitFor(pressed, 1));
  ASSERT_TRUE(session->key({"Num_Lock"}));
  ASSERT_TRUE(session->key({"alt+o"}));
  ASSERT_TRUE(waitFor(pressed, 2)) << "with Num Lock on";
  ASSERT_TRUE(session->key({"Num_Lock"}));
  ASSERT_TRUE(session->key({"ctrl+alt+o"}));
  ASSERT_TRUE(session->key({"alt+o"}));
  ASSERT_TRUE(waitFor(pressed, 3));
  EXPECT_EQ(pressed, 3) << "another modifier set is another shortcut";

  OtherClient other;
  EXPECT_FALSE(other.grab(kKeysymO, X11KeyTable::Mask::mod1));
  grabs.release(held.id);
  EXPECT_TRUE(other.grab(kKeysymO, X11KeyTable::Mask::mod1));
  EXPECT_TRUE(other.grab(kKeysymO, X11KeyTable::Mask::mod1 | X11KeyTable::Mask::lock));
}

TEST_F(X11TriggersTest, ACombinationHeldElsewhereIsTakenAndLeavesNoPartialGrabs) {
  X11KeyGrabs grabs(connection);
  int pressed = 0;
  grabs.setOnPressed([&](app::KeyGrabService::GrabId) { ++pressed; });
  const auto old = grabs.grab(HotKey{31, HotKey::kControl | HotKey::kOption});
  ASSERT_EQ(old.outcome, app::KeyGrabService::Outcome::grabbed);

  // The other client holds only the Caps Lock variant of Alt+O: the plain
  // variant is granted to us first, then must be given back.
  OtherClient other;
  ASSERT_TRUE(other.grab(kKeysymO, X11KeyTable::Mask::mod1 | X11KeyTable::Mask::lock));
  const auto refused = grabs.grab(kOptionO);
  EXPECT_EQ(refused.outcome, app::KeyGrabService::Outcome::taken);
  EXPECT_EQ(refused.status, X11KeyGrabs::badAccess);
  OtherClient third;
  EXPECT_TRUE(third.grab(kKeysymO, X11KeyTable::Mask::mod1)) << "the plain variant was released again";

  ASSERT_TRUE(session->key({"ctrl+alt+o"}));
  EXPECT_TRUE(waitFor(pressed, 1)) << "the old shortcut still works";
}

// The grab the Esc fallback makes while the overlay lacks the keyboard.
TEST_F(X11TriggersTest, BareEscapeIsGrabbedWithoutModifiersAndReleasedAgain) {
  X11KeyGrabs grabs(connection);
  int pressed = 0;
  grabs.setOnPressed([&](app::KeyGrabService::GrabId) { ++pressed; });
  const auto escape = grabs.grab(HotKey{KeyCombo::escapeKeyCode, 0});
  ASSERT_EQ(escape.outcome, app::KeyGrabService::Outcome::grabbed);
  ASSERT_TRUE(session->key({"Escape"}));
  ASSERT_TRUE(waitFor(pressed, 1));
  ASSERT_TRUE(session->key({"shift+Escape"}));
  ASSERT_TRUE(session->key({"Escape"}));
  ASSERT_TRUE(waitFor(pressed, 2));
  EXPECT_EQ(pressed, 2) << "only Esc without modifiers";

  grabs.release(escape.id);
  OtherClient other;
  EXPECT_TRUE(other.grab(0xff1b, 0)) << "Esc is free for everyone again";
}

TEST_F(X11TriggersTest, ThePointerReportsRawMotionOnlyWhileWatchedInTheCoresSpace) {
  auto pointer = X11GlobalPointer::make(connection);
  ASSERT_TRUE(pointer) << "the server lacks XInput 2.2";
  int moves = 0;
  ASSERT_TRUE(session->movePointer(400, 300));
  pointer->watchMotion([&] { ++moves; });
  // Relative motion, as a mouse makes it; a warp is no device motion.
  ASSERT_TRUE(session->run({"xdotool", "mousemove_relative", "--", "-1000", "-1000"}).succeeded());
  ASSERT_TRUE(waitFor(moves, 1));

  const auto screens = pointer->screens();
  ASSERT_EQ(screens.size(), 1U);
  EXPECT_EQ(screens[0],
            (Rect{{0, 0}, {static_cast<double>(session->width()), static_cast<double>(session->height())}}));
  EXPECT_EQ(pointer->position(), (Point{0, static_cast<double>(session->height())})) << "the top left, y up";
  EXPECT_EQ(pointer->buttons(), 0U);
  EXPECT_EQ(pointer->modifierFlags(), 0U);

  pointer->watchMotion({});
  const int before = moves;
  ASSERT_TRUE(session->run({"xdotool", "mousemove_relative", "--", "50", "50"}).succeeded());
  ASSERT_TRUE(session->movePointer(10, 10));
  session->waitUntil([] { return false; }, 300ms);
  EXPECT_EQ(moves, before);
}

TEST_F(X11TriggersTest, KeysAreNamedAndReadThroughTheKeyboardMap) {
  X11KeyboardLayout layout(connection);
  EXPECT_EQ(layout.character(31), "o");
  EXPECT_EQ(KeyCombo::display(kOptionO, [&](std::uint32_t code) { return layout.character(code); }), "⌥O");
  xcb_key_symbols_t* symbols = connection->keySymbols();
  xcb_keycode_t* codes = xcb_key_symbols_get_keycode(symbols, kKeysymO);
  ASSERT_NE(codes, nullptr);
  EXPECT_EQ(layout.keyCode(codes[0]), 31U);
  std::free(codes);
  EXPECT_EQ(layout.keyCode(0), std::nullopt);
}

}  // namespace
}  // namespace orrery::platform
