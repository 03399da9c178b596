#include <gtest/gtest.h>

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "Orrery/platform/gio/GioAppOpener.h"
#include "OrreryCore/testing/ScopedVariable.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::platform {
namespace {

namespace fs = std::filesystem;
using app::LaunchFailure;

// Writes the arguments after the first, one a line, then what the process
// inherited, to the file the first names; aside first, so the file appears
// whole. Builtins only, so the shell's own children do not blur the picture.
constexpr const char* kProbe = R"(#!/bin/sh
out=$1
shift
{
  for argument do printf '%s\n' "$argument"; done
  printf 'probe=%s\n' "${ORRERY_LAUNCH_PROBE-unset}"
  printf 'startup=%s\n' "${DESKTOP_STARTUP_ID-unset}"
  for fd in /proc/$$/fd/*; do printf 'fd=%s\n' "${fd##*/}"; done
  while IFS= read -r line; do
    case $line in SigBlk:*|SigIgn:*) printf '%s\n' "$line" ;; esac
  done < /proc/$$/status
} > "$out.part" && mv "$out.part" "$out"
)";

// One argument of an Exec value: double-quoted with the four characters
// that stay special inside quotes escaped, then escaped once more for the
// key file, which reads a backslash as the start of an escape.
std::string execArgument(const std::string& argument) {
  std::string quoted = "\"";
  for (const char c : argument) {
    if (c == '"' || c == '`' || c == '$' || c == '\\') quoted += '\\';
    quoted += c;
  }
  quoted += '"';
  std::string escaped;
  for (const char c : quoted) {
    if (c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

void writeFile(const fs::path& path, const std::string& content, fs::perms permissions) {
  std::ofstream(path) << content;
  fs::permissions(path, permissions);
}

std::vector<std::string> lines(const fs::path& path) {
  std::ifstream in(path);
  std::vector<std::string> result;
  for (std::string line; std::getline(in, line);) result.push_back(line);
  return result;
}

// Polls until `done` holds; false if it never does within a minute, which
// only a broken launch takes.
template <typename Condition>
bool eventually(Condition done) {
  for (int attempt = 0; attempt < 3000; ++attempt) {
    if (done()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return done();
}

struct Child {
  pid_t pid;
  char state;
};

std::vector<Child> childrenOfThisProcess() {
  std::vector<Child> children;
  DIR* proc = ::opendir("/proc");
  if (proc == nullptr) return children;
  while (const dirent* entry = ::readdir(proc)) {
    const std::string name = entry->d_name;
    if (name.find_first_not_of("0123456789") != std::string::npos) continue;
    std::ifstream in("/proc/" + name + "/stat");
    std::string stat;
    std::getline(in, stat);
    // "pid (command) state ppid …"; the command may hold spaces and parentheses.
    const std::size_t close = stat.rfind(')');
    if (close == std::string::npos) continue;
    std::istringstream rest(stat.substr(close + 1));
    char state = '?';
    pid_t parent = 0;
    rest >> state >> parent;
    if (parent == ::getpid()) children.push_back({static_cast<pid_t>(std::stol(name)), state});
  }
  ::closedir(proc);
  return children;
}

class GioAppOpenerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(temporary.path().empty());
    fs::create_directories(folder());
    writeFile(probe(), kProbe, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec);
  }

  // Spaces and "$HOME" in every path the entry names: a shell in the way
  // would split or expand them.
  fs::path folder() const { return temporary.path() / "apps with $HOME"; }
  fs::path probe() const { return folder() / "write marker.sh"; }
  fs::path marker() const { return folder() / "marker $HOME.txt"; }

  AppInfo entry(const std::string& name, const std::string& exec) const {
    const fs::path path = folder() / (name + ".desktop");
    writeFile(path, "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + exec + "\n",
              fs::perms::owner_read | fs::perms::owner_write);
    return AppInfo{name + ".desktop", name, path.string(), std::nullopt};
  }

  AppInfo probeEntry(const std::vector<std::string>& arguments) const {
    std::string exec = execArgument(probe().string()) + " " + execArgument(marker().string());
    for (const std::string& argument : arguments) exec += " " + execArgument(argument);
    return entry("Probe", exec);
  }

  testing::TemporaryDirectory temporary{"orrery-launch"};
  GioAppOpener opener;
};

TEST_F(GioAppOpenerTest, ProgramGetsWhatItsEntrySaysNothingOfOursAndIsNeverOurZombie) {
  const std::vector<std::string> arguments = {
      "$HOME", "two  words", "it's", "say \"hi\"", "back\\slash", "*", "~", "; touch pwned", "`id`"};
  const AppInfo app = probeEntry(arguments);

  // What the program must not inherit: an open file, an ignored and a
  // blocked signal, the startup ID we were given; what it must: our variables.
  testing::ScopedVariable probeVariable("ORRERY_LAUNCH_PROBE", "passed through");
  testing::ScopedVariable startupID("DESKTOP_STARTUP_ID", "orrery-own-start_TIME1");
  const int leaked = ::dup2(::open("/dev/null", O_RDONLY), 250);
  ASSERT_EQ(leaked, 250);
  struct sigaction ignore {
  }, previousPipe{};
  ignore.sa_handler = SIG_IGN;
  ::sigaction(SIGPIPE, &ignore, &previousPipe);
  sigset_t usr1, previousMask;
  sigemptyset(&usr1);
  sigaddset(&usr1, SIGUSR1);
  ::pthread_sigmask(SIG_BLOCK, &usr1, &previousMask);

  const auto outcome = opener.open(app);

  ::pthread_sigmask(SIG_SETMASK, &previousMask, nullptr);
  ::sigaction(SIGPIPE, &previousPipe, nullptr);
  ::close(leaked);
  ASSERT_TRUE(outcome) << outcome.error().detail;
  ASSERT_TRUE(eventually([&] { return fs::exists(marker()); }));

  const std::vector<std::string> written = lines(marker());
  ASSERT_GT(written.size(), arguments.size());
  EXPECT_EQ(std::vector<std::string>(written.begin(), written.begin() + std::ssize(arguments)), arguments);
  EXPECT_FALSE(fs::exists(folder() / "pwned"));
  const std::vector<std::string> inherited(written.begin() + std::ssize(arguments), written.end());
  auto has = [&](const std::string& line) { return std::ranges::find(inherited, line) != inherited.end(); };
  EXPECT_TRUE(has("probe=passed through"));
  EXPECT_TRUE(has("startup=unset"));
  EXPECT_TRUE(has("fd=0") && has("fd=1") && has("fd=2"));
  EXPECT_FALSE(has("fd=250"));
  for (const std::string& line : inherited) {
    if (!line.starts_with("SigBlk:") && !line.starts_with("SigIgn:")) continue;
    const unsigned long long mask = std::strtoull(line.c_str() + 7, nullptr, 16);
    const unsigned long long bit =
        line.starts_with("SigBlk:") ? 1ULL << (SIGUSR1 - 1) : 1ULL << (SIGPIPE - 1);
    EXPECT_EQ(mask & bit, 0U) << line;
  }

  // The probe ends right after writing. Whatever of it was our child has
  // then either gone or become a zombie nobody reaps.
  eventually([] {
    return std::ranges::all_of(childrenOfThisProcess(),
                               [](const Child& child) { return child.state == 'Z'; });
  });
  for (const Child& child : childrenOfThisProcess())
    ADD_FAILURE() << "child " << child.pid << " left in state " << child.state;
}

TEST_F(GioAppOpenerTest, SaysWhyAnAppDidNotStart) {
  const fs::path plain = folder() / "not executable.sh";
  writeFile(plain, kProbe, fs::perms::owner_read | fs::perms::owner_write);

  struct Case {
    const char* what;
    AppInfo app;
    LaunchFailure::Reason reason;
  };
  const Case cases[] = {
      {"entry removed since the scan",
       AppInfo{"gone.desktop", "Gone", (folder() / "gone.desktop").string(), std::nullopt},
       LaunchFailure::Reason::entryMissing},
      {"not a desktop entry", entry("Garbage", "x"), LaunchFailure::Reason::entryInvalid},
      {"program without execute permission", entry("Plain", execArgument(plain.string())),
       LaunchFailure::Reason::programNotExecutable},
      {"program not installed", entry("Missing", execArgument((folder() / "no such program").string())),
       LaunchFailure::Reason::programMissing},
  };
  std::ofstream(folder() / "Garbage.desktop") << "This is no desktop entry.\n";

  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto outcome = opener.open(c.app);
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.error().reason, c.reason) << outcome.error().detail;
    EXPECT_FALSE(outcome.error().detail.empty());
  }
}

}  // namespace
}  // namespace orrery::platform
