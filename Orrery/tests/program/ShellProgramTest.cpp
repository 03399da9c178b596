// The real program as a desktop application: one instance on the session
// bus that later starts hand their command line to, and its icon in a real
// tray (trayer) whose menu opens the settings window. With
// ORRERY_SCREENSHOT_DIR set, the settings panes are also saved there as
// PNGs (that is how docs/screenshots/ is made).
#include <gtest/gtest.h>

#include <cstdlib>
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

class ShellProgramTest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto started = DesktopSession::start({.sessionBus = true});
    ASSERT_TRUE(started) << started.error();
    session = std::move(*started);
    fs::create_directories(tree() / "data/applications");
    for (const char* name : {"Alpha", "Beta"}) {
      std::ofstream(tree() / "data/applications" / (std::string(name) + ".desktop"))
          << "[Desktop Entry]\nType=Application\nName=" << name << "\nExec=true\n";
    }
  }

  const fs::path& tree() const { return temporary.path(); }
  std::string log() const {
    std::ifstream in(tree() / "orrery.log");
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }
  std::vector<std::string> programEnvironment(const std::string& language = "C") const {
    return DesktopSession::programEnvironment(tree(), {"LANGUAGE=" + language, "LC_ALL=C.UTF-8"});
  }
  // Past the first run: no settings window at start.
  void skipFirstRun() const {
    fs::create_directories(tree() / "config/Lumenfold");
    std::ofstream(tree() / "config/Lumenfold/Orrery.conf")
        << "[General]\nsettings=\"@ByteArray({\\\"firstRunDone\\\":true})\"\n";
  }
  void startOrrery(const std::string& language = "C") {
    session->launch({ORRERY_PROGRAM}, programEnvironment(language), tree() / "orrery.log");
  }
  // A later start; true when it handed its line over and ended well.
  bool startAgain(const std::vector<std::string>& options) const {
    std::vector<std::string> arguments = {ORRERY_PROGRAM};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return runCommand(arguments, session->environment(programEnvironment()), 30s).succeeded();
  }
  std::optional<XWindow> settingsWindow(SteadyClock::duration limit) const {
    return session->waitForWindow(WindowQuery::byName("^(Orrery Settings|Orrery-Einstellungen)$"), limit);
  }
  std::optional<XWindow> overlayWindow(SteadyClock::duration limit) const {
    const auto window = session->waitForWindow(WindowQuery::byName("^Orrery$"), limit);
    if (!window || !session->waitUntilFullscreen(*window, limit)) return std::nullopt;
    return window;
  }

  void startTray() const {
    session->launch({"trayer", "--edge", "top", "--align", "right", "--widthtype", "request", "--height",
                     "32", "--SetDockType", "true", "--transparent", "false"},
                    {}, session->folder() / "trayer.log");
  }
  // The icon: the program's one small window, embedded in the panel at the top.
  std::optional<XWindow> trayIcon(SteadyClock::duration limit) const {
    std::optional<XWindow> icon;
    session->waitUntil(
        [&] {
          for (const XWindow window : session->findWindows(WindowQuery::byClass("^orrery$"))) {
            const auto frame = session->geometry(window);
            // In trayer at the top right, not a window of its own.
            if (frame && frame->width <= 64 && frame->height <= 64 && frame->y < 40 &&
                frame->x > session->width() - 200) {
              icon = window;
            }
          }
          return icon.has_value();
        },
        limit);
    return icon;
  }

  TemporaryDirectory temporary{"orrery-shell-program"};
  std::unique_ptr<DesktopSession> session;
};

TEST_F(ShellProgramTest, LaterStartsReachTheProgramOnTheSessionBus) {
  ASSERT_TRUE(session);
  startOrrery();
  // The first run opens the settings.
  ASSERT_TRUE(settingsWindow(30s)) << log();
  const auto owner = session->run({"dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus",
                                   "/", "org.freedesktop.DBus.GetNameOwner", "string:ch.lumenfold.Orrery"});
  EXPECT_TRUE(owner.succeeded()) << owner.errors;

  ASSERT_TRUE(startAgain({"--toggle"})) << log();
  const auto overlay = overlayWindow(20s);
  ASSERT_TRUE(overlay) << log();
  ASSERT_TRUE(startAgain({"--toggle"}));
  EXPECT_TRUE(session->waitUntil([&] { return !session->isViewable(*overlay); }, 10s)) << log();

  // Only one program runs: no second one took the name or the data folder.
  EXPECT_EQ(session->findWindows(WindowQuery::byName("^(Orrery Settings|Orrery-Einstellungen)$")).size(), 1u);
}

