// Drag and drop in the real program on a desktop of its own (Xvfb and
// openbox), with the real pointer pressed, moved and released by xdotool,
// judged by the arrangement layout.json holds afterwards.
//
// Forty apps app00 … app39; the arrangement file names all but app39, so
// the first scan appends it and saves: once app39 is in the file, the
// program knows its apps. The screen is 1280 × 800 with the default 7 × 5
// grid: page 0 holds app00 … app34, page 1 app35 … app39. With
// ORRERY_SCREENSHOT_DIR set, a screenshot taken in the middle of a drag is
// saved there as drag.png.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "Orrery/tests/program/DesktopSession.h"
#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/testing/LayoutBuilders.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

std::string appName(int number) {
  char name[8];
  std::snprintf(name, sizeof name, "app%02d", number);
  return name;
}
std::string appID(int number) { return appName(number) + ".desktop"; }

class DragProgramTest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto started = DesktopSession::start();
    ASSERT_TRUE(started) << started.error();
    session = std::move(*started);
    fs::create_directories(tree() / "data/applications");
    fs::create_directories(tree() / "data/Orrery");
    fs::create_directories(tree() / "home");
    for (int i = 0; i < 40; ++i)
      std::ofstream(tree() / "data/applications" / appID(i))
          << "[Desktop Entry]\nType=Application\nName=" << appName(i) << "\nExec=true\n";
  }

  // Writes the arrangement (without app39), starts orrery with the overlay
  // shown and waits until its first scan is saved.
  ::testing::AssertionResult startWith(const std::vector<LayoutItem>& items,
                                       const std::vector<std::string>& options) {
    std::ofstream(layoutFile()) << layoutOf(items).encoded();
    std::vector<std::string> arguments{ORRERY_PROGRAM};
    arguments.insert(arguments.end(), options.begin(), options.end());
    session->launch(arguments,
                    {"HOME=" + (tree() / "home").string(), "XDG_DATA_HOME=" + (tree() / "data").string(),
                     "XDG_DATA_DIRS=" + (tree() / "system").string(),
                     "XDG_CONFIG_HOME=" + (tree() / "config").string(), "QT_QPA_PLATFORM=xcb"},
                    logFile());
    const auto window = session->waitForWindow(WindowQuery::byName("^Orrery$"), 30s);
    if (!window) return ::testing::AssertionFailure() << "no window\n" << session->logs() << log();
    if (!session->waitUntilFullscreen(*window, 20s) || !session->waitForActiveWindow(*window, 10s))
      return ::testing::AssertionFailure() << "not full screen with the keyboard\n" << log();
    if (!session->waitUntil([&] { return saved().find(appID(39)) != std::string::npos; }, 20s))
      return ::testing::AssertionFailure() << "the first scan was not saved\n" << log();
    // The fade-in ends before the pointer acts.
    std::this_thread::sleep_for(400ms);
    return ::testing::AssertionSuccess();
  }

  const fs::path& tree() const { return temporary.path(); }
  fs::path layoutFile() const { return tree() / "data/Orrery/layout.json"; }
  fs::path logFile() const { return tree() / "orrery.log"; }
  static std::string contents(const fs::path& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }
  std::string log() const { return contents(logFile()); }
  std::string saved() const { return contents(layoutFile()); }

  bool xdotool(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{"xdotool"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return session->run(command).succeeded();
  }
  bool buttonDown() const { return xdotool({"mousedown", "1"}); }
  bool buttonUp() const { return xdotool({"mouseup", "1"}); }
  // Moves in steps, as a hand does, so the program sees the way.
  bool glideTo(int x, int y) {
    const int steps = 8;
    for (int step = 1; step <= steps; ++step) {
      const int atX = pointerX + (x - pointerX) * step / steps;
      const int atY = pointerY + (y - pointerY) * step / steps;
      if (!session->movePointer(atX, atY)) return false;
      std::this_thread::sleep_for(20ms);
    }
    pointerX = x;
    pointerY = y;
    return true;
  }
  bool jumpTo(int x, int y) {
    pointerX = x;
    pointerY = y;
    return session->movePointer(x, y);
  }

  // Waits until layout.json holds `expected` (folder ids aside).
  ::testing::AssertionResult savedIs(const std::vector<LayoutItem>& expected) {
    const std::string want = describe(layoutOf(expected));
    std::string have;
    const bool reached = session->waitUntil(
        [&] {
          const auto layout = Layout::decode(saved());
          have = layout ? describe(*layout) : "(unreadable)";
          return have == want;
        },
        10s);
    if (reached) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "expected " << want << "\nsaved    " << have << "\n" << log();
  }

  static std::vector<LayoutItem> apps(int from, int to) {
    std::vector<LayoutItem> items;
    for (int i = from; i < to; ++i) items.push_back(app(appID(i)));
    return items;
  }

  // The grid: 7 × 5 cells between the search field and the page dots.
  static constexpr double sideMargin = 1280 * 0.08;
  static constexpr double cellWidth = (1280 - 2 * sideMargin) / 7;
  static constexpr double cellHeight = (800 - 120 - 72) / 5.0;
  static int tileX(int slot) { return static_cast<int>(sideMargin + (slot % 7 + 0.5) * cellWidth); }
  static int tileY(int slot) { return static_cast<int>(120 + (slot / 7 + 0.5) * cellHeight); }

  TemporaryDirectory temporary{"orrery-drag"};
  std::unique_ptr<DesktopSession> session;
  int pointerX = 0;
  int pointerY = 0;
};

