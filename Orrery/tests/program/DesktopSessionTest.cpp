// The desktop session the end-to-end tests stand on: that it comes up with
// a window manager that manages real clients, that the tools see and drive
// them, that sessions do not see each other, and that stopping leaves no
// process and no display behind.
#include <signal.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "Orrery/tests/program/DesktopSession.h"

namespace orrery::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

// For a negative id: no process is left in that process group.
bool gone(pid_t pid) { return ::kill(pid, 0) == -1 && errno == ESRCH; }

std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Width and height from a PNG's header chunk; nothing when it is no PNG.
std::optional<std::pair<int, int>> pngSize(const fs::path& path) {
  const std::string bytes = readFile(path);
  if (bytes.size() < 24 || bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0 ||
      bytes.compare(12, 4, "IHDR") != 0) {
    return std::nullopt;
  }
  auto number = [&](std::size_t at) {
    int value = 0;
    for (std::size_t i = at; i < at + 4; ++i) value = value * 256 + static_cast<unsigned char>(bytes[i]);
    return value;
  };
  return std::pair{number(16), number(20)};
}

std::unique_ptr<DesktopSession> started(DesktopSession::Options options = {}) {
  auto session = DesktopSession::start(options);
  if (!session) {
    ADD_FAILURE() << session.error();
    return nullptr;
  }
  return std::move(*session);
}

TEST(DesktopSessionTest, RunsAManagedDesktopAndLeavesNothingBehind) {
  auto session = started({.sessionBus = true});
  ASSERT_TRUE(session);
  EXPECT_TRUE(session->display().starts_with(":"));
  EXPECT_TRUE(session->busAddress().starts_with("unix:")) << session->busAddress();
  EXPECT_EQ(session
                ->run({"dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus",
                       "/org/freedesktop/DBus", "org.freedesktop.DBus.ListNames"})
                .status,
            0);

  const pid_t client = session->launch({"xmessage", "-name", "probe", "hello from the test"}).pid();
  const auto window = session->waitForWindow(WindowQuery::byInstance("^probe$"), 20s);
  ASSERT_TRUE(window) << session->logs();
  ASSERT_TRUE(session->waitUntilMapped(*window, 10s));
  // The window manager manages it: it gets the keyboard and a frame.
  EXPECT_TRUE(session->waitForActiveWindow(*window, 10s)) << session->logs();
  EXPECT_TRUE(session->property(*window, "_NET_FRAME_EXTENTS").has_value());
  const auto geometry = session->geometry(*window);
  ASSERT_TRUE(geometry);
  EXPECT_GT(geometry->width, 0);
  EXPECT_LE(geometry->x + geometry->width, session->width());

  const fs::path screen = session->folder() / "screen.png";
  ASSERT_TRUE(session->screenshot(screen));
  EXPECT_EQ(pngSize(screen), (std::pair{session->width(), session->height()}));
  const fs::path shot = session->folder() / "window.png";
  ASSERT_TRUE(session->screenshot(shot, *window));
  EXPECT_EQ(pngSize(shot), (std::pair{geometry->width, geometry->height}));

  // Every process started leads a group of its own; none may outlive
  // the session, nor anything they started (Xvfb runs xkbcomp, for one).
  const auto servers = session->serverProcesses();
  EXPECT_EQ(servers.size(), 3u);
  session->stop();
  for (const pid_t pid : servers) EXPECT_TRUE(gone(-pid)) << pid;
  EXPECT_TRUE(gone(-client));
}

TEST(DesktopSessionTest, TypesAndMovesThePointerIntoTheFocusedWindow) {
  auto session = started();
  ASSERT_TRUE(session);
  // xev prints every event its window (titled by -name) receives.
  const fs::path events = session->folder() / "events.txt";
  session->launch({"xev", "-name", "probe"}, {}, events);
  const auto window = session->waitForWindow(WindowQuery::byName("^probe$"), 20s);
  ASSERT_TRUE(window) << session->logs() << readFile(events);
  ASSERT_TRUE(session->waitForActiveWindow(*window, 10s));
  const auto geometry = session->geometry(*window);
  ASSERT_TRUE(geometry);

  EXPECT_TRUE(session->type("ok"));
  EXPECT_TRUE(session->key({"shift+Tab", "Return"}));
  EXPECT_TRUE(session->movePointer(geometry->x + geometry->width / 2, geometry->y + geometry->height / 2));
  EXPECT_TRUE(session->click());
  auto seen = [&](const std::string& text) { return readFile(events).find(text) != std::string::npos; };
  EXPECT_TRUE(session->waitUntil(
      [&] {
        return seen("keysym 0x6f, o") && seen("keysym 0x6b, k") && seen("ISO_Left_Tab") && seen("Return") &&
               seen("MotionNotify") && seen("ButtonRelease");
      },
      10s))
      << readFile(events);
}

TEST(DesktopSessionTest, SessionsSideBySideDoNotSeeEachOther) {
  auto first = started({.sessionBus = true});
  auto second = started({.width = 800, .height = 600, .sessionBus = true});
  ASSERT_TRUE(first && second);
  EXPECT_NE(first->display(), second->display());
  EXPECT_NE(first->busAddress(), second->busAddress());

  first->launch({"xmessage", "-name", "only-in-first", "first"});
  ASSERT_TRUE(first->waitForWindow(WindowQuery::byInstance("^only-in-first$"), 20s));
  EXPECT_TRUE(second->findWindows(WindowQuery::byInstance("^only-in-first$")).empty());

  const fs::path screen = second->folder() / "screen.png";
  ASSERT_TRUE(second->screenshot(screen));
  EXPECT_EQ(pngSize(screen), (std::pair{800, 600}));
}

}  // namespace
}  // namespace orrery::testing
