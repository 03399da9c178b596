#include <gtest/gtest.h>

#include <string>

#include "OrreryCore/base/Uuid.h"
#include "OrreryCore/storage/AtomicWrite.h"
#include "OrreryCore/storage/DatedName.h"
#include "OrreryCore/storage/MemoryFileSystem.h"

namespace orrery {
namespace {

using Code = FileError::Code;
using Fault = MemoryFileSystem::Fault;
using Persistence = MemoryFileSystem::Persistence;

const std::filesystem::path kFolder = "/data";
const std::filesystem::path kTarget = "/data/layout.json";

TEST(TemporaryName, IsRecognisedOnlyForItsOwnStems) {
  const std::string name = temporaryName("layout.json.");
  EXPECT_EQ(name.rfind(".layout.json.tmp-", 0), 0u);
  EXPECT_TRUE(isTemporaryName(name, "layout."));
  EXPECT_TRUE(isTemporaryName(name, ""));
  EXPECT_FALSE(isTemporaryName(name, "sync-state."));
  EXPECT_TRUE(isTemporaryName(".layout.before-sync-tmp-e621e1f8-c36c-495a-93fc-0c247a3e6e5f", "layout."));

  for (const std::string other :
       {"layout.json", "layout.json.tmp-E621E1F8-C36C-495A-93FC-0C247A3E6E5F", ".layout.json.tmp-",
        ".layout.json.tmp-E621E1F8-C36C-495A-93FC-0C247A3E6E5",
        ".layout.json.tmp-E621E1F8-C36C-495A-93FC-0C247A3E6E5FX",
        ".layout.json.bak-E621E1F8-C36C-495A-93FC-0C247A3E6E5F", ".layout.json.swp"})
    EXPECT_FALSE(isTemporaryName(other, "layout.")) << other;
}

TEST(ReplaceAtomically, ReplacesDurablyAndLeavesNothingBehind) {
  MemoryFileSystem fs;
  fs.writeFile(kTarget, "old");
  fs.writeFile(kFolder / "notes.txt", "unrelated");
  ASSERT_TRUE(replaceAtomically(fs, kTarget, "new content"));
  EXPECT_EQ(fs.contents(kTarget), "new content");
  EXPECT_EQ(fs.names(kFolder), (std::vector<std::string>{"layout.json", "notes.txt"}));
  fs.simulateCrash();
  EXPECT_EQ(fs.contents(kTarget), "new content");

  // Creates the file where there was none, empty content included.
  ASSERT_TRUE(replaceAtomically(fs, kFolder / "empty.json", ""));
  fs.simulateCrash();
  EXPECT_EQ(fs.contents(kFolder / "empty.json"), "");
}

TEST(ReplaceAtomically, AShortWriteFailsAndKeepsTheOldFile) {
  MemoryFileSystem fs;
  fs.writeFile(kTarget, "old");
  fs.inject(Fault::shortWriteOf(4));
  const auto result = replaceAtomically(fs, kTarget, "a longer new content");
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error().code, Code::noSpace);
  EXPECT_EQ(result.error().path, kTarget);  // the user knows the target, not the temporary file
  EXPECT_NE(result.error().detail.find("stored 4 of 20 bytes"), std::string::npos) << result.error().detail;
  EXPECT_EQ(fs.contents(kTarget), "old");
  EXPECT_EQ(fs.names(kFolder), (std::vector<std::string>{"layout.json"}));
}

// A power cut at any moment leaves the old or the new content, never a mix
// and never nothing: this is what catches a missing flush of the data before
// the rename or of the folder after it.
TEST(ReplaceAtomically, APowerCutAtAnyStepLeavesOldOrNew) {
  for (std::size_t step = 1;; ++step) {
    MemoryFileSystem fs;
    fs.writeFile(kTarget, "old");
    // The machine stops at `step`: that operation and every later one fail.
    fs.inject(Fault::error(Code::ioError, step, Persistence::fromThenOn));
    const bool succeeded = replaceAtomically(fs, kTarget, "new").has_value();
    fs.simulateCrash();
    const auto after = fs.contents(kTarget);
    ASSERT_TRUE(after == "old" || after == "new") << "step " << step << ": " << after.value_or("(missing)");
    if (succeeded) {
      EXPECT_EQ(after, "new") << "a reported success must survive the power cut";
      EXPECT_GT(step, 5u);  // create, write, sync, close, rename, flush folder
      break;
    }
  }
}

TEST(ReplaceAtomically, PicksAnotherTemporaryNameWhenOneIsTaken) {
  MemoryFileSystem fs;
  fs.makeDirectory(kFolder);
  fs.inject(Fault::error(Code::exists).only(FileOperation::createNew));
  ASSERT_TRUE(replaceAtomically(fs, kTarget, "x"));
  EXPECT_EQ(fs.contents(kTarget), "x");
}

TEST(RemoveStrayTemporaries, DeletesOnlyTheStoresOwnLeftovers) {
  MemoryFileSystem fs;
  const std::string uuid = Uuid::random().text();
  for (const std::string& name : std::vector<std::string>{
           ".layout.json.tmp-" + uuid, ".layout.backup.json.tmp-" + uuid, ".layout.before-sync-tmp-" + uuid,
           ".sync-state.json.tmp-" + uuid, "layout.json", ".layout.json.swp", "layout.corrupt-2026.json"})
    fs.writeFile(kFolder / name, "x");
  EXPECT_EQ(removeStrayTemporaries(fs, kFolder, "layout."), 3u);
  EXPECT_EQ(fs.names(kFolder), (std::vector<std::string>{".layout.json.swp", ".sync-state.json.tmp-" + uuid,
                                                         "layout.corrupt-2026.json", "layout.json"}));
  EXPECT_EQ(removeStrayTemporaries(fs, "/nowhere", "layout."), 0u);
}

// --- Dated names -------------------------------------------------------------

// 2026-03-05T14:07:31Z, plus a fraction that the stamp drops.
const Date kMoment = Date(std::chrono::seconds(1772719651)) + std::chrono::milliseconds(900);

TEST(DatedName, UniqueURLCountsUpPastTakenNames) {
  MemoryFileSystem fs;
  fs.makeDirectory(kFolder);
  EXPECT_EQ(uniqueURL(fs, kFolder, "layout.corrupt-", kMoment).value(),
            kFolder / "layout.corrupt-2026-03-05T14-07-31Z.json");
  fs.writeFile(kFolder / "layout.corrupt-2026-03-05T14-07-31Z.json", "");
  fs.writeFile(kFolder / "layout.corrupt-2026-03-05T14-07-31Z-2.json", "");
  EXPECT_EQ(uniqueURL(fs, kFolder, "layout.corrupt-", kMoment).value(),
            kFolder / "layout.corrupt-2026-03-05T14-07-31Z-3.json");
  // A folder that cannot be looked into gives an error, not a name.
  fs.inject(Fault::error(Code::accessDenied).only(FileOperation::stat));
  EXPECT_EQ(uniqueURL(fs, kFolder, "layout.corrupt-", kMoment).error().code, Code::accessDenied);
}

TEST(DatedName, MoveAsideNeverReplacesAndRetriesWhenRaced) {
  MemoryFileSystem fs;
  fs.writeFile(kTarget, "first");
  ASSERT_EQ(moveAside(fs, kTarget, "layout.corrupt-", kMoment).value(),
            kFolder / "layout.corrupt-2026-03-05T14-07-31Z.json");
  fs.writeFile(kTarget, "second");
  // Another writer takes the name between looking and moving.
  fs.inject(Fault::error(Code::exists).only(FileOperation::renameNoReplace));
  ASSERT_EQ(moveAside(fs, kTarget, "layout.corrupt-", kMoment).value(),
            kFolder / "layout.corrupt-2026-03-05T14-07-31Z-2.json");
  EXPECT_EQ(fs.contents(kFolder / "layout.corrupt-2026-03-05T14-07-31Z.json"), "first");
  EXPECT_EQ(fs.contents(kFolder / "layout.corrupt-2026-03-05T14-07-31Z-2.json"), "second");
  EXPECT_FALSE(fs.exists(kTarget));

  // Any other failure is reported and the file stays where it was.
  fs.writeFile(kTarget, "third");
  fs.inject(Fault::error(Code::accessDenied).only(FileOperation::renameNoReplace));
  EXPECT_EQ(moveAside(fs, kTarget, "layout.corrupt-", kMoment).error().code, Code::accessDenied);
  EXPECT_EQ(fs.contents(kTarget), "third");
  EXPECT_EQ(moveAside(fs, kFolder / "absent", "layout.corrupt-", kMoment).error().code, Code::notFound);
}

}  // namespace
}  // namespace orrery