TEST_F(DragProgramTest, HeldAtTheRightEdgeAnAppMovesToTheNextPage) {
  ASSERT_TRUE(session);
  ASSERT_TRUE(startWith(apps(0, 39), {"--show-overlay"}));
  ASSERT_TRUE(jumpTo(tileX(0), tileY(0)));
  ASSERT_TRUE(buttonDown());
  ASSERT_TRUE(glideTo(tileX(3) + 50, tileY(0)));  // after app03: the others make room
  if (const char* folder = std::getenv("ORRERY_SCREENSHOT_DIR")) {
    std::this_thread::sleep_for(300ms);
    session->screenshot(fs::path(folder) / "drag.png");
  }
  ASSERT_TRUE(glideTo(1275, 400));
  std::this_thread::sleep_for(1000ms);  // 0.6 s at the edge flips once; page 1 is the last
  // Before app37, the third tile of page 1.
  ASSERT_TRUE(glideTo(tileX(2) - 50, tileY(0)));
  std::this_thread::sleep_for(300ms);
  ASSERT_TRUE(buttonUp());

  std::vector<LayoutItem> expected = apps(1, 38);
  expected.push_back(app(appID(0)));
  for (const LayoutItem& item : apps(38, 40)) expected.push_back(item);
  EXPECT_TRUE(savedIs(expected));
}

TEST_F(DragProgramTest, AnAppDroppedOnAnotherMakesAFolder) {
  ASSERT_TRUE(session);
  ASSERT_TRUE(startWith(apps(0, 39), {"--show-overlay"}));
  ASSERT_TRUE(jumpTo(tileX(0), tileY(0)));
  ASSERT_TRUE(buttonDown());
  // Held still: the long press lifts it.
  std::this_thread::sleep_for(500ms);
  ASSERT_TRUE(glideTo(tileX(9), tileY(9)));
  std::this_thread::sleep_for(300ms);
  ASSERT_TRUE(buttonUp());

  std::vector<LayoutItem> expected = apps(1, 9);
  expected.push_back(folder(Folder::defaultName(), {appID(9), appID(0)}));
  for (const LayoutItem& item : apps(10, 40)) expected.push_back(item);
  EXPECT_TRUE(savedIs(expected));
}

TEST_F(DragProgramTest, AnAppDraggedOutOfItsFolderLandsInTheGrid) {
  ASSERT_TRUE(session);
  std::vector<LayoutItem> items{folder("Tools", {appID(0), appID(1), appID(2)})};
  for (const LayoutItem& item : apps(3, 39)) items.push_back(item);
  ASSERT_TRUE(startWith(items, {"--show-folder", "Tools"}));
  // The panel of three apps is centred; its tiles are 159 points high (the
  // icon and a whole label), its box 56 + 159 + 48 points.
  const double boxTop = (800 - (56 + 159 + 48)) / 2.0;
  const int appY = static_cast<int>(boxTop + 24 + 56 + 159 / 2.0);
  const int firstAppX = static_cast<int>(640 - cellWidth);
  ASSERT_TRUE(jumpTo(firstAppX, appY));
  ASSERT_TRUE(buttonDown());
  ASSERT_TRUE(glideTo(firstAppX, 760));  // out of the panel, below the grid
  // Below the grid the gap went to the end of page 0, so the grid shows
  // Tools, app03, app04, app05, app06 …: before app06.
  ASSERT_TRUE(glideTo(tileX(4) - 50, tileY(0)));
  std::this_thread::sleep_for(300ms);
  ASSERT_TRUE(buttonUp());

  std::vector<LayoutItem> expected{folder("Tools", {appID(1), appID(2)}), app(appID(3)), app(appID(4)),
                                   app(appID(5)), app(appID(0))};
  for (const LayoutItem& item : apps(6, 40)) expected.push_back(item);
  EXPECT_TRUE(savedIs(expected));
}

}  // namespace
}  // namespace orrery::testing
