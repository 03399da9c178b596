// Runs the real orrery with its data, application and settings folders in
// a temporary tree, and watches what it does to layout.json.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

extern char** environ;

namespace orrery {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream content;
  content << in.rdbuf();
  return content.str();
}

// Polls until `condition` holds or `limit` passes; true when it held.
bool waitFor(const std::function<bool()>& condition, Clock::duration limit) {
  const auto deadline = Clock::now() + limit;
  while (!condition()) {
    if (Clock::now() > deadline) return false;
    std::this_thread::sleep_for(10ms);
  }
  return true;
}

class Program {
 public:
  explicit Program(const fs::path& tree) : tree_(tree) {}
  ~Program() {
    if (pid_ > 0) {
      ::kill(pid_, SIGKILL);
      ::waitpid(pid_, nullptr, 0);
    }
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  void start(const std::string& logName = "orrery.log") {
    std::vector<std::string> variables = {
        "HOME=" + (tree_ / "home").string(),
        "XDG_DATA_HOME=" + (tree_ / "data").string(),
        "XDG_DATA_DIRS=" + (tree_ / "system").string(),
        "XDG_CONFIG_HOME=" + (tree_ / "config").string(),
        "XDG_CONFIG_DIRS=" + (tree_ / "xdg").string(),
        "XDG_RUNTIME_DIR=" + (tree_ / "runtime").string(),
        "QT_QPA_PLATFORM=offscreen",
    };
    if (const char* path = std::getenv("PATH")) variables.push_back(std::string("PATH=") + path);
    fs::create_directories(tree_ / "runtime");
    fs::permissions(tree_ / "runtime", fs::perms::owner_all);
    std::vector<char*> environment;
    for (std::string& variable : variables) environment.push_back(variable.data());
    environment.push_back(nullptr);

    std::string program = ORRERY_PROGRAM;
    char* arguments[] = {program.data(), nullptr};
    const std::string log = (tree_ / logName).string();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    const int failed = posix_spawn(&pid_, program.c_str(), &actions, nullptr, arguments, environment.data());
    posix_spawn_file_actions_destroy(&actions);
    ASSERT_EQ(failed, 0) << "cannot start " << program;
  }

  // Waits for the program to end by itself; its exit status, or nothing.
  std::optional<int> waitForExit(Clock::duration limit) {
    int status = 0;
    const bool ended = waitFor([&] { return ::waitpid(pid_, &status, WNOHANG) == pid_; }, limit);
    if (!ended) return std::nullopt;
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }

  std::optional<int> terminate() {
    ::kill(pid_, SIGTERM);
    return waitForExit(10s);
  }

  bool running() const { return pid_ > 0 && ::kill(pid_, 0) == 0; }

 private:
  fs::path tree_;
  pid_t pid_ = -1;
};

class ProgramTest : public ::testing::Test {
 protected:
  fs::path applications() const { return tree() / "data/applications"; }
  fs::path layoutFile() const { return tree() / "data/Orrery/layout.json"; }
  const fs::path& tree() const { return temporary.path(); }

  void install(const std::string& name) const {
    fs::create_directories(applications());
    std::ofstream(applications() / (name + ".desktop")) << entry(name);
  }
  static std::string entry(const std::string& name) {
    return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=true\n";
  }

  // The app ids in layout.json; nothing while there is no readable file.
  std::optional<AppIDSet> arrangedApps() const {
    const std::string bytes = readFile(layoutFile());
    if (bytes.empty()) return std::nullopt;
    auto layout = Layout::decode(bytes);
    if (!layout) {
      ADD_FAILURE() << "layout.json does not decode:\n" << bytes;
      return std::nullopt;
    }
    return layout->referencedAppIDs();
  }
  bool arranged(const std::string& name) const {
    const auto apps = arrangedApps();
    return apps && apps->contains(name + ".desktop");
  }

  std::string log() const { return readFile(tree() / "orrery.log"); }

  orrery::testing::TemporaryDirectory temporary{"orrery-program"};
};

TEST_F(ProgramTest, KeepsTheArrangementInStepWithTheInstalledApps) {
  for (const char* name : {"Alpha", "Beta", "Gamma"}) install(name);
  Program program(tree());
  program.start();
  ASSERT_TRUE(waitFor([&] { return arrangedApps() && arrangedApps()->size() == 3; }, 20s)) << log();

  install("Delta");
  // The folder watcher must bring a new entry in by itself; how fast is for a
  // benchmark, so the limit only has to outlast a loaded CI machine.
  EXPECT_TRUE(waitFor([&] { return arranged("Delta"); }, 15s)) << "a new entry was not arranged" << log();

  fs::remove(applications() / "Beta.desktop");
  const auto removedAt = Clock::now();

  // Meanwhile an entry is created empty and only filled once the scan its
  // creation started has long read it, as on a machine busy installing.
  {
    std::ofstream late(applications() / "Epsilon.desktop");
    std::this_thread::sleep_for(1500ms);
    late << entry("Epsilon");
  }
  EXPECT_TRUE(waitFor([&] { return arranged("Epsilon"); }, 15s))
      << "a completed entry was not arranged" << log();

  ASSERT_TRUE(waitFor([&] { return !arranged("Beta"); }, 40s)) << log();
  const auto keptFor = Clock::now() - removedAt;
  EXPECT_GE(keptFor, 20s) << "a removed entry left before its grace period";
  const auto apps = arrangedApps();
  ASSERT_TRUE(apps);
  EXPECT_EQ(*apps, (AppIDSet{"Alpha.desktop", "Gamma.desktop", "Delta.desktop", "Epsilon.desktop"}));

  EXPECT_EQ(program.terminate(), 0) << log();
}

TEST_F(ProgramTest, NeverWritesAnEmptyArrangementOverAFullOne) {
  std::vector<std::string> names;
  for (int i = 0; i < 25; ++i) names.push_back("App" + std::to_string(100 + i));
  for (const std::string& name : names) install(name);
  Program program(tree());
  program.start();
  ASSERT_TRUE(waitFor([&] { return arrangedApps() && arrangedApps()->size() == 25; }, 20s)) << log();
  const std::string full = readFile(layoutFile());

  // The folder vanishes, comes back empty, then full again, the way a
  // package manager or a sync tool may replace it.
  fs::rename(applications(), tree() / "data/applications.old");
  fs::create_directory(applications());
  std::this_thread::sleep_for(300ms);
  fs::remove(applications());
  fs::rename(tree() / "data/applications.old", applications());

  // Past the confirmation scan: every version written must hold all apps.
  const auto until = Clock::now() + 7s;
  while (Clock::now() < until) {
    const auto apps = arrangedApps();
    ASSERT_TRUE(apps);
    ASSERT_EQ(apps->size(), 25u) << readFile(layoutFile());
    std::this_thread::sleep_for(5ms);
  }
  EXPECT_EQ(readFile(layoutFile()), full);

  // The folder that came back is watched again.
  install("Late");
  EXPECT_TRUE(waitFor([&] { return arranged("Late"); }, 5s)) << log();
  EXPECT_EQ(program.terminate(), 0) << log();
}

TEST_F(ProgramTest, ASecondStartLeavesTheRunningProgramAlone) {
  install("Alpha");
  Program first(tree());
  first.start();
  ASSERT_TRUE(waitFor([&] { return arranged("Alpha"); }, 20s)) << log();

  Program second(tree());
  second.start("second.log");
  EXPECT_EQ(second.waitForExit(20s), 0);
  EXPECT_TRUE(first.running());
  EXPECT_EQ(first.terminate(), 0) << log();
}

}  // namespace
}  // namespace orrery
