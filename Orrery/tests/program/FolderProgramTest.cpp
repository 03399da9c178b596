// Folders, hiding and sorting in the real program on a desktop of its own
// (Xvfb and openbox), driven with the pointer and the keyboard, judged by
// what lands in layout.json and what a search still launches.
//
// The arrangement file is written before the start and names every app
// but "delta", so the first scan appends delta and saves: once delta is in
// the file, the program knows its apps. Positions of the pointer follow
// the overlay's grid on the session's 1280 × 800 screen with the default
// 7 × 5 grid.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Orrery/tests/program/DesktopSession.h"
#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/testing/LayoutBuilders.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class FolderProgramTest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto started = DesktopSession::start();
    ASSERT_TRUE(started) << started.error();
    session = std::move(*started);

    fs::create_directories(tree() / "data/applications");
    fs::create_directories(tree() / "data/Orrery");
    fs::create_directories(tree() / "home");
    for (const char* name : {"Alpha", "Beta", "Gamma", "Delta"}) {
      std::string id = name;
      id[0] = static_cast<char>(id[0] - 'A' + 'a');
      std::ofstream(tree() / "data/applications" / (id + ".desktop"))
          << "[Desktop Entry]\nType=Application\nName=" << name << "\nExec=true\n";
    }
    const fs::path script = tree() / "bin/mark";
    fs::create_directories(script.parent_path());
    std::ofstream(script) << "#!/bin/sh\nprintf '%s' \"$1\" > \"$2\"\n";
    fs::permissions(script, fs::perms::owner_all);
    for (const char* which : {"one", "two"}) {
      std::ofstream(tree() / "data/applications" / (std::string("marker-") + which + ".desktop"))
          << "[Desktop Entry]\nType=Application\nName=Marker " << (which[0] == 'o' ? "One" : "Two")
          << "\nExec=" << script.string() << " launched " << marker(which).string() << "\n";
    }
    // Not in name order, so a sort changes it.
    const Layout layout = layoutOf({app("gamma.desktop"), folder("Tools", {"alpha.desktop", "beta.desktop"}),
                                    app("marker-one.desktop"), app("marker-two.desktop")});
    std::ofstream(layoutFile()) << layout.encoded();
  }

  const fs::path& tree() const { return temporary.path(); }
  fs::path marker(const std::string& which) const { return tree() / ("marker-" + which); }
  fs::path layoutFile() const { return tree() / "data/Orrery/layout.json"; }
  fs::path logFile() const { return tree() / "orrery.log"; }
  static std::string contents(const fs::path& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }
  std::string log() const { return contents(logFile()); }
  std::string saved() const { return contents(layoutFile()); }

  void start(const std::vector<std::string>& options) {
    std::vector<std::string> arguments{ORRERY_PROGRAM};
    arguments.insert(arguments.end(), options.begin(), options.end());
    session->launch(arguments, DesktopSession::programEnvironment(tree()), logFile());
  }

  // Starts orrery and waits until its overlay has the keyboard and its first
  // scan is saved.
  ::testing::AssertionResult startShown(const std::vector<std::string>& options) {
    start(options);
    const auto window = session->waitForWindow(WindowQuery::byName("^Orrery$"), 30s);
    if (!window) return ::testing::AssertionFailure() << "no window\n" << session->logs() << log();
    if (!session->waitUntilFullscreen(*window, 20s) || !session->waitForActiveWindow(*window, 10s))
      return ::testing::AssertionFailure() << "not full screen with the keyboard\n" << log();
    if (!session->waitUntil([&] { return saved().find("delta.desktop") != std::string::npos; }, 20s))
      return ::testing::AssertionFailure() << "the first scan was not saved\n" << log();
    return ::testing::AssertionSuccess();
  }

  bool clickAt(int x, int y, int button = 1) { return session->movePointer(x, y) && session->click(button); }

  // The grid: 7 × 5 cells between the search field and the page dots.
  static constexpr double sideMargin = 1280 * 0.08;
  static constexpr double cellWidth = (1280 - 2 * sideMargin) / 7;
  static constexpr double cellHeight = (800 - 120 - 72) / 5.0;
  static int tileX(int column) { return static_cast<int>(sideMargin + (column + 0.5) * cellWidth); }
  static int tileY(int row) { return static_cast<int>(120 + (row + 0.5) * cellHeight); }

  TemporaryDirectory temporary{"orrery-folders"};
  std::unique_ptr<DesktopSession> session;
};

