// Moving apps to the Trash in the real program on a desktop of its own
// (Xvfb and openbox): ticked from the context menu and with clicks, moved
// with Delete and the sheet's Return, judged by layout.json, the Trash's
// folders and the log.
//
// The user's entries are in XDG_DATA_HOME; the system's own folder
// (/usr/share) is the other data folder, so one of its entries stands in
// the grid as an app that may not be moved. Positions follow the overlay's
// grid on the session's 1280 × 800 screen with the default 7 × 5 grid.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
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

std::string contents(const fs::path& file) {
  std::ifstream in(file);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// An entry of the system's applications folder that the grid shows.
std::optional<std::string> shownSystemEntry() {
  std::error_code error;
  for (const fs::directory_entry& file : fs::directory_iterator("/usr/share/applications", error)) {
    if (file.path().extension() != ".desktop") continue;
    const std::string text = contents(file.path());
    if (text.find("NoDisplay=true") == std::string::npos && text.find("Hidden=true") == std::string::npos &&
        text.find("OnlyShowIn=") == std::string::npos && text.find("TryExec=") == std::string::npos)
      return file.path().filename().string();
  }
  return std::nullopt;
}

// The user's applications folder made unchangeable: for root, who may
// write anywhere, the immutable flag; for others, no write permission.
class ReadOnlyFolder {
 public:
  explicit ReadOnlyFolder(fs::path folder) : folder_(std::move(folder)) { set(true); }
  ~ReadOnlyFolder() { set(false); }
  ReadOnlyFolder(const ReadOnlyFolder&) = delete;
  ReadOnlyFolder& operator=(const ReadOnlyFolder&) = delete;

 private:
  void set(bool readOnly) {
    if (::geteuid() == 0) {
      const std::string command =
          std::string("chattr ") + (readOnly ? "+i '" : "-i '") + folder_.string() + "'";
      EXPECT_EQ(std::system(command.c_str()), 0) << command;
    } else {
      fs::permissions(folder_,
                      readOnly ? fs::perms::owner_read | fs::perms::owner_exec : fs::perms::owner_all);
    }
  }
  fs::path folder_;
};

class TrashProgramTest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto started = DesktopSession::start();
    ASSERT_TRUE(started) << started.error();
    session = std::move(*started);
    const std::optional<std::string> system = shownSystemEntry();
    ASSERT_TRUE(system) << "no shown entry in /usr/share/applications";
    systemEntry = *system;

    fs::create_directories(applications());
    fs::create_directories(tree() / "data/Orrery");
    fs::create_directories(tree() / "home");
    for (const auto& [id, name] : std::vector<std::pair<std::string, std::string>>{
             {"alpha one", "Alpha"}, {"beta", "Beta"}, {"gamma", "Gamma"}, {"delta", "Delta"}})
      std::ofstream(applications() / (id + ".desktop"))
          << "[Desktop Entry]\nType=Application\nName=" << name << "\nExec=true\n";
    const Layout layout =
        layoutOf({app("alpha one.desktop"), app("beta.desktop"), app("gamma.desktop"), app(systemEntry)});
    std::ofstream(layoutFile()) << layout.encoded();
  }

  void TearDown() override {
    if (session) session->stop();
  }

  const fs::path& tree() const { return temporary.path(); }
  fs::path applications() const { return tree() / "data/applications"; }
  fs::path layoutFile() const { return tree() / "data/Orrery/layout.json"; }
  fs::path trashFolder() const { return tree() / "data/Trash"; }
  fs::path logFile() const { return tree() / "orrery.log"; }
  std::string log() const { return contents(logFile()); }
  std::string saved() const { return contents(layoutFile()); }
  bool inSaved(const std::string& id) const { return saved().find("\"" + id + "\"") != std::string::npos; }

  ::testing::AssertionResult startShown() {
    session->launch({ORRERY_PROGRAM, "--show-overlay"},
                    {"HOME=" + (tree() / "home").string(), "XDG_DATA_HOME=" + (tree() / "data").string(),
                     "XDG_DATA_DIRS=/usr/share", "XDG_CONFIG_HOME=" + (tree() / "config").string(),
                     "QT_QPA_PLATFORM=xcb"},
                    logFile());
    const auto window = session->waitForWindow(WindowQuery::byName("^Orrery$"), 30s);
    if (!window) return ::testing::AssertionFailure() << "no window\n" << session->logs() << log();
    if (!session->waitUntilFullscreen(*window, 20s) || !session->waitForActiveWindow(*window, 10s))
      return ::testing::AssertionFailure() << "not full screen with the keyboard\n" << log();
    if (!session->waitUntil([&] { return inSaved("delta.desktop"); }, 20s))
      return ::testing::AssertionFailure() << "the first scan was not saved\n" << log();
    return ::testing::AssertionSuccess();
  }

  bool clickAt(int x, int y, int button = 1) { return session->movePointer(x, y) && session->click(button); }
  // Starts the selection mode from a tile's menu: Open, Hide, Move to Trash.
  bool selectFromMenu(int column) {
    return clickAt(tileX(column), tileY(0), 3) && session->key({"Down"}) && session->key({"Down"}) &&
           session->key({"Return"});
  }

  static constexpr double sideMargin = 1280 * 0.08;
  static constexpr double cellWidth = (1280 - 2 * sideMargin) / 7;
  static constexpr double cellHeight = (800 - 120 - 72) / 5.0;
  static int tileX(int column) { return static_cast<int>(sideMargin + (column + 0.5) * cellWidth); }
  static int tileY(int row) { return static_cast<int>(120 + (row + 0.5) * cellHeight); }

  TemporaryDirectory temporary{"orrery-trash"};
  std::unique_ptr<DesktopSession> session;
  std::string systemEntry;
};

