#include "OrreryCore/arrangement/LayoutDiff.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "OrreryCore/testing/LayoutBuilders.h"
#include "OrreryCore/testing/RandomLayout.h"

namespace orrery {
namespace {

using testing::app;
using testing::describe;
using testing::folder;
using testing::layoutOf;
using testing::uuidFor;

using Kind = LayoutChange::Kind;

LayoutChange removed(const LayoutItemKey& key, Index from) { return {Kind::removed, key, from, -1}; }
LayoutChange moved(const LayoutItemKey& key, Index from, Index to) { return {Kind::moved, key, from, to}; }
LayoutChange inserted(const LayoutItemKey& key, Index to) { return {Kind::inserted, key, -1, to}; }
LayoutChange updated(Kind kind, const LayoutItemKey& key, Index to) { return {kind, key, -1, to}; }

LayoutItemKey appKey(const std::string& id) { return LayoutItemKey::app(id); }
LayoutItemKey folderKey(const std::string& label) { return LayoutItemKey::folder(uuidFor(label)); }

// What the grid's list model does with a diff: row operations on the old
// rows, inserted rows taken from `after`, and a kept folder's apps or name
// replaced only when a step says so. Checks each step against the rows it
// applies to and the order the steps must come in.
void replay(const Layout& before, const Layout& after, const LayoutDiff& diff,
            std::vector<LayoutItem>& rows) {
  rows = before.items;
  const auto at = [](auto& list, Index i) -> auto& { return list.at(static_cast<std::size_t>(i)); };
  // Removals last to first, moves, insertions first to last, updates.
  const auto order = [](const LayoutChange& change) -> std::pair<int, Index> {
    if (change.kind == Kind::removed) return {0, -change.from};
    if (change.kind == Kind::inserted) return {2, change.to};
    return {change.kind == Kind::moved ? 1 : 3, 0};
  };
  std::pair<int, Index> last{0, PTRDIFF_MIN};
  for (const LayoutChange& change : diff.changes) {
    ASSERT_LE(last, order(change));
    last = order(change);
    switch (change.kind) {
      case Kind::removed:
        ASSERT_EQ(at(rows, change.from).key(), change.key);
        rows.erase(rows.begin() + change.from);
        break;
      case Kind::moved: {
        ASSERT_EQ(at(rows, change.from).key(), change.key);
        ASSERT_NE(change.from, change.to) << "a move that moves nothing";
        LayoutItem item = std::move(at(rows, change.from));
        rows.erase(rows.begin() + change.from);
        ASSERT_TRUE(change.to >= 0 && change.to <= std::ssize(rows));
        rows.insert(rows.begin() + change.to, std::move(item));
        break;
      }
      case Kind::inserted:
        ASSERT_EQ(at(after.items, change.to).key(), change.key);
        ASSERT_LE(change.to, std::ssize(rows));
        rows.insert(rows.begin() + change.to, at(after.items, change.to));
        break;
      case Kind::folderChanged:
      case Kind::renamed: {
        ASSERT_EQ(at(rows, change.to).key(), change.key);
        Folder* row = at(rows, change.to).asFolder();
        const Folder* now = at(after.items, change.to).asFolder();
        ASSERT_TRUE(row != nullptr && now != nullptr);
        if (change.kind == Kind::renamed) {
          ASSERT_NE(row->name, now->name);
          row->name = now->name;
        } else {
          ASSERT_NE(row->appIDs, now->appIDs);
          row->appIDs = now->appIDs;
        }
        break;
      }
    }
  }
}

// The fewest moves for removals-then-moves-then-insertions: the survivors
// outside a longest run already in final order. Plain quadratic search.
std::size_t fewestMoves(const Layout& before, const Layout& after) {
  const auto oldKeys = before.keys();
  std::vector<LayoutItemKey> survivors;  // in new order
  for (const auto& key : after.keys())
    if (std::ranges::find(oldKeys, key) != oldKeys.end()) survivors.push_back(key);
  std::vector<std::size_t> ranks;  // survivors in old order, by place in `survivors`
  for (const auto& key : oldKeys) {
    const auto found = std::ranges::find(survivors, key);
    if (found != survivors.end()) ranks.push_back(static_cast<std::size_t>(found - survivors.begin()));
  }
  std::vector<std::size_t> longest(ranks.size(), 1);
  std::size_t best = 0;
  for (std::size_t i = 0; i < ranks.size(); ++i) {
    for (std::size_t k = 0; k < i; ++k)
      if (ranks[k] < ranks[i]) longest[i] = std::max(longest[i], longest[k] + 1);
    best = std::max(best, longest[i]);
  }
  return ranks.size() - best;
}

// --- Random pairs ------------------------------------------------------------

TEST(LayoutDiffProperties, ReplayGivesTheNewItemsWithTheFewestMoves) {
  const auto universe = testing::appUniverse(60);
  for (std::uint64_t seed = 1; seed <= 400; ++seed) {
    testing::Random random(seed);
    const Layout before = testing::randomLayout(random, universe);
    Layout after = before;
    if (seed % 7 == 0) {
      // Unrelated arrangements of the same apps: folders never match.
      after = testing::randomLayout(random, universe);
    } else {
      for (auto edits = random() % 6; edits > 0; --edits)
        testing::applyRandomOperation(after, random, universe);
      if (seed % 3 == 0 && !after.items.empty()) {
        const auto first = random() % after.items.size();
        std::shuffle(after.items.begin() + static_cast<Index>(first), after.items.end(), random);
      }
    }
    SCOPED_TRACE("seed " + std::to_string(seed) + "\n  before: " + describe(before) +
                 "\n  after:  " + describe(after));

    const LayoutDiff result = diff(before, after);
    std::vector<LayoutItem> rows;
    ASSERT_NO_FATAL_FAILURE(replay(before, after, result, rows));
    EXPECT_EQ(rows, after.items);
    EXPECT_EQ(result.hiddenChanged, before.hidden != after.hidden);
    const auto moves = std::ranges::count(result.changes, Kind::moved, &LayoutChange::kind);
    EXPECT_EQ(static_cast<std::size_t>(moves), fewestMoves(before, after));
  }
}

// --- Chosen cases ------------------------------------------------------------

TEST(LayoutDiff, NothingOrOnlyHiddenChanged) {
  const Layout layout = layoutOf({app("a"), folder("Games", {"b", "c"}), app("d")}, {"x"});
  EXPECT_TRUE(diff(layout, layout).empty());

  Layout shown = layout;
  shown.hidden.clear();
  const LayoutDiff result = diff(layout, shown);
  EXPECT_TRUE(result.changes.empty());
  EXPECT_TRUE(result.hiddenChanged);
  EXPECT_FALSE(result.empty());
}

TEST(LayoutDiff, AMoveLandsWhereItIsRightAfterTheMove) {
  const Layout abcd = layoutOf({app("a"), app("b"), app("c"), app("d")});
  // Down: "a" ends up third, counted without itself, not before "d" as
  // counted in the list before the move.
  EXPECT_EQ(diff(abcd, layoutOf({app("b"), app("c"), app("a"), app("d")})).changes,
            std::vector{moved(appKey("a"), 0, 2)});
  EXPECT_EQ(diff(abcd, layoutOf({app("d"), app("a"), app("b"), app("c")})).changes,
            std::vector{moved(appKey("d"), 3, 0)});

  // A removal before the move and an insertion after it shift the indices.
  const Layout xabcd = layoutOf({app("x"), app("a"), app("b"), app("c"), app("d")});
  EXPECT_EQ(diff(xabcd, layoutOf({app("b"), app("c"), app("a"), app("y"), app("d")})).changes,
            (std::vector{removed(appKey("x"), 0), moved(appKey("a"), 0, 2), inserted(appKey("y"), 3)}));
}

TEST(LayoutDiff, AFolderKeepsItsRowWhenItsAppsOrNameChange) {
  const Uuid games = uuidFor("F");
  const Layout before = layoutOf({folder(games, "Games", {"b", "c"}), app("a"), app("z")});

  EXPECT_EQ(diff(before, layoutOf({folder(games, "Games", {"c", "b"}), app("a"), app("z")})).changes,
            std::vector{updated(Kind::folderChanged, folderKey("F"), 0)});
  // Moved and renamed: the name change is reported where the folder ends up.
  EXPECT_EQ(diff(before, layoutOf({app("a"), app("z"), folder(games, "Play", {"b", "c"})})).changes,
            (std::vector{moved(folderKey("F"), 0, 2), updated(Kind::renamed, folderKey("F"), 2)}));
  EXPECT_EQ(diff(before, layoutOf({folder(games, "Play", {"b"}), app("a"), app("z")})).changes,
            (std::vector{updated(Kind::folderChanged, folderKey("F"), 0),
                         updated(Kind::renamed, folderKey("F"), 0)}));
  // Another folder with the same apps is another row.
  EXPECT_EQ(diff(before, layoutOf({folder(uuidFor("G"), "Games", {"b", "c"}), app("a"), app("z")})).changes,
            (std::vector{removed(folderKey("F"), 0), inserted(folderKey("G"), 0)}));
}

TEST(LayoutDiff, ARepeatedKeyReplacesEveryRow) {
  const Layout repeated = layoutOf({app("a"), app("b"), app("a")});
  const Layout plain = layoutOf({app("b"), app("a")});
  EXPECT_EQ(diff(repeated, plain).changes,
            (std::vector{removed(appKey("a"), 2), removed(appKey("b"), 1), removed(appKey("a"), 0),
                         inserted(appKey("b"), 0), inserted(appKey("a"), 1)}));

  // Repeated on the new side only, by a folder this time.
  const Layout twice =
      layoutOf({folder(uuidFor("F"), "One", {"a", "b"}), folder(uuidFor("F"), "Two", {"c", "d"})});
  const Layout once = layoutOf({folder(uuidFor("F"), "One", {"a", "b"})});
  const LayoutDiff result = diff(once, twice);
  EXPECT_EQ(std::ranges::count(result.changes, Kind::removed, &LayoutChange::kind), 1);
  std::vector<LayoutItem> rows;
  ASSERT_NO_FATAL_FAILURE(replay(once, twice, result, rows));
  EXPECT_EQ(rows, twice.items);
}

}  // namespace
}  // namespace orrery
