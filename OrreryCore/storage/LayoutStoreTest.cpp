#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "OrreryCore/storage/AtomicWrite.h"
#include "OrreryCore/storage/LayoutStore.h"
#include "OrreryCore/storage/MemoryFileSystem.h"
#include "OrreryCore/storage/PosixFileSystem.h"
#include "OrreryCore/testing/LayoutBuilders.h"
#include "OrreryCore/testing/StoreTesting.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery {
namespace {

using testing::app;
using testing::folder;
using testing::kFolder;
using testing::kMoment;
using testing::kStamp;
using testing::layoutOf;
using testing::wrote;
using Code = FileError::Code;
using Fault = MemoryFileSystem::Fault;
using Kind = LayoutStore::SaveError::Kind;
using Persistence = MemoryFileSystem::Persistence;

const std::filesystem::path kMain = kFolder / "layout.json";
const std::filesystem::path kBackup = kFolder / "layout.backup.json";

Layout firstLayout() { return layoutOf({app("com.a"), folder("Games", {"com.b", "com.c"})}, {"com.h"}); }
Layout secondLayout() { return layoutOf({folder("Games", {"com.b", "com.c"}), app("com.a"), app("com.d")}); }
Layout thirdLayout() { return layoutOf({app("com.z")}); }

std::vector<std::string> temporariesIn(const MemoryFileSystem& fs, const std::filesystem::path& folder) {
  std::vector<std::string> found;
  for (const auto& name : fs.names(folder))
    if (isTemporaryName(name, "")) found.push_back(name);
  return found;
}

using LayoutStoreTest = testing::MemoryStoreTest<LayoutStore>;

TEST_F(LayoutStoreTest, FirstStartThenEachSaveRotatesTheBackup) {
  EXPECT_EQ(store().loadWithStatus(), (LayoutStore::LoadResult{Layout::empty(), false}));
  EXPECT_FALSE(fs_.exists(kFolder));  // loading creates nothing

  ASSERT_TRUE(store().save(firstLayout()));
  EXPECT_EQ(fs_.contents(kMain), firstLayout().encoded());
  EXPECT_FALSE(fs_.exists(kBackup));
  EXPECT_EQ(store().load(), firstLayout());

  ASSERT_TRUE(store().save(secondLayout()));
  EXPECT_EQ(fs_.contents(kBackup), firstLayout().encoded());
  EXPECT_EQ(fs_.contents(kMain), secondLayout().encoded());

  // The backup takes the main file's exact bytes, not a re-encoding.
  const std::string handWritten =
      R"({"version":1,"hidden":[],"items":[{"app":{"_0":"com.x"}}],"extra":true})";
  fs_.writeFile(kMain, handWritten);
  ASSERT_TRUE(store().save(secondLayout()));
  EXPECT_EQ(fs_.contents(kBackup), handWritten);

  // A save that changes nothing still rotates; the same layout gives the same bytes.
  ASSERT_TRUE(store().save(secondLayout()));
  EXPECT_EQ(fs_.contents(kBackup), fs_.contents(kMain));
  EXPECT_EQ(fs_.names(kFolder), (std::vector<std::string>{"layout.backup.json", "layout.json"}));
}

TEST_F(LayoutStoreTest, ADamagedMainFileIsSetAsideAndTheBackupUsed) {
  fs_.writeFile(kMain, "{");
  fs_.writeFile(kBackup, firstLayout().encoded());
  EXPECT_EQ(store().loadWithStatus(), (LayoutStore::LoadResult{firstLayout(), false}));
  EXPECT_FALSE(fs_.exists(kMain));  // gone until the next save
  EXPECT_EQ(fs_.contents(kFolder / ("layout.corrupt-" + kStamp + ".json")), "{");
  EXPECT_EQ(fs_.contents(kBackup), firstLayout().encoded());

  // A second damaged file within the same second gets the next name; a
  // damaged backup is set aside as well.
  fs_.writeFile(kMain, "[1, 2");
  fs_.writeFile(kBackup, R"({"version": 1})");
  EXPECT_EQ(store().loadWithStatus(), (LayoutStore::LoadResult{Layout::empty(), false}));
  EXPECT_EQ(fs_.contents(kFolder / ("layout.corrupt-" + kStamp + "-2.json")), "[1, 2");
  EXPECT_EQ(fs_.contents(kFolder / ("layout.backup.corrupt-" + kStamp + ".json")), R"({"version": 1})");
  EXPECT_EQ(fs_.names(kFolder).size(), 3u);
}

TEST_F(LayoutStoreTest, TheBackupStandsInOnlyForADamagedMainFile) {
  // A missing main file is a first start, whatever the backup holds.
  fs_.writeFile(kBackup, firstLayout().encoded());
  EXPECT_EQ(store().loadWithStatus(), (LayoutStore::LoadResult{Layout::empty(), false}));

  // A damaged main file with an unreadable backup: empty, and saving is allowed.
  fs_.writeFile(kMain, "not json");
  fs_.inject(
      Fault::error(Code::ioError, 1, Persistence::fromThenOn).only(FileOperation::read).onPath(kBackup));
  EXPECT_EQ(store().loadWithStatus(), (LayoutStore::LoadResult{Layout::empty(), false}));
  EXPECT_EQ(fs_.contents(kBackup), firstLayout().encoded());

  // Setting aside may fail while loading: the result is the same, the file stays.
  fs_.clearFaults();
  fs_.writeFile(kMain, "not json");
  fs_.inject(
      Fault::error(Code::accessDenied, 1, Persistence::fromThenOn).only(FileOperation::renameNoReplace));
  EXPECT_EQ(store().loadWithStatus(), (LayoutStore::LoadResult{firstLayout(), false}));
  EXPECT_EQ(fs_.contents(kMain), "not json");
}

TEST_F(LayoutStoreTest, AnUnreadableMainFileIsNeverWrittenOver) {
  fs_.writeFile(kMain, firstLayout().encoded());
  fs_.writeFile(kBackup, secondLayout().encoded());
  fs_.inject(
      Fault::error(Code::accessDenied, 1, Persistence::fromThenOn).only(FileOperation::read).onPath(kMain));
  fs_.clearJournal();

  EXPECT_EQ(store().loadWithStatus(), (LayoutStore::LoadResult{Layout::empty(), true}));
  for (const auto& event : fs_.journal()) EXPECT_NE(event.path, kBackup) << "the backup is not consulted";

  const auto saved = store().save(thirdLayout());
  ASSERT_FALSE(saved);
  EXPECT_FALSE(wrote(fs_.journal()));  // neither the load nor the refused save
  EXPECT_EQ(saved.error(), LayoutStore::SaveError::mainUnreadable());
  EXPECT_EQ(saved.error().description(), "layout.json can't be read (check access permissions).");
  EXPECT_TRUE(store().saveCopy(thirdLayout(), "layout.before-sync-"));  // copies are still fine
  EXPECT_EQ(fs_.contents(kMain), firstLayout().encoded());
  EXPECT_EQ(fs_.contents(kBackup), secondLayout().encoded());
}

TEST_F(LayoutStoreTest, SavingOverADamagedFileSetsItAsideFirstOrWritesNothing) {
  fs_.writeFile(kMain, "{");
  fs_.writeFile(kBackup, firstLayout().encoded());
  // A read-only folder: the damaged file cannot be moved aside.
  fs_.inject(
      Fault::error(Code::accessDenied, 1, Persistence::fromThenOn).only(FileOperation::renameNoReplace));
  const auto refused = store().save(secondLayout());
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().kind(), Kind::couldNotSetAsideCorrupt);
  ASSERT_NE(refused.error().fileError(), nullptr);
  EXPECT_EQ(refused.error().fileError()->code, Code::accessDenied);
  EXPECT_EQ(refused.error().description(), "The damaged layout.json can't be renamed.");
  EXPECT_EQ(fs_.contents(kMain), "{");
  EXPECT_EQ(fs_.names(kFolder), (std::vector<std::string>{"layout.backup.json", "layout.json"}));

