// The overlay of the real program on a desktop of its own (Xvfb and
// openbox): it comes up full screen, launches what the user typed, and
// gives the keyboard back when Esc hides it.
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

class OverlayProgramTest : public ::testing::Test {
 protected:
  void SetUp() override { startSession(DesktopSession::Options{}); }

  void startSession(DesktopSession::Options options) {
    auto started = DesktopSession::start(options);
    ASSERT_TRUE(started) << started.error();
    session = std::move(*started);

    fs::create_directories(tree() / "data/applications");
    fs::create_directories(tree() / "home");
    for (const char* name : {"Alpha", "Beta", "Gamma"}) {
      std::ofstream(tree() / "data/applications" / (std::string(name) + ".desktop"))
          << "[Desktop Entry]\nType=Application\nName=" << name << "\nExec=true\n";
    }
    // A program that leaves a mark, at a path no shell would survive.
    const fs::path script = tree() / "bin dir/make $marker";
    fs::create_directories(script.parent_path());
    std::ofstream(script) << "#!/bin/sh\nprintf '%s' \"$1\" > \"$2\"\n";
    fs::permissions(script, fs::perms::owner_all);
    std::ofstream(tree() / "data/applications/marker.desktop")
        << "[Desktop Entry]\nType=Application\nName=Marker Maker\nExec=\"" << script.string()
        << "\" launched \"" << marker().string() << "\"\n";
  }

  const fs::path& tree() const { return temporary.path(); }
  fs::path marker() const { return tree() / "marker"; }
  fs::path logFile() const { return tree() / "orrery.log"; }
  std::string log() const {
    std::ifstream in(logFile());
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }

  // Starts orrery with its folders in the tree, showing the overlay, and
  // returns its window once it covers the screen.
  std::optional<XWindow> showOverlay() {
    session->launch({ORRERY_PROGRAM, "--show-overlay"}, DesktopSession::programEnvironment(tree()),
                    logFile());
    const auto window = session->waitForWindow(WindowQuery::byName("^Orrery$"), 30s);
    if (!window) return std::nullopt;
    if (!session->waitUntilFullscreen(*window, 20s)) return std::nullopt;
    return window;
  }

  TemporaryDirectory temporary{"orrery-overlay"};
  std::unique_ptr<DesktopSession> session;
};

TEST_F(OverlayProgramTest, TypingANameAndReturnLaunchesItAndHidesTheOverlay) {
  ASSERT_TRUE(session);
  const auto overlay = showOverlay();
  ASSERT_TRUE(overlay) << session->logs() << log();
  const auto frame = session->geometry(*overlay);
  ASSERT_TRUE(frame);
  EXPECT_EQ(frame->width, session->width());
  EXPECT_EQ(frame->height, session->height());
  EXPECT_TRUE(session->netWmState(*overlay).contains("_NET_WM_STATE_ABOVE")) << log();
  ASSERT_TRUE(session->waitForActiveWindow(*overlay, 10s));
  // The grid is filled by the first scan; type once it is in (the
  // arrangement it saved names the app).
  ASSERT_TRUE(session->waitUntil(
      [&] {
        std::ifstream in(tree() / "data/Orrery/layout.json");
        const std::string saved(std::istreambuf_iterator<char>(in), {});
        return saved.find("marker.desktop") != std::string::npos;
      },
      20s))
      << log();

  ASSERT_TRUE(session->type("marker"));
  ASSERT_TRUE(session->key({"Return"}));
  // The shell creates the file before printf writes into it: wait for the
  // content, not for the file.
  const auto marked = [&] {
    std::ifstream in(marker());
    return std::string(std::istreambuf_iterator<char>(in), {});
  };
  ASSERT_TRUE(session->waitUntil([&] { return marked() == "launched"; }, 20s)) << marked() << log();
  EXPECT_TRUE(session->waitUntil([&] { return !session->isViewable(*overlay); }, 10s));
}

TEST_F(OverlayProgramTest, EscHidesTheOverlayAndTheKeyboardGoesBack) {
  ASSERT_TRUE(session);
  session->launch({"xmessage", "-name", "previous", "-center", "the window that had the keyboard"});
  const auto previous = session->waitForWindow(WindowQuery::byInstance("^previous$"), 20s);
  ASSERT_TRUE(previous) << session->logs();
  ASSERT_TRUE(session->waitForActiveWindow(*previous, 10s));

  const auto overlay = showOverlay();
  ASSERT_TRUE(overlay) << session->logs() << log();
  ASSERT_TRUE(session->waitForActiveWindow(*overlay, 10s));
  ASSERT_TRUE(session->key({"Escape"}));
  EXPECT_TRUE(session->waitUntil([&] { return !session->isViewable(*overlay); }, 10s));
  EXPECT_TRUE(session->waitForActiveWindow(*previous, 10s)) << log();
}

TEST_F(OverlayProgramTest, TheOverlayOpensOnTheDisplayUnderThePointer) {
  session.reset();
  startSession(DesktopSession::Options{.monitors = 2});
  ASSERT_TRUE(session);
  ASSERT_TRUE(session->movePointer(session->width() + 200, 300));
  const auto overlay = showOverlay();
  ASSERT_TRUE(overlay) << session->logs() << log();
  const auto frame = session->geometry(*overlay);
  ASSERT_TRUE(frame);
  EXPECT_EQ(*frame, (WindowGeometry{session->width(), 0, session->width(), session->height()})) << log();
}

}  // namespace
}  // namespace orrery::testing
