#include "OrreryCore/testing/LayoutChoices.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "OrreryCore/testing/LayoutBuilders.h"
#include "OrreryCore/testing/RandomLayout.h"

namespace orrery::testing {
namespace {

// Replays a fixed list of bytes, then zeros, as a saved fuzz input does.
class ListedChoices final : public Choices {
 public:
  explicit ListedChoices(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}
  std::uint8_t byte() override { return next_ < bytes_.size() ? bytes_[next_++] : std::uint8_t{0}; }

 private:
  std::vector<std::uint8_t> bytes_;
  std::size_t next_ = 0;
};

TEST(LayoutChoices, TheSameBytesMakeTheSameArrangementAndEdits) {
  const auto universe = appUniverse(20);
  Random random(11);
  std::vector<std::uint8_t> bytes(600);
  for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());

  std::vector<std::string> runs[2];
  for (auto& run : runs) {
    ListedChoices choices(bytes);
    Layout layout = consistentLayout(choices, universe);
    for (int step = 0; step < 40; ++step) run.push_back(applyOperation(layout, choices, universe, true));
    run.push_back(describe(layout));  // new folders get random ids; their places do not
  }
  EXPECT_EQ(runs[0], runs[1]);
}

TEST(LayoutChoices, ConsistentLayoutsPlaceEachChosenAppOnceInDistinctFolders) {
  // Large enough for more than 255 folders, more than a one-byte id tells apart.
  const auto universe = appUniverse(4000);
  for (std::uint64_t seed = 1; seed <= 5; ++seed) {
    Random random(seed);
    const Layout layout = randomLayout(random, universe);
    for (const auto& [id, count] : appOccurrences(layout)) ASSERT_EQ(count, 1) << id;
    std::set<Uuid> folders;
    for (const auto& item : layout.items)
      if (const Folder* folder = item.asFolder()) {
        EXPECT_GE(folder->appIDs.size(), 2u);
        EXPECT_TRUE(folders.insert(folder->id).second) << folder->name;
      }
    EXPECT_GT(folders.size(), 255u);
  }
}

}  // namespace
}  // namespace orrery::testing
