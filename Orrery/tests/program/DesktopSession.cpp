#include "Orrery/tests/program/DesktopSession.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <sstream>
#include <string_view>
#include <thread>
#include <utility>

extern char** environ;

namespace orrery::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream content;
  content << in.rdbuf();
  return content.str();
}

std::string_view nameOf(std::string_view variable) { return variable.substr(0, variable.find('=')); }

// The program's path as execve wants it, looked up in the PATH of
// `environment` (before fork: the child may only make async-signal-safe
// calls in a threaded parent).
std::string resolve(const std::string& program, const std::vector<std::string>& environment) {
  if (program.find('/') != std::string::npos) return program;
  std::string_view path = "/usr/local/bin:/usr/bin:/bin";
  for (const std::string& variable : environment) {
    if (nameOf(variable) == "PATH") path = std::string_view(variable).substr(5);
  }
  while (!path.empty()) {
    const auto end = path.find(':');
    const fs::path candidate = fs::path(path.substr(0, end)) / program;
    if (::access(candidate.c_str(), X_OK) == 0) return candidate.string();
    if (end == std::string_view::npos) break;
    path.remove_prefix(end + 1);
  }
  return program;
}

struct Descriptor {
  explicit Descriptor(int value = -1) : fd(value) {}
  ~Descriptor() { reset(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  void reset() {
    if (fd >= 0) ::close(fd);
    fd = -1;
  }
  int fd;
};

struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) == 0) {
      read.fd = ends[0];
      write.fd = ends[1];
    }
  }
  Descriptor read;
  Descriptor write;
};

// Starts `arguments` in a new process group with exactly `environment`;
// standard input is /dev/null, `output` and `errors` (or /dev/null) take
// its output, and `passed` (when given) becomes its descriptor 3. The child
// is killed when this process dies. -1 when it could not be started.
pid_t spawn(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
            int output, int errors, int passed = -1) {
  if (arguments.empty()) return -1;
  const std::string program = resolve(arguments.front(), environment);
  std::vector<std::string> argumentCopies = arguments;
  std::vector<std::string> environmentCopies = environment;
  std::vector<char*> argv;
  for (std::string& argument : argumentCopies) argv.push_back(argument.data());
  argv.push_back(nullptr);
  std::vector<char*> envp;
  for (std::string& variable : environmentCopies) envp.push_back(variable.data());
  envp.push_back(nullptr);
  const pid_t parent = ::getpid();

  const pid_t pid = ::fork();
  if (pid == 0) {
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(127);
    const int null = ::open("/dev/null", O_RDWR);
    ::dup2(null, 0);
    ::dup2(output >= 0 ? output : null, 1);
    ::dup2(errors >= 0 ? errors : null, 2);
    int firstToClose = 3;
    if (passed >= 0) {
      if (passed == 3) {
        ::fcntl(3, F_SETFD, 0);
      } else {
        ::dup2(passed, 3);
      }
      firstToClose = 4;
    }
    ::close_range(static_cast<unsigned>(firstToClose), ~0U, 0);
    ::execve(program.c_str(), argv.data(), envp.data());
    ::_exit(127);
  }
  if (pid > 0) ::setpgid(pid, pid);  // no matter which of the two runs first
  return pid;
}

int decodeStatus(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status); }

// Reads from `fd` until a newline, end of file or the deadline; the line
// without its newline, or nothing.
std::optional<std::string> readLine(int fd, SteadyClock::time_point deadline) {
  std::string line;
  while (true) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - SteadyClock::now());
    if (left.count() <= 0) return std::nullopt;
    pollfd entry{.fd = fd, .events = POLLIN, .revents = 0};
    const int ready = ::poll(&entry, 1, static_cast<int>(left.count()));
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return std::nullopt;
    char c = 0;
    const ssize_t got = ::read(fd, &c, 1);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return std::nullopt;
    if (c == '\n') return line;
    line.push_back(c);
  }
}

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> result;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) result.push_back(line);
  return result;
}

std::string trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  const auto last = text.find_last_not_of(" \t\r");
  return std::string(text.substr(first, last - first + 1));
}

