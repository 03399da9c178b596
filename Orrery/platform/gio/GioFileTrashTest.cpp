// Moving desktop entries to a real Trash through GIO, in a home of the
// test's own, and finding running apps in a /proc of the test's own.
#include <gio/gio.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "Orrery/platform/gio/GioFileTrash.h"
#include "Orrery/platform/gio/RunningDesktopApps.h"
#include "OrreryCore/testing/ScopedVariable.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::platform {
namespace {

namespace fs = std::filesystem;
using orrery::testing::ScopedVariable;
using orrery::testing::TemporaryDirectory;

void write(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path) << text;
}

std::string read(const fs::path& path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

// A folder the user cannot change: for root, who may write anywhere, the
// immutable flag; for others, no write permission.
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
          std::string("chattr ") + (readOnly ? "+i " : "-i ") + "'" + folder_.string() + "'";
      ASSERT_EQ(std::system(command.c_str()), 0) << command;
    } else {
      fs::permissions(folder_,
                      readOnly ? fs::perms::owner_read | fs::perms::owner_exec : fs::perms::owner_all);
    }
  }
  fs::path folder_;
};

TrashService::Failures moveEach(const GioFileTrash& trash, const std::vector<std::string>& paths) {
  TrashService::Failures failures;
  for (const std::string& path : paths)
    if (std::optional<TrashFailure> failure = trash.moveToTrash(path)) failures.emplace(path, *failure);
  return failures;
}

// GLib reads the data folder once per process: this test must be the first
// in its process to ask (ctest runs each test on its own).
TEST(GioFileTrash, MovesEntriesIntoTheHomeTrashAndNamesWhatFailed) {
  TemporaryDirectory home("orrery-trash");
  const fs::path dataHome = home.path() / "data";
  ScopedVariable dataVariable("XDG_DATA_HOME", dataHome.c_str());
  ScopedVariable homeVariable("HOME", home.path().c_str());
  ASSERT_EQ(fs::path(g_get_user_data_dir()), dataHome) << "GLib looked up the data folder before the test";

  const fs::path applications = dataHome / "applications";
  const fs::path spaced = applications / "My Editor.desktop";
  const fs::path plain = applications / "notes.desktop";
  const fs::path locked = home.path() / "locked" / "locked.desktop";
  write(spaced, "[Desktop Entry]\nType=Application\nName=My Editor\nExec=true\n");
  write(plain, "[Desktop Entry]\nType=Application\nName=Notes\nExec=true\n");
  write(locked, "[Desktop Entry]\nType=Application\nName=Locked\nExec=true\n");
  const fs::path missing = applications / "gone.desktop";

  const GioFileTrash trash;
  TrashService::Failures failures;
  {
    ReadOnlyFolder readOnly(locked.parent_path());
    failures = moveEach(trash, {spaced.string(), plain.string(), locked.string(), missing.string()});
  }

  // The two entries are in the Trash, each with a record that says where
  // it was, its path percent-encoded.
  EXPECT_FALSE(fs::exists(spaced));
  EXPECT_FALSE(fs::exists(plain));
  const fs::path trashFolder = dataHome / "Trash";
  EXPECT_TRUE(fs::exists(trashFolder / "files" / "My Editor.desktop"));
  EXPECT_TRUE(fs::exists(trashFolder / "files" / "notes.desktop"));
  const std::string info = read(trashFolder / "info" / "My Editor.desktop.trashinfo");
  EXPECT_NE(info.find("[Trash Info]"), std::string::npos) << info;
  EXPECT_NE(info.find("Path=" + (applications / "My%20Editor.desktop").string()), std::string::npos) << info;
  EXPECT_NE(info.find("DeletionDate="), std::string::npos) << info;

  // The entry in the folder that can't be changed stays, and so the user
  // is told why; a vanished one is named as gone.
  EXPECT_TRUE(fs::exists(locked));
  ASSERT_EQ(failures.size(), 2u);
  ASSERT_TRUE(failures.contains(locked.string()));
  EXPECT_EQ(failures.at(locked.string()).kind, TrashFailure::Kind::other);
  EXPECT_EQ(failures.at(locked.string()).description, "You may not change the folder it is in.");
  ASSERT_TRUE(failures.contains(missing.string()));
  EXPECT_EQ(failures.at(missing.string()).description, "It is no longer there.");
}

TEST(RunningDesktopApps, FindsProcessesByLaunchedEntryAndByExecutable) {
  TemporaryDirectory folder("orrery-proc");
  const fs::path proc = folder.path() / "proc";
  const fs::path entries = folder.path() / "applications";
  write(entries / "editor.desktop",
        "[Desktop Entry]\nType=Application\nName=Editor\nExec=orrery-no-such-program\n");
  write(entries / "truth.desktop", "[Desktop Entry]\nType=Application\nName=Truth\nExec=true --flag %U\n");
  write(entries / "idle.desktop",
        "[Desktop Entry]\nType=Application\nName=Idle\nExec=orrery-no-such-program\n");
  const auto app = [&](const std::string& id) {
    return AppInfo{id, id, (entries / (id + ".desktop")).string(), std::nullopt};
  };

  // A process GIO started from the editor's entry, among other variables.
  using namespace std::string_literals;
  write(proc / "101" / "environ",
        "PATH=/usr/bin\0GIO_LAUNCHED_DESKTOP_FILE="s + (entries / "editor.desktop").string() + "\0LANG=C\0"s);
  // A process running what the Truth entry runs, started from a terminal.
  write(proc / "202" / "environ", "PATH=/usr/bin\0"s);
  gchar* truePath = g_find_program_in_path("true");
  ASSERT_NE(truePath, nullptr);
  fs::create_symlink(fs::canonical(truePath), proc / "202" / "exe");
  g_free(truePath);
  // Not a process at all, and a process of another entry.
  write(proc / "self-status" / "environ",
        "GIO_LAUNCHED_DESKTOP_FILE="s + (entries / "idle.desktop").string());
  write(proc / "303" / "environ", "GIO_LAUNCHED_DESKTOP_FILE=/elsewhere/idle.desktop\0"s);

  const AppIDSet running = runningDesktopApps({app("editor"), app("truth"), app("idle")}, proc);
  EXPECT_EQ(running, (AppIDSet{"editor", "truth"}));
}

}  // namespace
}  // namespace orrery::platform
