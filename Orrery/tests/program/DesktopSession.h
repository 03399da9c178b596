// DesktopSession: a desktop of its own for one end-to-end test: an X server
// (Xvfb -noreset on a display number it picks itself), the openbox window
// manager and, when asked, a private D-Bus session bus; and the hands and
// eyes of a user on it through xdotool, xprop, xwininfo and ImageMagick's
// import.
//
// Every session has its own server, window manager, bus and temporary
// folder, so tests run in parallel. Readiness is waited for by condition:
// the server writes its display number when it accepts clients, the bus
// its address, and the window manager is ready once it has announced itself
// on the root window. stop(), also run by the destructor, ends all of them
// and every process launched in the session, with their process groups;
// if the test process dies they are killed with it (parent-death signal).
//
// Waits poll with a deadline; setPump() lets a test that owns windows
// itself (a Qt test on this display) process its events between polls.
//
// Thread rules: one test thread; not copyable.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::testing {

using SteadyClock = std::chrono::steady_clock;

// Polls `condition` until it holds or `limit` passes, running `between`
// (when given) before each check; true when it held.
bool waitUntil(const std::function<bool()>& condition, SteadyClock::duration limit,
               const std::function<void()>& between = {});

// What a finished command printed and how it ended.
struct CommandResult {
  int status = -1;  // exit status, 128 + signal, or -1 when it could not start
  std::string output;
  std::string errors;
  bool timedOut = false;
  bool succeeded() const { return status == 0 && !timedOut; }
};

// Runs `arguments` (the program looked up in PATH) with exactly
// `environment`, waits at most `limit`, then kills it.
CommandResult runCommand(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment,
                         SteadyClock::duration limit = std::chrono::seconds(30));

// A child process in a process group of its own, ended with that group
// (SIGTERM, then SIGKILL) when the handle is stopped or destroyed.
class SessionProcess {
 public:
  SessionProcess() = default;
  explicit SessionProcess(pid_t pid) : pid_(pid) {}
  ~SessionProcess() { stop(); }
  SessionProcess(SessionProcess&& other) noexcept;
  SessionProcess& operator=(SessionProcess&& other) noexcept;
  SessionProcess(const SessionProcess&) = delete;
  SessionProcess& operator=(const SessionProcess&) = delete;

  pid_t pid() const { return pid_; }
  // False once the process has ended (it is reaped then).
  bool running();
  // Waits for the process to end by itself; its status, or nothing.
  std::optional<int> waitForExit(SteadyClock::duration limit);
  // Ends the process group, politely first; the status, or nothing when
  // there was no process.
  std::optional<int> stop(SteadyClock::duration grace = std::chrono::seconds(5));

 private:
  pid_t pid_ = -1;
  std::optional<int> status_;
};

// A window as the X server names it.
using XWindow = std::uint64_t;

struct WindowGeometry {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const WindowGeometry&) const = default;
};

// Which windows a search finds: by title, or by either half of WM_CLASS
// (the instance name, as `-name` or Qt's resource name sets it, and the
// class), as extended regular expressions the way xdotool takes them;
// viewable ones only unless said. Every pattern given must match.
struct WindowQuery {
  static WindowQuery byName(std::string pattern) { return {.name = std::move(pattern)}; }
  static WindowQuery byInstance(std::string pattern) { return {.instance = std::move(pattern)}; }
  static WindowQuery byClass(std::string pattern) { return {.className = std::move(pattern)}; }
  std::string name{};
  std::string instance{};
  std::string className{};
  bool viewableOnly = true;
};

class DesktopSession {
 public:
  struct Options {
    // One monitor's size; with several they stand side by side, left to
    // right, as RandR monitors of one wide screen (the way a desktop with
    // two displays looks to its clients).
    int width = 1280;
    int height = 800;
    int monitors = 1;
    bool windowManager = true;
    bool sessionBus = false;
    SteadyClock::duration startLimit = std::chrono::seconds(30);
  };

  // Starts the server, then the bus and the window manager, each waited
  // for; on failure says what went wrong, with the servers' logs, and
  // leaves nothing running.
  static std::expected<std::unique_ptr<DesktopSession>, std::string> start(Options options);
  static std::expected<std::unique_ptr<DesktopSession>, std::string> start() { return start(Options{}); }