TEST_F(TrashProgramTest, TwoTickedEntriesGoToTheTrashAndLeaveTheGridAtOnce) {
  ASSERT_TRUE(session);
  ASSERT_TRUE(startShown());
  ASSERT_TRUE(selectFromMenu(0));            // Alpha, ticked from its menu
  ASSERT_TRUE(clickAt(tileX(1), tileY(0)));  // Beta
  ASSERT_TRUE(clickAt(tileX(3), tileY(0)));  // the system's entry: no tick
  const char* shots = std::getenv("ORRERY_TRASH_SCREENSHOTS");
  if (shots != nullptr) session->screenshot(fs::path(shots) / "trash-selection.png");
  ASSERT_TRUE(session->key({"Delete"}));
  if (shots != nullptr) {
    session->waitUntil([] { return false; }, 1s);  // the sheet drawn
    session->screenshot(fs::path(shots) / "trash.png");
  }
  ASSERT_TRUE(session->key({"Return"}));

  ASSERT_TRUE(
      session->waitUntil([&] { return !inSaved("alpha one.desktop") && !inSaved("beta.desktop"); }, 10s))
      << saved() << log();
  EXPECT_TRUE(log().find("Papierkorb: 2 App(s) bestätigt") != std::string::npos) << log();
  EXPECT_TRUE(inSaved("gamma.desktop"));
  EXPECT_TRUE(inSaved(systemEntry)) << "the system's entry was never offered";
  EXPECT_TRUE(fs::exists("/usr/share/applications/" + systemEntry));

  for (const std::string name : {"alpha one.desktop", "beta.desktop"}) {
    EXPECT_FALSE(fs::exists(applications() / name));
    EXPECT_TRUE(fs::exists(trashFolder() / "files" / name)) << name;
    const std::string info = contents(trashFolder() / "info" / (name + ".trashinfo"));
    EXPECT_TRUE(info.starts_with("[Trash Info]\n")) << info;
    EXPECT_NE(info.find("DeletionDate="), std::string::npos) << info;
    std::string encoded = (applications() / name).string();
    if (const auto space = encoded.find(' '); space != std::string::npos) encoded.replace(space, 1, "%20");
    EXPECT_NE(info.find("Path=" + encoded + "\n"), std::string::npos) << info;
  }
}

TEST_F(TrashProgramTest, AMoveOutOfAReadOnlyFolderShowsTheFailure) {
  ASSERT_TRUE(session);
  // On a light background, where the labels turn dark.
  fs::create_directories(tree() / "config/Lumenfold");
  std::ofstream(tree() / "config/Lumenfold/Orrery.conf") << R"conf([General]
settings="@ByteArray({\"background\":\"solid\",\"solidColorHex\":\"#F0F0F0\"})"
)conf";
  ASSERT_TRUE(startShown());
  ASSERT_TRUE(selectFromMenu(2));  // Gamma
  const char* shots = std::getenv("ORRERY_TRASH_SCREENSHOTS");
  if (shots != nullptr) session->screenshot(fs::path(shots) / "trash-selection-light.png");
  {
    // Ticked while the folder could be changed; it can't when confirmed.
    ReadOnlyFolder readOnly(applications());
    ASSERT_TRUE(session->key({"Delete"}));
    ASSERT_TRUE(session->key({"Return"}));
    ASSERT_TRUE(session->waitUntil(
        [&] {
          return log().find("Papierkorb: Gamma: You may not change the folder it is in.") !=
                 std::string::npos;
        },
        10s))
        << log();
    if (shots != nullptr) {
      session->waitUntil([] { return false; }, 1s);
      session->screenshot(fs::path(shots) / "trash-failure.png");
    }
  }
  EXPECT_TRUE(fs::exists(applications() / "gamma.desktop"));
  EXPECT_TRUE(inSaved("gamma.desktop"));
  EXPECT_FALSE(fs::exists(trashFolder() / "files" / "gamma.desktop"));
}

}  // namespace
}  // namespace orrery::testing
