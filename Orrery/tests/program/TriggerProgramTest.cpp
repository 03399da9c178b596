// The triggers of the real program on a desktop of its own (Xvfb and
// openbox): the configured shortcut toggles the overlay, a shortcut held by
// another X client is reported, and the configured corner opens the
// overlay when the pointer rests in it but not when it passes through.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Orrery/tests/program/DesktopSession.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

// Alt+K held on the root window by a client of its own, as another app's
// shortcut; it says "grabbed" once the server has granted it.
constexpr const char* kOtherApp = R"(
import ctypes, time
x = ctypes.CDLL("libX11.so.6")
x.XOpenDisplay.restype = ctypes.c_void_p
x.XDefaultRootWindow.restype = ctypes.c_ulong
x.XDefaultRootWindow.argtypes = [ctypes.c_void_p]
x.XKeysymToKeycode.argtypes = [ctypes.c_void_p, ctypes.c_ulong]
x.XGrabKey.argtypes = [ctypes.c_void_p, ctypes.c_int, ctypes.c_uint, ctypes.c_ulong, ctypes.c_int, ctypes.c_int, ctypes.c_int]
x.XSync.argtypes = [ctypes.c_void_p, ctypes.c_int]
display = x.XOpenDisplay(None)
x.XGrabKey(display, x.XKeysymToKeycode(display, 0x6b), 8, x.XDefaultRootWindow(display), 1, 1, 1)
x.XSync(display, 0)
print("grabbed", flush=True)
time.sleep(3600)
)";

class TriggerProgramTest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto started = DesktopSession::start();
    ASSERT_TRUE(started) << started.error();
    session = std::move(*started);
    fs::create_directories(tree() / "data/applications");
    fs::create_directories(tree() / "home");
    std::ofstream(tree() / "data/applications/alpha.desktop")
        << "[Desktop Entry]\nType=Application\nName=Alpha\nExec=true\n";
  }

  const fs::path& tree() const { return temporary.path(); }
  fs::path logFile() const { return tree() / "orrery.log"; }
  static std::string read(const fs::path& path) {
    std::ifstream in(path);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }
  std::string log() const { return read(logFile()); }

  // Starts orrery with `settingsJson` stored as its settings and waits
  // until it has applied its triggers.
  bool start(const std::string& settingsJson) {
    fs::create_directories(tree() / "config/Lumenfold");
    std::string escaped;
    for (const char c : settingsJson) {
      if (c == '"') escaped += '\\';
      escaped += c;
    }
    std::ofstream(tree() / "config/Lumenfold/Orrery.conf")
        << "[General]\nsettings=\"@ByteArray(" << escaped << ")\"\n";
    session->launch({ORRERY_PROGRAM}, DesktopSession::programEnvironment(tree()), logFile());
    return session->waitUntil([&] { return log().find("Orrery gestartet") != std::string::npos; }, 30s);
  }

  bool overlayShown() const {
    const auto windows = session->findWindows(WindowQuery::byName("^Orrery$"));
    return !windows.empty() && session->isFullscreen(windows.front());
  }
  bool overlayHidden() const { return session->findWindows(WindowQuery::byName("^Orrery$")).empty(); }
  bool moveBy(int dx, int dy) const {
    return session->run({"xdotool", "mousemove_relative", "--", std::to_string(dx), std::to_string(dy)})
        .succeeded();
  }

  TemporaryDirectory temporary{"orrery-triggers"};
  std::unique_ptr<DesktopSession> session;
};

TEST_F(TriggerProgramTest, TheShortcutShowsTheOverlayAndHidesItAgain) {
  ASSERT_TRUE(session);
  ASSERT_TRUE(start(R"({"hotKey":{"keyCode":31,"carbonModifiers":2048}})")) << log();
  EXPECT_TRUE(overlayHidden());
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(session->key({"alt+o"}));
    ASSERT_TRUE(session->waitUntil([&] { return overlayShown(); }, 20s)) << log();
    // The overlay has the keyboard now; the shortcut still reaches us.
    ASSERT_TRUE(session->key({"alt+o"}));
    ASSERT_TRUE(session->waitUntil([&] { return overlayHidden(); }, 20s)) << log();
  }
  // Logged when the first frame after the show was swapped, which may come
  // after the window manager made the window full screen.
  EXPECT_TRUE(
      session->waitUntil([&] { return log().find("[hot key] overlay shown in") != std::string::npos; }, 10s))
      << log();
}

TEST_F(TriggerProgramTest, AShortcutHeldByAnotherAppIsReportedAndTheCornerStillWorks) {
  ASSERT_TRUE(session);
  const fs::path otherLog = tree() / "other.log";
  session->launch({"python3", "-c", kOtherApp}, {}, otherLog);
  ASSERT_TRUE(session->waitUntil([&] { return read(otherLog).find("grabbed") != std::string::npos; }, 20s))
      << read(otherLog);

  ASSERT_TRUE(start(R"({"corner":"bottomRight","hotKey":{"keyCode":40,"carbonModifiers":2048}})")) << log();
  EXPECT_NE(log().find("Einstellungen melden: This shortcut is already used by another app."),
            std::string::npos)
      << log();
  ASSERT_TRUE(session->key({"alt+k"}));
  EXPECT_FALSE(session->waitUntil([&] { return overlayShown(); }, 1s)) << "the other app has Alt+K";

  ASSERT_TRUE(session->movePointer(600, 400));
  ASSERT_TRUE(moveBy(2000, 2000));
  EXPECT_TRUE(session->waitUntil([&] { return overlayShown(); }, 20s)) << log();
}

TEST_F(TriggerProgramTest, RestingInTheCornerOpensTheOverlayAndPassingThroughDoesNot) {
  ASSERT_TRUE(session);
  ASSERT_TRUE(start(R"({"corner":"topLeft"})")) << log();
  ASSERT_TRUE(session->movePointer(600, 400));

  // Into the corner and straight out again, within one xdotool call.
  ASSERT_TRUE(session
                  ->run({"xdotool", "mousemove_relative", "--", "-2000", "-2000", "mousemove_relative", "--",
                         "600", "400"})
                  .succeeded());
  EXPECT_FALSE(session->waitUntil([&] { return overlayShown(); }, 2s)) << log();

  ASSERT_TRUE(moveBy(-2000, -2000));
  ASSERT_TRUE(session->waitUntil([&] { return overlayShown(); }, 20s)) << log();
  EXPECT_TRUE(session->waitUntil(
      [&] { return log().find("[hot corner] overlay shown in") != std::string::npos; }, 10s))
      << log();

  // Resting on does not toggle it again; leaving and coming back does.
  EXPECT_FALSE(session->waitUntil([&] { return overlayHidden(); }, 1s));
  ASSERT_TRUE(moveBy(600, 400));
  ASSERT_TRUE(moveBy(-2000, -2000));
  EXPECT_TRUE(session->waitUntil([&] { return overlayHidden(); }, 20s)) << log();
}

}  // namespace
}  // namespace orrery::testing