  ~DesktopSession();
  DesktopSession(const DesktopSession&) = delete;
  DesktopSession& operator=(const DesktopSession&) = delete;

  // Ends every launched program, the window manager, the server and the
  // bus, in that order. Idempotent.
  void stop();

  const std::string& display() const { return display_; }        // ":N"
  const std::string& busAddress() const { return busAddress_; }  // empty without a bus
  int width() const { return options_.width; }
  int height() const { return options_.height; }
  // The server's, the window manager's and the bus's process ids.
  std::vector<pid_t> serverProcesses() const;
  // Where the session keeps its logs and configuration.
  const std::filesystem::path& folder() const { return folder_.path(); }
  // XDG_RUNTIME_DIR of the programs in the session.
  std::filesystem::path runtimeFolder() const {
    return folder_.path().empty() ? folder_.path() : folder_.path() / "runtime";
  }
  // The servers' logs, for failure messages.
  std::string logs() const;

  // This process's environment for a program in the session: DISPLAY and
  // the bus set, the caller's other display and bus variables removed, then
  // `overrides` ("NAME=value") applied.
  std::vector<std::string> environment(const std::vector<std::string>& overrides = {}) const;

  // Runs a command in the session's environment.
  CommandResult run(const std::vector<std::string>& arguments,
                    SteadyClock::duration limit = std::chrono::seconds(30)) const;
  // Starts a program in the session, owned by it until stop() unless the
  // caller stops the handle first. Output goes to `outputFile` (appended)
  // or nowhere.
  SessionProcess& launch(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& overrides = {},
                         const std::filesystem::path& outputFile = {});
  // The overrides for an Orrery of its own in the test folder `tree`: its
  // home, data and settings there (tree/home, tree/data, tree/config), the
  // system's applications in tree/system, on this session's X server;
  // `more` is added, and may override these.
  static std::vector<std::string> programEnvironment(const std::filesystem::path& tree,
                                                     const std::vector<std::string>& more = {});

  // Called between the polls of every wait below, e.g. to process a Qt
  // test's events.
  void setPump(std::function<void()> pump) { pump_ = std::move(pump); }
  bool waitUntil(const std::function<bool()>& condition, SteadyClock::duration limit) const;

  // Windows.
  std::vector<XWindow> findWindows(const WindowQuery& query) const;
  std::optional<XWindow> waitForWindow(const WindowQuery& query, SteadyClock::duration limit) const;
  bool isViewable(XWindow window) const;
  bool waitUntilMapped(XWindow window, SteadyClock::duration limit) const;
  // Full screen: the state is set and the window covers one whole monitor.
  bool isFullscreen(XWindow window) const;
  bool waitUntilFullscreen(XWindow window, SteadyClock::duration limit) const;
  std::optional<WindowGeometry> geometry(XWindow window) const;
  // A property as xprop prints its value ("A, B" for atom lists,
  // "window id # 0x..." for windows, "" when set but empty); nothing when
  // it is not set. Window 0 is the root window.
  std::optional<std::string> property(XWindow window, const std::string& name) const;
  std::set<std::string> netWmState(XWindow window) const;
  std::optional<XWindow> activeWindow() const;
  bool waitForActiveWindow(XWindow window, SteadyClock::duration limit) const;

  // Input, to whichever window has the keyboard or lies under the pointer.
  bool type(const std::string& text) const;
  bool key(const std::vector<std::string>& keys) const;  // xdotool key names: "ctrl+a", "Escape"
  bool movePointer(int x, int y) const;
  bool click(int button = 1) const;

  // A PNG of the whole screen, or of one window; false when none was written.
  bool screenshot(const std::filesystem::path& png, std::optional<XWindow> window = std::nullopt) const;

 private:
  explicit DesktopSession(Options options);
  std::expected<void, std::string> startServer();
  std::expected<void, std::string> splitIntoMonitors();
  std::expected<void, std::string> startBus();
  std::expected<void, std::string> startWindowManager();

  Options options_;
  TemporaryDirectory folder_{"orrery-desktop"};
  std::string display_;
  std::string busAddress_;
  SessionProcess server_;
  SessionProcess bus_;
  SessionProcess windowManager_;
  std::vector<std::unique_ptr<SessionProcess>> launched_;
  std::function<void()> pump_;
};

}  // namespace orrery::testing
