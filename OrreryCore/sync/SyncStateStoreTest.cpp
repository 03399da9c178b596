#include "OrreryCore/sync/SyncStateStore.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "OrreryCore/storage/AtomicWrite.h"
#include "OrreryCore/storage/MemoryFileSystem.h"
#include "OrreryCore/storage/PosixFileSystem.h"
#include "OrreryCore/testing/LayoutBuilders.h"
#include "OrreryCore/testing/StoreTesting.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery {
namespace {

using testing::app;
using testing::kFolder;
using testing::kMoment;
using testing::kStamp;
using testing::layoutOf;
using testing::wrote;
using Code = FileError::Code;
using Fault = MemoryFileSystem::Fault;
using Kind = SyncStateStore::SaveError::Kind;
using LoadResult = SyncStateStore::LoadResult;
using Persistence = MemoryFileSystem::Persistence;

const std::filesystem::path kFile = kFolder / "sync-state.json";

SyncState someState(bool enabled) {
  SyncState state;
  state.deviceID = *Uuid::parse("E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
  state.enabled = enabled;
  state.localModified = dateFromReferenceSeconds(795'000'000);
  state.lastReportedCount = 12;
  return state;
}

using SyncStateStoreTest = testing::MemoryStoreTest<SyncStateStore>;

TEST_F(SyncStateStoreTest, MissingThenSavedThenLoaded) {
  const LoadResult first = store().loadWithStatus();
  EXPECT_TRUE(first.wasMissing);
  EXPECT_FALSE(first.unreadable || first.wasCorrupt || first.state.enabled);
  EXPECT_FALSE(fs_.exists(kFolder));  // loading creates nothing

  const SyncState state = someState(true);
  ASSERT_TRUE(store().save(state));
  EXPECT_EQ(fs_.contents(kFile), state.encoded());
  EXPECT_EQ(store().loadWithStatus(), (LoadResult{state, false, false, false}));
  EXPECT_EQ(store().load(), state);
  EXPECT_EQ(fs_.names(kFolder), std::vector<std::string>{"sync-state.json"});
}

TEST_F(SyncStateStoreTest, ADamagedFileIsSetAsideUnderADatedName) {
  fs_.writeFile(kFile, "{\"enabled\": tru");
  LoadResult loaded = store().loadWithStatus();
  EXPECT_TRUE(loaded.wasCorrupt);
  EXPECT_FALSE(loaded.unreadable || loaded.wasMissing || loaded.state.enabled);
  EXPECT_FALSE(fs_.exists(kFile));
  EXPECT_EQ(fs_.contents(kFolder / ("sync-state.corrupt-" + kStamp + ".json")), "{\"enabled\": tru");

  // JSON whose identity is not a UUID is damaged too.
  fs_.writeFile(kFile, R"({"deviceID": "me"})");
  EXPECT_TRUE(store().loadWithStatus().wasCorrupt);

  // A move that fails while loading is ignored; saving then tries again and
  // writes nothing while it cannot.
  fs_.writeFile(kFile, "[");
  fs_.inject(
      Fault::error(Code::accessDenied, 1, Persistence::fromThenOn).only(FileOperation::renameNoReplace));
  EXPECT_TRUE(store().loadWithStatus().wasCorrupt);
  EXPECT_EQ(fs_.contents(kFile), "[");
  fs_.clearJournal();
  const auto refused = store().save(someState(true));
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().kind(), Kind::couldNotSetAsideCorrupt);
  EXPECT_EQ(refused.error().description(), "The damaged sync-state.json can't be renamed.");
  EXPECT_EQ(fs_.contents(kFile), "[");

  fs_.clearFaults();
  now_ += std::chrono::seconds(1);
  ASSERT_TRUE(store().save(someState(true)));
  EXPECT_EQ(fs_.contents(kFolder / "sync-state.corrupt-2026-03-05T14-07-32Z.json"), "[");
  EXPECT_EQ(store().load(), someState(true));
}

TEST_F(SyncStateStoreTest, AnUnreadableFileIsNeverWrittenOver) {
  fs_.writeFile(kFile, someState(true).encoded());
  for (const Code code : {Code::accessDenied, Code::ioError}) {
    fs_.clearFaults();
    fs_.inject(Fault::error(code, 1, Persistence::fromThenOn).only(FileOperation::read).onPath(kFile));
    fs_.clearJournal();
    const LoadResult loaded = store().loadWithStatus();
    EXPECT_TRUE(loaded.unreadable);
    EXPECT_FALSE(loaded.wasCorrupt || loaded.wasMissing || loaded.state.enabled);

    const auto refused = store().save(someState(false));
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error(), SyncStateStore::SaveError::unreadable());
    EXPECT_EQ(refused.error().description(), "sync-state.json can't be read (check access permissions).");
    EXPECT_FALSE(wrote(fs_.journal()));
    EXPECT_EQ(fs_.contents(kFile), someState(true).encoded());
  }
}