  // Once it can be moved, it is kept under a dated name and the backup is
  // left alone (there was no good main file to back up).
  fs_.clearFaults();
  ASSERT_TRUE(store().save(secondLayout()));
  EXPECT_EQ(fs_.contents(kMain), secondLayout().encoded());
  EXPECT_EQ(fs_.contents(kBackup), firstLayout().encoded());
  EXPECT_EQ(fs_.contents(kFolder / ("layout.corrupt-" + kStamp + ".json")), "{");
}

TEST_F(LayoutStoreTest, StrayTemporaryFilesAreRemovedOnLoadAndNeverRead) {
  fs_.writeFile(kFolder / ".layout.json.tmp-E621E1F8-C36C-495A-93FC-0C247A3E6E5F", firstLayout().encoded());
  fs_.writeFile(kFolder / ".layout.before-sync-tmp-0C247A3E-C36C-495A-93FC-E621E1F86E5F", "{");
  fs_.writeFile(kFolder / "sync-state.json", "{}");
  EXPECT_EQ(store().loadWithStatus(), (LayoutStore::LoadResult{Layout::empty(), false}));
  EXPECT_EQ(fs_.names(kFolder), (std::vector<std::string>{"sync-state.json"}));
}

TEST_F(LayoutStoreTest, DatedCopiesNeverReplaceEachOther) {
  const auto first = store().saveCopy(firstLayout(), "layout.before-sync-");
  ASSERT_TRUE(first);
  EXPECT_EQ(*first, kFolder / ("layout.before-sync-" + kStamp + ".json"));
  const auto second = store().saveCopy(secondLayout(), "layout.before-sync-");
  ASSERT_TRUE(second);
  EXPECT_EQ(*second, kFolder / ("layout.before-sync-" + kStamp + "-2.json"));
  EXPECT_EQ(fs_.contents(*first), firstLayout().encoded());
  EXPECT_EQ(fs_.contents(*second), secondLayout().encoded());
  EXPECT_FALSE(fs_.exists(kMain));  // a copy is not the arrangement
  fs_.simulateCrash();
  EXPECT_EQ(fs_.contents(*second), secondLayout().encoded());

  // A failed move reports the error and leaves only a temporary file.
  now_ += std::chrono::seconds(1);
  fs_.inject(Fault::error(Code::noSpace).only(FileOperation::renameNoReplace));
  const auto failed = store().saveCopy(thirdLayout(), "layout.before-sync-");
  ASSERT_FALSE(failed);
  EXPECT_EQ(failed.error().kind(), Kind::fileSystem);
  EXPECT_EQ(failed.error().description(), "There isn’t enough space on the disk to save “" +
                                              failed.error().fileError()->path.filename().string() + "”.");
  EXPECT_EQ(temporariesIn(fs_, kFolder).size(), 1u);  // cleared by the next load, as stray files are
}

