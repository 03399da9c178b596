#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/arrangement/SortUndo.h"
#include "OrreryCore/testing/LayoutBuilders.h"
#include "OrreryCore/testing/RandomLayout.h"

namespace orrery {
namespace {

using testing::app;
using testing::describe;
using testing::folder;
using testing::layoutOf;
using testing::uuidFor;

// A name lookup over a fixed table; unknown IDs have no name.
auto namesFrom(std::map<std::string, std::string> table) {
  return [table = std::move(table)](const std::string& id) -> std::optional<std::string> {
    const auto found = table.find(id);
    if (found == table.end()) return std::nullopt;
    return found->second;
  };
}

TEST(LayoutSortedByName, FoldersFirstThenAppsEachFromAToZ) {
  Layout layout = layoutOf(
      {app("m"), folder("Zeta", {"z2", "z1"}), app("unknown.b"), app("a"), folder("alpha", {"q"}), app("k")},
      {"shy"});
  layout.version = 3;
  const auto names = namesFrom(
      {{"m", "Mail"}, {"a", "Xcode"}, {"k", "books"}, {"z1", "File 2"}, {"z2", "File 10"}, {"q", "Q"}});
  const Layout sorted = layout.sortedByName(names);
  // Apps without a name sort by their ID ("unknown.b" between "books" and
  // "Mail"); folder contents are put in the same order, numbers by value.
  EXPECT_EQ(describe(sorted), "[alpha: q] [Zeta: z1 z2] k m unknown.b a | hidden: shy");
  EXPECT_EQ(sorted.version, 3);
  EXPECT_EQ(sorted.hidden, layout.hidden);
}

TEST(LayoutSortedByName, TiesFallBackToIdentifiers) {
  // Names equal but for letter case: by app ID.
  const auto names = namesFrom({{"id.1", "Notes"}, {"id.2", "notes"}, {"id.3", "NOTES"}});
  EXPECT_EQ(describe(layoutOf({app("id.2"), app("id.3"), app("id.1")}).sortedByName(names)),
            "id.1 id.2 id.3");

  // Folders with equal names: by the UUID's text.
  const Uuid low = *Uuid::parse("00000000-0000-4000-8000-00000000000A");
  const Uuid high = *Uuid::parse("0A000000-0000-4000-8000-000000000000");
  const Layout folders = layoutOf({folder(high, "Games", {"h1", "h2"}), folder(low, "games", {"l1", "l2"})});
  const Layout sorted = folders.sortedByName(namesFrom({}));
  ASSERT_EQ(sorted.items.size(), 2u);
  EXPECT_EQ(sorted.items[0].asFolder()->id, low);
  EXPECT_EQ(sorted.items[1].asFolder()->id, high);
}

TEST(LayoutSortedByName, RandomArrangementsKeepEveryAppAndSortOnce) {
  testing::Random random(20261121);
  const auto universe = testing::appUniverse(60);
  // Names that collide often, so the ID tie-break is exercised.
  const auto names = [](const std::string& id) -> std::optional<std::string> {
    if (id.back() == '7') return std::nullopt;
    return std::string("App ") + id[id.size() - 1];
  };
  for (int round = 0; round < 200; ++round) {
    const Layout layout = testing::randomLayout(random, universe);
    const Layout sorted = layout.sortedByName(names);
    EXPECT_EQ(testing::appOccurrences(sorted), testing::appOccurrences(layout)) << describe(layout);
    EXPECT_EQ(sorted.items.size(), layout.items.size());
    // Sorting a sorted arrangement changes nothing.
    EXPECT_EQ(sorted.sortedByName(names), sorted) << describe(layout);
    // Folders come before every app.
    bool seenApp = false;
    for (const LayoutItem& item : sorted.items) {
      if (item.isApp()) seenApp = true;
      EXPECT_FALSE(seenApp && item.isFolder()) << describe(sorted);
    }
  }
}

TEST(SortUndo, OfferedOnlyWhileTheSortedArrangementIsUntouched) {
  const Layout before = layoutOf({app("b"), folder("F", {"c", "a"}), app("a2")});
  const SortUndo undo{before, before.sortedByName(namesFrom({}))};
  EXPECT_EQ(undo.restored(undo.after), before);

  // Moving one icon, an app hidden on another machine, a version bump: each
  // is a change since the sort that undoing would throw away.
  Layout moved = undo.after, merged = undo.after, newer = undo.after;
  moved.move(0, 1);
  merged.hidden.insert("elsewhere");
  newer.version = 2;
  for (const Layout& current : {moved, merged, newer}) {
    EXPECT_FALSE(undo.canUndo(current)) << describe(current);
    EXPECT_EQ(undo.restored(current), std::nullopt);
  }
}

}  // namespace
}  // namespace orrery