TEST_F(SyncStateStoreTest, FolderAndWriteFailuresAreReported) {
  fs_.inject(Fault::error(Code::accessDenied).only(FileOperation::createDirectories));
  const auto noFolder = store().save(someState(true));
  ASSERT_FALSE(noFolder);
  EXPECT_EQ(noFolder.error().kind(), Kind::fileSystem);
  EXPECT_FALSE(fs_.exists(kFile));

  // Whatever step of a save fails, the file holds the old state or the new
  // one, never a mix, and no temporary file survives the next load.
  fs_.clearFaults();
  ASSERT_TRUE(store().save(someState(false)));
  for (std::size_t n = 1;; ++n) {
    SCOPED_TRACE("failing operation " + std::to_string(n));
    ASSERT_LT(n, 50u);
    MemoryFileSystem fs;
    fs.writeFile(kFile, someState(false).encoded());
    fs.inject(Fault::error(Code::noSpace, n, Persistence::fromThenOn));
    const auto saved = SyncStateStore(kFolder, fs).save(someState(true));
    fs.simulateCrash();
    fs.clearFaults();
    const LoadResult loaded = SyncStateStore(kFolder, fs).loadWithStatus();
    EXPECT_FALSE(loaded.unreadable || loaded.wasCorrupt || loaded.wasMissing);
    if (saved) {
      EXPECT_EQ(loaded.state, someState(true));
    } else {
      EXPECT_TRUE(loaded.state == someState(false) || loaded.state == someState(true));
    }
    const auto names = fs.names(kFolder);
    EXPECT_TRUE(std::none_of(names.begin(), names.end(),
                             [](const std::string& name) { return isTemporaryName(name, ""); }));
    if (saved) break;
    // A failed read of the present file blocks the save like an unreadable file.
    EXPECT_TRUE(saved.error().kind() == Kind::fileSystem || saved.error().kind() == Kind::unreadable);
  }
}

TEST_F(SyncStateStoreTest, StrayTemporariesAreRemovedButNotTheArrangementsOnes) {
  fs_.writeFile(kFolder / ".sync-state.json.tmp-E621E1F8-C36C-495A-93FC-0C247A3E6E5F", "{}");
  fs_.writeFile(kFolder / ".layout.json.tmp-E621E1F8-C36C-495A-93FC-0C247A3E6E5F", "{}");
  EXPECT_TRUE(store().loadWithStatus().wasMissing);
  EXPECT_EQ(fs_.names(kFolder),
            std::vector<std::string>{".layout.json.tmp-E621E1F8-C36C-495A-93FC-0C247A3E6E5F"});
}

TEST(SyncStateStoreResult, TreatingExistingLayout) {
  const Layout onlyHidden = layoutOf({}, {"com.h"});
  const Layout withItems = layoutOf({app("com.a")});
  for (const bool missing : {true, false}) {
    LoadResult lost;
    lost.wasMissing = missing;
    lost.wasCorrupt = !missing;
    EXPECT_TRUE(lost.treatingExistingLayout(onlyHidden).state.userEdited);
    EXPECT_TRUE(lost.treatingExistingLayout(withItems).state.userEdited);
    EXPECT_EQ(lost.treatingExistingLayout(Layout::empty()), lost);
    LoadResult expected = lost;
    expected.state.userEdited = true;
    EXPECT_EQ(lost.treatingExistingLayout(withItems), expected);
  }
  // A file that was read (or could not be read) is never second-guessed.
  LoadResult read;
  EXPECT_EQ(read.treatingExistingLayout(withItems), read);
  LoadResult unreadable;
  unreadable.unreadable = true;
  EXPECT_EQ(unreadable.treatingExistingLayout(withItems), unreadable);
}

TEST(SyncStateStoreOnDisk, SavesAndLoads) {
  testing::TemporaryDirectory folder;
  const SyncStateStore store(folder.path() / "Orrery");
  EXPECT_TRUE(store.loadWithStatus().wasMissing);
  ASSERT_TRUE(store.save(someState(true)));
  EXPECT_EQ(store.loadWithStatus(), (LoadResult{someState(true), false, false, false}));
}

}  // namespace
}  // namespace orrery