// Every file operation of a save may fail, with any of the errors a disk
// gives, once or from then on. Whatever fails, the user's file is either the
// old one, byte for byte, or the new one complete, the backup holds a good
// generation, and a save that did not complete says so.
TEST_F(LayoutStoreTest, AFailureAtAnyStepOfASaveKeepsTheOldFileOrTheNewOne) {
  const std::string oldMain = firstLayout().encoded();
  const std::string oldBackup = thirdLayout().encoded();
  const std::string newMain = secondLayout().encoded();
  std::size_t cleanOperations = 0;
  {
    MemoryFileSystem clean;
    clean.writeFile(kMain, oldMain);
    ASSERT_TRUE(LayoutStore(kFolder, clean).save(secondLayout()));
    cleanOperations = clean.operationCount();
  }

  for (const Code code : {Code::noSpace, Code::ioError, Code::accessDenied}) {
    for (const Persistence persistence : {Persistence::once, Persistence::fromThenOn}) {
      for (std::size_t n = 1;; ++n) {
        SCOPED_TRACE(::testing::Message() << "error " << static_cast<int>(code) << ", persistence "
                                          << static_cast<int>(persistence) << ", operation " << n);
        ASSERT_LE(n, cleanOperations + 1) << "the save never succeeded";
        MemoryFileSystem fs;
        fs.writeFile(kMain, oldMain);
        fs.writeFile(kBackup, oldBackup);
        fs.inject(Fault::error(code, n, persistence));
        const auto saved = LayoutStore(kFolder, fs).save(secondLayout());

        const auto main = fs.contents(kMain);
        const auto backup = fs.contents(kBackup);
        ASSERT_TRUE(main == oldMain || main == newMain) << main.value_or("(missing)");
        ASSERT_TRUE(backup == oldBackup || backup == oldMain) << backup.value_or("(missing)");
        if (n <= cleanOperations) {
          ASSERT_FALSE(saved) << "a failed step must be reported";
          EXPECT_FALSE(saved.error().description().empty());
        }

        // What the next start sees: no leftovers, no unreadable flag, a good layout.
        fs.clearFaults();
        const auto loaded = LayoutStore(kFolder, fs).loadWithStatus();
        EXPECT_FALSE(loaded.mainUnreadable);
        EXPECT_TRUE(loaded.layout == firstLayout() || loaded.layout == secondLayout());
        EXPECT_TRUE(temporariesIn(fs, kFolder).empty());
        if (saved) {
          EXPECT_EQ(main, newMain);
          EXPECT_EQ(backup, oldMain);
          break;
        }
      }
    }
  }
}

