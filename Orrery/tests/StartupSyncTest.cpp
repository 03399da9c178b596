#include <gtest/gtest.h>

#include "Orrery/shell/StartupSync.h"
#include "Orrery/tests/LogCapture.h"
#include "OrreryCore/storage/MemoryFileSystem.h"

namespace orrery::app {
namespace {

using testing::LogCapture;

TEST(StartupSync, AnUntrustworthySyncStateStartsTheCatalogInSyncMode) {
  MemoryFileSystem files;
  const std::filesystem::path folder = "/data/Orrery";
  const SyncStateStore store(folder, files);
  LogCapture log;

  EXPECT_FALSE(catalogSyncEnabled(store.loadWithStatus()));  // missing: the fresh record's switch

  SyncState on;
  on.enabled = true;
  files.writeFile(folder / "sync-state.json", on.encoded());
  EXPECT_TRUE(catalogSyncEnabled(store.loadWithStatus()));
  EXPECT_TRUE(log.lines().empty());

  files.writeFile(folder / "sync-state.json", R"({"enabled": false, "deviceID": "not a uuid"})");
  EXPECT_TRUE(catalogSyncEnabled(store.loadWithStatus()));
  EXPECT_TRUE(
      log.contains("ch.lumenfold.orrery.sync: sync-state.json kaputt; Sync gilt vorläufig als an, damit "
                   "nichts entfernt wird"));

  SyncState off;
  files.writeFile(folder / "sync-state.json", off.encoded());
  files.inject(MemoryFileSystem::Fault::error(FileError::Code::accessDenied).only(FileOperation::read));
  EXPECT_TRUE(catalogSyncEnabled(store.loadWithStatus()));
  EXPECT_TRUE(
      log.contains("ch.lumenfold.orrery.sync: sync-state.json nicht lesbar; Sync gilt vorläufig als an, "
                   "damit nichts entfernt "
                   "wird"));
}

}  // namespace
}  // namespace orrery::app