TEST_F(FolderProgramTest, ShowFolderOpensTheFolderAndTypingInItsTitleRenamesIt) {
  ASSERT_TRUE(session);
  ASSERT_TRUE(startShown({"--show-folder", "Tools"}));
  // The panel of two apps is centred: its title runs 24 to 64 points below
  // the top of a box 56 + one row + 48 points high.
  const int boxTop = static_cast<int>((800 - (56 + cellHeight + 48)) / 2);
  ASSERT_TRUE(clickAt(640, boxTop + 44));
  ASSERT_TRUE(session->key({"ctrl+a"}));
  ASSERT_TRUE(session->type("Werkzeug"));
  ASSERT_TRUE(session->key({"Return"}));
  EXPECT_TRUE(
      session->waitUntil([&] { return saved().find("\"name\": \"Werkzeug\"") != std::string::npos; }, 10s))
      << saved() << log();
  EXPECT_EQ(saved().find("\"name\": \"Tools\""), std::string::npos);
}

TEST_F(FolderProgramTest, ShowFolderWithAnUnknownNameSaysSo) {
  ASSERT_TRUE(session);
  start({"--show-folder", "Nowhere"});
  EXPECT_TRUE(session->waitUntil(
      [&] { return log().find("--show-folder: Ordner Nowhere nicht gefunden") != std::string::npos; }, 30s))
      << log();
}

TEST_F(FolderProgramTest, HideFromTheContextMenuTakesTheAppOutOfGridAndSearch) {
  ASSERT_TRUE(session);
  ASSERT_TRUE(startShown({"--show-overlay"}));
  // The third tile is Marker One: its menu is Open, Hide, Move to Trash.
  ASSERT_TRUE(clickAt(tileX(2), tileY(0), 3));
  ASSERT_TRUE(session->key({"Down"}));
  ASSERT_TRUE(session->key({"Return"}));
  ASSERT_TRUE(session->waitUntil(
      [&] {
        const auto layout = Layout::decode(saved());
        return layout && layout->hidden.contains("marker-one.desktop");
      },
      10s))
      << saved() << log();
  const auto layout = Layout::decode(saved());
  ASSERT_TRUE(layout);
  EXPECT_EQ(layout->orderedAppIDs({"marker-one.desktop", "marker-two.desktop"}),
            std::vector<std::string>{"marker-two.desktop"});

  // Marker One would be the best match for "marker"; hidden, the search
  // offers Marker Two instead.
  ASSERT_TRUE(session->type("marker"));
  ASSERT_TRUE(session->key({"Return"}));
  ASSERT_TRUE(session->waitUntil([&] { return fs::exists(marker("two")); }, 20s)) << log();
  EXPECT_FALSE(fs::exists(marker("one")));
}

TEST_F(FolderProgramTest, SortByNameThenTheUndoBarRestoresTheFileByteForByte) {
  ASSERT_TRUE(session);
  ASSERT_TRUE(startShown({"--show-overlay"}));
  const std::string before = saved();
  // A right click on the empty grid, its one entry, then "Sort" (the
  // default button).
  ASSERT_TRUE(clickAt(tileX(3), tileY(4), 3));
  ASSERT_TRUE(session->key({"Return"}));
  ASSERT_TRUE(session->key({"Return"}));
  ASSERT_TRUE(session->waitUntil([&] { return saved() != before && !saved().empty(); }, 10s)) << log();
  const auto sorted = Layout::decode(saved());
  ASSERT_TRUE(sorted);
  EXPECT_EQ(describe(*sorted),
            "[Tools: alpha.desktop beta.desktop] delta.desktop gamma.desktop marker-one.desktop "
            "marker-two.desktop");

  // The undo bar sits at the top right; its button is its right end.
  ASSERT_TRUE(clickAt(1280 - 24 - 16 - 20, 48 - 2 + 20));
  EXPECT_TRUE(session->waitUntil([&] { return saved() == before; }, 10s)) << saved() << log();
}

}  // namespace
}  // namespace orrery::testing