// The machine loses power at any step of a save. What was reported saved
// stays saved; otherwise the old file is there; and a damaged file that was
// to be set aside is never lost.
TEST_F(LayoutStoreTest, APowerCutAtAnyStepOfASaveLosesNothing) {
  for (const bool damaged : {false, true}) {
    const std::string oldMain = damaged ? std::string("{\"items\": [") : firstLayout().encoded();
    for (std::size_t n = 1;; ++n) {
      SCOPED_TRACE(::testing::Message()
                   << (damaged ? "damaged" : "good") << " main file, cut at operation " << n);
      ASSERT_LT(n, 100u);
      MemoryFileSystem fs;
      fs.writeFile(kMain, oldMain);
      fs.writeFile(kBackup, thirdLayout().encoded());
      fs.inject(Fault::error(Code::ioError, n, Persistence::fromThenOn));
      const bool saved = LayoutStore(kFolder, fs, [] { return kMoment; }).save(secondLayout()).has_value();
      fs.simulateCrash();

      const auto main = fs.contents(kMain);
      if (saved) {
        EXPECT_EQ(main, secondLayout().encoded());
      }
      if (damaged) {
        const auto names = fs.names(kFolder);
        const bool kept = std::any_of(names.begin(), names.end(), [&](const std::string& name) {
          return fs.contents(kFolder / name) == oldMain;
        });
        EXPECT_TRUE(kept) << "the damaged file vanished";
        EXPECT_TRUE(!main || main == oldMain || main == secondLayout().encoded());
      } else {
        EXPECT_TRUE(main == oldMain || main == secondLayout().encoded()) << main.value_or("(missing)");
      }
      fs.clearFaults();
      EXPECT_FALSE(LayoutStore(kFolder, fs).loadWithStatus().mainUnreadable);
      if (saved) break;
    }
  }
}

// --- On the real disk --------------------------------------------------------

TEST(LayoutStoreOnDisk, SavesLoadsAndRefusesToWriteOverWhatItCannotRead) {
  testing::TemporaryDirectory temporary("orrery-layout");
  ASSERT_FALSE(temporary.path().empty());
  const std::filesystem::path folder = temporary.path() / "nested" / "Orrery";
  const LayoutStore store(folder);
  EXPECT_EQ(store.loadWithStatus(), (LayoutStore::LoadResult{Layout::empty(), false}));
  ASSERT_TRUE(store.save(firstLayout()));
  ASSERT_TRUE(store.save(secondLayout()));
  EXPECT_EQ(store.loadWithStatus(), (LayoutStore::LoadResult{secondLayout(), false}));
  EXPECT_EQ(PosixFileSystem::shared().readFile(folder / "layout.backup.json").value(),
            firstLayout().encoded());

  // Permission bits do not stop root, but a folder in the file's place makes
  // it unreadable for anyone.
  const LayoutStore blocked(temporary.path() / "blocked");
  ASSERT_TRUE(std::filesystem::create_directories(temporary.path() / "blocked" / "layout.json"));
  EXPECT_EQ(blocked.loadWithStatus(), (LayoutStore::LoadResult{Layout::empty(), true}));
  EXPECT_EQ(blocked.save(firstLayout()).error().kind(), Kind::mainUnreadable);
  EXPECT_TRUE(std::filesystem::is_directory(temporary.path() / "blocked" / "layout.json"));
}

}  // namespace
}  // namespace orrery