TEST_F(ShellProgramTest, TheTrayIconTogglesTheOverlayAndItsMenuOpensTheSettings) {
  ASSERT_TRUE(session);
  startTray();
  ASSERT_TRUE(session->waitForWindow(WindowQuery::byClass("^[Tt]rayer$"), 20s)) << session->logs();
  skipFirstRun();
  startOrrery();

  const auto icon = trayIcon(30s);
  ASSERT_TRUE(icon) << log();
  const auto frame = session->geometry(*icon);
  ASSERT_TRUE(frame);
  if (const char* folder = std::getenv("ORRERY_SCREENSHOT_DIR")) {
    session->screenshot(fs::path(folder) / "tray.png");
  }

  ASSERT_TRUE(session->movePointer(frame->x + frame->width / 2, frame->y + frame->height / 2));
  ASSERT_TRUE(session->click(1));
  const auto overlay = overlayWindow(20s);
  ASSERT_TRUE(overlay) << log();
  ASSERT_TRUE(session->key({"Escape"}));
  ASSERT_TRUE(session->waitUntil([&] { return !session->isViewable(*overlay); }, 10s)) << log();

  // The menu: Show Orrery, Settings …, Quit Orrery.
  ASSERT_TRUE(session->movePointer(frame->x + frame->width / 2, frame->y + frame->height / 2));
  ASSERT_TRUE(session->click(3));
  // The menu is the program's one other window on the screen now: a popup
  // beside the icon.
  ASSERT_TRUE(session->waitUntil(
      [&] {
        for (const XWindow window : session->findWindows(WindowQuery::byClass("^orrery$"))) {
          const auto menu = session->geometry(window);
          if (window != *icon && menu && menu->width < session->width() && menu->height > frame->height)
            return true;
        }
        return false;
      },
      10s))
      << log();
  ASSERT_TRUE(session->key({"Down"}));
  ASSERT_TRUE(session->key({"Down"}));
  ASSERT_TRUE(session->key({"Return"}));
  EXPECT_TRUE(settingsWindow(20s)) << log();
}

TEST_F(ShellProgramTest, ATrayThatAppearsLaterGetsTheIcon) {
  ASSERT_TRUE(session);
  skipFirstRun();
  startOrrery();
  ASSERT_TRUE(session->waitUntil([&] { return log().find("Orrery gestartet") != std::string::npos; }, 30s))
      << log();
  startTray();
  EXPECT_TRUE(trayIcon(30s)) << log() << session->logs();
}

// Each pane of the settings window, in English and German, reached with
// the arrow keys from the list of panes; saved where ORRERY_SCREENSHOT_DIR
// says.
TEST_F(ShellProgramTest, EveryPaneOfTheSettingsWindowIsReachedWithTheKeyboard) {
  ASSERT_TRUE(session);
  const char* folder = std::getenv("ORRERY_SCREENSHOT_DIR");
  const fs::path shots = folder ? fs::path(folder) : tree() / "shots";
  fs::create_directories(shots);
  const auto bytes = [](const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  };
  const std::string panes[] = {"general", "trigger", "appearance", "hidden-apps", "sync", "about"};
  // One hidden app, for the Hidden Apps pane.
  fs::create_directories(tree() / "data/Orrery");
  std::ofstream(tree() / "data/Orrery/layout.json")
      << R"({"hidden": ["Beta.desktop"], "items": [{"app": {"_0": "Alpha.desktop"}}], "version": 1})";
  for (const std::string language : {"en", "de"}) {
    fs::remove_all(tree() / "config");
    auto& program = session->launch({ORRERY_PROGRAM}, programEnvironment(language), tree() / "orrery.log");
    const auto window = settingsWindow(30s);
    ASSERT_TRUE(window) << log();
    ASSERT_TRUE(session->waitForActiveWindow(*window, 10s));
    std::string previous;
    for (const std::string& pane : panes) {
      if (!previous.empty()) {
        ASSERT_TRUE(session->key({"Down"}));
      }
      const fs::path png = shots / ("settings-" + pane + "-" + language + ".png");
      // The pane is drawn once the picture changed from the one before.
      ASSERT_TRUE(session->waitUntil(
          [&] { return session->screenshot(png, *window) && bytes(png) != previous; }, 10s))
          << pane << "\n"
          << log();
      previous = bytes(png);
    }
    program.stop();
  }
}

}  // namespace
}  // namespace orrery::testing
