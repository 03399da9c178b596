#include <QTest>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Orrery/catalog/DirectoryWatcher.h"
#include "Orrery/tests/ManualClock.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::app {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using testing::ManualClock;

class DirectoryWatcherTest : public ::testing::Test {
 protected:
  DirectoryWatcher& watch(std::vector<std::string> roots) {
    watcher = std::make_unique<DirectoryWatcher>(
        std::move(roots), 2, [](std::string_view name) { return name.ends_with(".app"); }, clock, 1000ms);
    QObject::connect(watcher.get(), &DirectoryWatcher::changed, [this] { ++reports; });
    EXPECT_TRUE(watcher->rearm());
    return *watcher;
  }

  // Waits for the system to deliver changes until `count` reports were made.
  bool reportsReach(int count) {
    return QTest::qWaitFor([&] { return reports >= count; }, 5000);
  }

  std::string path(const std::string& relative) const { return (temporary.path() / relative).string(); }
  void makeFolder(const std::string& relative) { fs::create_directories(temporary.path() / relative); }

  orrery::testing::TemporaryDirectory temporary{"orrery-watcher"};
  ManualClock clock;
  int reports = 0;
  std::unique_ptr<DirectoryWatcher> watcher;
};

TEST_F(DirectoryWatcherTest, WatchesTheFoldersTheScanOpens) {
  for (const char* folder : {"apps/a/b/c", "apps/.hidden/x", "apps/Tool.app/Contents", "other"})
    makeFolder(folder);
  fs::create_directory_symlink(temporary.path() / "other", temporary.path() / "apps/linked");

  watch({path("apps")});
  EXPECT_EQ(watcher->watchedFolders(),
            (std::vector<std::string>{path("apps"), path("apps/a"), path("apps/a/b")}));
}

TEST_F(DirectoryWatcherTest, TheFirstChangeIsReportedAtOnceLaterOnesAfterTheLatency) {
  makeFolder("apps");
  watch({path("apps")});

  makeFolder("apps/one");
  ASSERT_TRUE(reportsReach(1));
  EXPECT_EQ(clock.pendingCount(), 0u);

  makeFolder("apps/two");
  ASSERT_TRUE(QTest::qWaitFor([&] { return clock.pendingCount() == 1; }, 5000));
  EXPECT_EQ(reports, 1);
  clock.advance(999ms);
  EXPECT_EQ(reports, 1);
  clock.advance(1ms);
  EXPECT_EQ(reports, 2);

  clock.advance(5s);  // quiet again
  makeFolder("apps/three");
  ASSERT_TRUE(reportsReach(3));
  EXPECT_EQ(clock.pendingCount(), 0u);
}

TEST_F(DirectoryWatcherTest, RearmingFollowsFoldersThatAppearAndVanish) {
  makeFolder("apps/old");
  watch({path("apps")});

  makeFolder("apps/new");
  fs::remove(temporary.path() / "apps/old");
  ASSERT_TRUE(reportsReach(1));
  ASSERT_TRUE(watcher->rearm());
  EXPECT_EQ(watcher->watchedFolders(), (std::vector<std::string>{path("apps"), path("apps/new")}));

  // Only the new folder's own watch sees a file appear inside it.
  clock.advance(5s);
  const int before = reports;
  std::ofstream(temporary.path() / "apps/new/tool.desktop") << "[Desktop Entry]\n";
  ASSERT_TRUE(reportsReach(before + 1));
}

TEST_F(DirectoryWatcherTest, AFileWrittenAfterItAppearedIsReportedAgain) {
  makeFolder("apps");
  watch({path("apps")});

  // Created empty, the way most writers start: the scan this report starts
  // may well read nothing.
  std::ofstream entry(temporary.path() / "apps/tool.desktop");
  ASSERT_TRUE(reportsReach(1));

  // Only the finished write says the entry is now worth reading.
  clock.advance(5s);
  entry << "[Desktop Entry]\nType=Application\nName=Tool\n";
  entry.close();
  EXPECT_TRUE(reportsReach(2));
}

TEST_F(DirectoryWatcherTest, AFolderPutInPlaceOfAWatchedOneIsWatchedAfterRearming) {
  makeFolder("apps");
  watch({path("apps")});

  fs::rename(temporary.path() / "apps", temporary.path() / "apps.old");
  makeFolder("apps");
  ASSERT_TRUE(reportsReach(1));
  ASSERT_TRUE(watcher->rearm());

  clock.advance(5s);
  std::ofstream(temporary.path() / "apps/tool.desktop") << "[Desktop Entry]\n";
  EXPECT_TRUE(reportsReach(2));
}

TEST_F(DirectoryWatcherTest, AMissingRootIsWaitedForWithoutReportingUnrelatedChanges) {
  makeFolder("data");
  makeFolder("system/applications");
  watch({path("data/applications"), path("system/applications")});
  EXPECT_EQ(watcher->watchedFolders(), (std::vector<std::string>{path("data"), path("system/applications")}));

  // Unrelated traffic in the parent first, then a real change: if the first
  // had been reported, the second would have been gathered instead.
  std::ofstream(temporary.path() / "data/recently-used.xbel") << "x";
  makeFolder("system/applications/sub");
  ASSERT_TRUE(reportsReach(1));
  EXPECT_EQ(clock.pendingCount(), 0u);

  clock.advance(5s);
  makeFolder("data/applications");
  ASSERT_TRUE(reportsReach(2));
  const auto watched = watcher->watchedFolders();
  EXPECT_NE(std::find(watched.begin(), watched.end(), path("data/applications")), watched.end());
  EXPECT_EQ(std::find(watched.begin(), watched.end(), path("data")), watched.end());
}

TEST_F(DirectoryWatcherTest, ARootDeeperDownIsWaitedForStepByStep) {
  watch({path("x/y/applications")});
  EXPECT_EQ(watcher->watchedFolders(), (std::vector<std::string>{temporary.path().string()}));

  makeFolder("x");
  ASSERT_TRUE(reportsReach(1));
  EXPECT_EQ(watcher->watchedFolders(), (std::vector<std::string>{path("x")}));
}

}  // namespace
}  // namespace orrery::app