std::optional<std::uint64_t> parseNumber(const std::string& text, int base) {
  try {
    std::size_t used = 0;
    const auto value = std::stoull(text, &used, base);
    if (used == 0) return std::nullopt;
    return value;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

std::string windowArgument(std::uint64_t window) { return std::to_string(window); }

}  // namespace

bool waitUntil(const std::function<bool()>& condition, SteadyClock::duration limit,
               const std::function<void()>& between) {
  const auto deadline = SteadyClock::now() + limit;
  // Most checks start a tool; backing off to 100 ms spares a loaded machine.
  auto pause = std::chrono::milliseconds(5);
  while (true) {
    if (between) between();
    if (condition()) return true;
    if (SteadyClock::now() > deadline) return false;
    std::this_thread::sleep_for(pause);
    pause = std::min(pause * 2, std::chrono::milliseconds(100));
  }
}

CommandResult runCommand(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment, SteadyClock::duration limit) {
  CommandResult result;
  Pipe output;
  Pipe errors;
  const pid_t pid = spawn(arguments, environment, output.write.fd, errors.write.fd);
  output.write.reset();
  errors.write.reset();
  if (pid < 0) return result;

  const auto deadline = SteadyClock::now() + limit;
  std::array<pollfd, 2> entries = {pollfd{output.read.fd, POLLIN, 0}, pollfd{errors.read.fd, POLLIN, 0}};
  std::array<std::string*, 2> sinks = {&result.output, &result.errors};
  int open = 2;
  while (open > 0) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - SteadyClock::now());
    if (left.count() <= 0) {
      result.timedOut = true;
      break;
    }
    const int ready = ::poll(entries.data(), entries.size(), static_cast<int>(left.count()));
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 0) break;
    for (std::size_t index = 0; index < entries.size(); ++index) {
      if (entries[index].fd < 0 || entries[index].revents == 0) continue;
      std::array<char, 4096> buffer{};
      const ssize_t got = ::read(entries[index].fd, buffer.data(), buffer.size());
      if (got > 0) {
        sinks[index]->append(buffer.data(), static_cast<std::size_t>(got));
      } else if (got == 0 || errno != EINTR) {
        entries[index].fd = -1;
        --open;
      }
    }
  }
  if (result.timedOut) ::kill(-pid, SIGKILL);
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  result.status = decodeStatus(status);
  return result;
}

SessionProcess::SessionProcess(SessionProcess&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)), status_(other.status_) {}

SessionProcess& SessionProcess::operator=(SessionProcess&& other) noexcept {
  if (this != &other) {
    stop();
    pid_ = std::exchange(other.pid_, -1);
    status_ = other.status_;
  }
  return *this;
}

bool SessionProcess::running() {
  if (pid_ <= 0) return false;
  siginfo_t info{};
  if (::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT) != 0) return false;
  if (info.si_pid == 0) return true;
  // Not reaped yet, so the group id is still ours: end whatever the
  // process left behind in its group, then reap it.
  ::kill(-pid_, SIGKILL);
  int status = 0;
  while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
  }
  status_ = decodeStatus(status);
  pid_ = -1;
  return false;
}

std::optional<int> SessionProcess::waitForExit(SteadyClock::duration limit) {
  if (pid_ > 0) testing::waitUntil([&] { return !running(); }, limit);
  if (pid_ > 0) return std::nullopt;
  return status_;
}

std::optional<int> SessionProcess::stop(SteadyClock::duration grace) {
  if (pid_ <= 0) return status_;
  ::kill(-pid_, SIGTERM);
  if (!waitForExit(grace)) {
    // The leader stays a zombie until reaped, so its group id cannot be
    // taken by another process before the group is killed.
    ::kill(-pid_, SIGKILL);
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    status_ = decodeStatus(status);
    pid_ = -1;
  }
  return status_;
}

DesktopSession::DesktopSession(Options options) : options_(std::move(options)) {}

DesktopSession::~DesktopSession() { stop(); }

std::expected<std::unique_ptr<DesktopSession>, std::string> DesktopSession::start(Options options) {
  std::unique_ptr<DesktopSession> session(new DesktopSession(std::move(options)));
  if (session->folder().empty()) return std::unexpected("cannot make a temporary folder");
  std::error_code error;
  fs::create_directories(session->runtimeFolder(), error);
  fs::permissions(session->runtimeFolder(), fs::perms::owner_all, error);
  auto started = session->startServer();
  if (started && session->options_.monitors > 1) started = session->splitIntoMonitors();
  if (started && session->options_.sessionBus) started = session->startBus();
  if (started && session->options_.windowManager) started = session->startWindowManager();
  if (!started) {
    std::string message = started.error() + "\n" + session->logs();
    session->stop();
    return std::unexpected(std::move(message));
  }
  return session;
}

std::expected<void, std::string> DesktopSession::startServer() {
  Pipe ready;
  const Descriptor log(
      ::open((folder() / "Xvfb.log").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
  const std::string screen = std::to_string(options_.width * std::max(options_.monitors, 1)) + "x" +
                             std::to_string(options_.height) + "x24";
  // No display number: -displayfd makes the server pick a free one and
  // write it once it accepts clients. -noreset keeps it up between clients.
  // Only the abstract socket: the kernel frees its name when the server
  // closes it, whereas a server that is stopping unlinks the socket file in
  // /tmp/.X11-unix late, after a parallel test's new server may already
  // have taken the same number and file, cutting that server off.
  const pid_t pid = spawn({"Xvfb", "-displayfd", "3", "-noreset", "-nolisten", "tcp", "-nolisten", "unix",
                           "-screen", "0", screen},
                          environment(), log.fd, log.fd, ready.write.fd);
  ready.write.reset();
  if (pid < 0) return std::unexpected("cannot start Xvfb");
  server_ = SessionProcess(pid);
  const auto number = readLine(ready.read.fd, SteadyClock::now() + options_.startLimit);
  if (!number || number->empty()) return std::unexpected("Xvfb did not report a display");
  display_ = ":" + *number;
  return {};
}

std::expected<void, std::string> DesktopSession::splitIntoMonitors() {
  // Xvfb has one output, "screen"; RandR monitors carve its screen into
  // displays that Qt and the window manager treat as real ones. The first
  // takes the output over, which retires the monitor the server made for it.
  for (int i = 0; i < options_.monitors; ++i) {
    const std::string geometry = std::to_string(options_.width) + "/300x" + std::to_string(options_.height) +
                                 "/200+" + std::to_string(i * options_.width) + "+0";
    if (const auto result = run(
            {"xrandr", "--setmonitor", "monitor" + std::to_string(i), geometry, i == 0 ? "screen" : "none"});
        !result.succeeded())
      return std::unexpected("xrandr --setmonitor failed: " + result.errors);
  }
  return {};
}

std::expected<void, std::string> DesktopSession::startBus() {
  // A bus of our own with nothing to activate, so no service of the
  // machine starts inside a test.
  const fs::path config = folder() / "bus.conf";
  std::ofstream(config)
      << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
         " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
         "<busconfig>\n  <type>session</type>\n"
         "  <listen>unix:dir="
      << folder().string()
      << "</listen>\n"
         "  <auth>EXTERNAL</auth>\n"
         "  <policy context=\"default\">\n"
         "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
         "    <allow eavesdrop=\"true\"/>\n"
         "    <allow own=\"*\"/>\n"
         "  </policy>\n</busconfig>\n";
  Pipe ready;
  const Descriptor log(
      ::open((folder() / "bus.log").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
  const pid_t pid = spawn(
      {"dbus-daemon", "--config-file=" + config.string(), "--nofork", "--nopidfile", "--print-address=3"},
      environment(), log.fd, log.fd, ready.write.fd);
  ready.write.reset();
  if (pid < 0) return std::unexpected("cannot start dbus-daemon");
  bus_ = SessionProcess(pid);
  const auto address = readLine(ready.read.fd, SteadyClock::now() + options_.startLimit);
  if (!address || address->empty()) return std::unexpected("dbus-daemon did not report its address");
  busAddress_ = *address;
  return {};
}

std::expected<void, std::string> DesktopSession::startWindowManager() {
  // Its own home and configuration folders: the machine's defaults in
  // /etc/xdg, never the user's own settings.
  for (const char* name : {"home", "config", "cache", "data"}) fs::create_directories(folder() / name);
  const Descriptor log(
      ::open((folder() / "openbox.log").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
  // Openbox announces itself on the root window before it has loaded its
  // theme and menus and handles its first map request, which can take
  // seconds on a loaded machine; the startup command runs only once it
  // handles events.
  const fs::path ready = folder() / "openbox.ready";
  const pid_t pid = spawn({"openbox", "--sm-disable", "--startup", "touch " + ready.string()},
                          environment({"HOME=" + (folder() / "home").string(),
                                       "XDG_CONFIG_HOME=" + (folder() / "config").string(),
                                       "XDG_CACHE_HOME=" + (folder() / "cache").string(),
                                       "XDG_DATA_HOME=" + (folder() / "data").string()}),
                          log.fd, log.fd);
  if (pid < 0) return std::unexpected("cannot start openbox");
  windowManager_ = SessionProcess(pid);
  const bool started =
      testing::waitUntil([&] { return !windowManager_.running() || fs::exists(ready); }, options_.startLimit);
  if (!windowManager_.running()) return std::unexpected("openbox ended at start");
  if (!started) return std::unexpected("openbox did not finish starting");
  return {};
}

void DesktopSession::stop() {
  for (auto& process : launched_) process->stop();
  launched_.clear();
  windowManager_.stop();
  server_.stop();
  bus_.stop();
}

std::vector<pid_t> DesktopSession::serverProcesses() const {
  std::vector<pid_t> result;
  for (const SessionProcess* process : {&server_, &windowManager_, &bus_}) {
    if (process->pid() > 0) result.push_back(process->pid());
  }
  return result;
}

std::string DesktopSession::logs() const {
  std::string result;
  for (const char* name : {"Xvfb.log", "bus.log", "openbox.log"}) {
    const fs::path path = folder() / name;
    if (!fs::exists(path)) continue;
    result += std::string("--- ") + name + "\n" + readFile(path);
  }
  return result;
}

std::vector<std::string> DesktopSession::environment(const std::vector<std::string>& overrides) const {
  std::vector<std::string> result;
  auto replaced = [&](std::string_view name) {
    if (name == "DISPLAY" || name == "WAYLAND_DISPLAY" || name == "XAUTHORITY" ||
        name == "DBUS_SESSION_BUS_ADDRESS" || name == "XDG_RUNTIME_DIR") {
      return true;
    }
    for (const std::string& variable : overrides) {
      if (nameOf(variable) == name) return true;
    }
    return false;
  };
  for (char** variable = environ; *variable != nullptr; ++variable) {
    if (!replaced(nameOf(*variable))) result.emplace_back(*variable);
  }
  if (!display_.empty()) result.push_back("DISPLAY=" + display_);
  if (!busAddress_.empty()) result.push_back("DBUS_SESSION_BUS_ADDRESS=" + busAddress_);
  // A runtime folder of its own: what a program keeps there (the socket of
  // the one running instance) must not meet another session's.
  if (!runtimeFolder().empty()) result.push_back("XDG_RUNTIME_DIR=" + runtimeFolder().string());
  for (const std::string& variable : overrides) result.push_back(variable);
  return result;
}

CommandResult DesktopSession::run(const std::vector<std::string>& arguments,
                                  SteadyClock::duration limit) const {
  return runCommand(arguments, environment(), limit);
}

SessionProcess& DesktopSession::launch(const std::vector<std::string>& arguments,
                                       const std::vector<std::string>& overrides,
                                       const fs::path& outputFile) {
  const Descriptor output(
      outputFile.empty() ? -1 : ::open(outputFile.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
  const pid_t pid = spawn(arguments, environment(overrides), output.fd, output.fd);
  launched_.push_back(std::make_unique<SessionProcess>(pid));
  return *launched_.back();
}

bool DesktopSession::waitUntil(const std::function<bool()>& condition, SteadyClock::duration limit) const {
  return testing::waitUntil(condition, limit, pump_);
}

std::vector<XWindow> DesktopSession::findWindows(const WindowQuery& query) const {
  std::vector<std::string> arguments = {"xdotool", "search"};
  if (query.viewableOnly) arguments.emplace_back("--onlyvisible");
  arguments.emplace_back("--all");
  if (!query.name.empty()) arguments.insert(arguments.end(), {"--name", query.name});
  if (!query.instance.empty()) arguments.insert(arguments.end(), {"--classname", query.instance});
  if (!query.className.empty()) arguments.insert(arguments.end(), {"--class", query.className});
  std::vector<XWindow> windows;
  for (const std::string& line : lines(run(arguments).output)) {
    if (const auto window = parseNumber(line, 10)) windows.push_back(*window);
  }
  return windows;
}

std::optional<XWindow> DesktopSession::waitForWindow(const WindowQuery& query,
                                                     SteadyClock::duration limit) const {
  std::optional<XWindow> found;
  waitUntil(
      [&] {
        const auto windows = findWindows(query);
        if (!windows.empty()) found = windows.front();
        return found.has_value();
      },
      limit);
  return found;
}

bool DesktopSession::isViewable(XWindow window) const {
  const auto info = run({"xwininfo", "-id", windowArgument(window)});
  return info.succeeded() && info.output.find("Map State: IsViewable") != std::string::npos;
}

bool DesktopSession::waitUntilMapped(XWindow window, SteadyClock::duration limit) const {
  return waitUntil([&] { return isViewable(window); }, limit);
}

bool DesktopSession::isFullscreen(XWindow window) const {
  if (!netWmState(window).contains("_NET_WM_STATE_FULLSCREEN")) return false;
  // Covering exactly one of the monitors.
  const auto frame = geometry(window);
  if (!frame) return false;
  for (int i = 0; i < std::max(options_.monitors, 1); ++i)
    if (*frame == WindowGeometry{i * options_.width, 0, options_.width, options_.height}) return true;
  return false;
}

bool DesktopSession::waitUntilFullscreen(XWindow window, SteadyClock::duration limit) const {
  return waitUntil([&] { return isFullscreen(window); }, limit);
}

std::optional<WindowGeometry> DesktopSession::geometry(XWindow window) const {
  const auto info = run({"xwininfo", "-id", windowArgument(window)});
  if (!info.succeeded()) return std::nullopt;
  WindowGeometry result;
  int found = 0;
  const std::pair<std::string_view, int*> fields[] = {
      {"Absolute upper-left X:", &result.x},
      {"Absolute upper-left Y:", &result.y},
      {"Width:", &result.width},
      {"Height:", &result.height},
  };
  for (const std::string& line : lines(info.output)) {
    const std::string text = trimmed(line);
    for (const auto& [label, field] : fields) {
      if (text.starts_with(label)) {
        *field = std::stoi(text.substr(label.size()));
        ++found;
      }
    }
  }
  if (found != 4) return std::nullopt;
  return result;
}

std::vector<std::string> DesktopSession::programEnvironment(const std::filesystem::path& tree,
                                                            const std::vector<std::string>& more) {
  std::vector<std::string> variables = {
      "HOME=" + (tree / "home").string(),
      "XDG_DATA_HOME=" + (tree / "data").string(),
      "XDG_DATA_DIRS=" + (tree / "system").string(),
      "XDG_CONFIG_HOME=" + (tree / "config").string(),
      "QT_QPA_PLATFORM=xcb",
  };
  variables.insert(variables.end(), more.begin(), more.end());
  return variables;
}

std::optional<std::string> DesktopSession::property(XWindow window, const std::string& name) const {
  std::vector<std::string> arguments = {"xprop", "-notype"};
  if (window == 0) {
    arguments.emplace_back("-root");
  } else {
    arguments.insert(arguments.end(), {"-id", windowArgument(window)});
  }
  arguments.push_back(name);
  const auto result = run(arguments);
  if (!result.succeeded()) return std::nullopt;
  // "NAME = value" or "NAME: window id # 0x..."; "NAME:  not found." when unset.
  const std::string text = trimmed(result.output.substr(0, result.output.find('\n')));
  if (!text.starts_with(name)) return std::nullopt;
  std::string_view rest = std::string_view(text).substr(name.size());
  if (rest.starts_with(" = ")) return std::string(rest.substr(3));
  if (rest == " =") return std::string();  // set, but empty
  if (rest.starts_with(":") && rest.find("not found.") == std::string_view::npos &&
      rest.find("no such atom") == std::string_view::npos) {
    return trimmed(rest.substr(1));
  }
  return std::nullopt;
}

std::set<std::string> DesktopSession::netWmState(XWindow window) const {
  std::set<std::string> states;
  const auto value = property(window, "_NET_WM_STATE");
  if (!value) return states;
  std::istringstream in(*value);
  for (std::string state; std::getline(in, state, ',');) {
    if (auto name = trimmed(state); !name.empty()) states.insert(std::move(name));
  }
  return states;
}

std::optional<XWindow> DesktopSession::activeWindow() const {
  const auto value = property(0, "_NET_ACTIVE_WINDOW");
  if (!value) return std::nullopt;
  const auto hash = value->find('#');
  if (hash == std::string::npos) return std::nullopt;
  const auto window = parseNumber(value->substr(hash + 1), 16);
  if (!window || *window == 0) return std::nullopt;
  return window;
}

bool DesktopSession::waitForActiveWindow(XWindow window, SteadyClock::duration limit) const {
  return waitUntil([&] { return activeWindow() == window; }, limit);
}

bool DesktopSession::type(const std::string& text) const {
  return run({"xdotool", "type", "--delay", "20", "--", text}).succeeded();
}

bool DesktopSession::key(const std::vector<std::string>& keys) const {
  std::vector<std::string> arguments = {"xdotool", "key", "--delay", "20", "--"};
  arguments.insert(arguments.end(), keys.begin(), keys.end());
  return run(arguments).succeeded();
}

bool DesktopSession::movePointer(int x, int y) const {
  return run({"xdotool", "mousemove", "--sync", std::to_string(x), std::to_string(y)}).succeeded();
}

bool DesktopSession::click(int button) const {
  return run({"xdotool", "click", std::to_string(button)}).succeeded();
}

bool DesktopSession::screenshot(const fs::path& png, std::optional<XWindow> window) const {
  const std::string source = window ? windowArgument(*window) : "root";
  std::error_code ignored;
  fs::remove(png, ignored);
  return run({"import", "-silent", "-window", source, "png:" + png.string()}).succeeded() &&
         fs::file_size(png, ignored) > 0;
}

}  // namespace orrery::testing
