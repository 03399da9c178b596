#include "OrreryCore/arrangement/LayoutMerge.h"

#include <gtest/gtest.h>

#include <string>
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

using Keys = std::vector<std::string>;

Keys order(const Keys* base, const Keys* local, const Keys* remote, bool localIsNewer) {
  return LayoutMerge::Sides::order(base, local, remote, localIsNewer,
                                   [](const std::string&) { return true; });
}

// An app's place, found the plain way, for checking the merge from outside.
std::string placeOf(const Layout& layout, const std::string& id) {
  if (layout.hidden.contains(id)) return "hidden";
  for (const auto& item : layout.items) {
    if (const auto* appID = item.appID()) {
      if (*appID == id) return "top";
    } else {
      const Folder& f = *item.asFolder();
      for (const auto& member : f.appIDs)
        if (member == id) return "in " + f.id.text();
    }
  }
  return "absent";
}

// --- Orders ------------------------------------------------------------------

TEST(LayoutMergeSides, ReorderedIgnoresAdditionsAndRemovals) {
  const Keys base{"a", "b", "c"};
  EXPECT_FALSE(LayoutMerge::Sides::reordered(Keys{"a", "x", "c"}, base));
  EXPECT_FALSE(LayoutMerge::Sides::reordered(Keys{"y", "a", "b", "c", "z"}, base));
  EXPECT_FALSE(LayoutMerge::Sides::reordered(Keys{}, base));
  EXPECT_TRUE(LayoutMerge::Sides::reordered(Keys{"c", "a"}, base));
  EXPECT_TRUE(LayoutMerge::Sides::reordered(Keys{"a", "c", "x", "b"}, base));
}

TEST(LayoutMergeSides, WhichSideIsFollowed) {
  const Keys base{"a", "b", "c", "d"};
  const Keys unchanged = base;
  const Keys remoteOrder{"d", "c", "b", "a"};
  const Keys localOrder{"b", "a", "d", "c"};
  // Unchanged local: remote's order, whoever is newer.
  EXPECT_EQ(order(&base, &unchanged, &remoteOrder, true), remoteOrder);
  // Unchanged remote: local's order, whoever is newer.
  EXPECT_EQ(order(&base, &localOrder, &unchanged, false), localOrder);
  // Both reordered: the newer side.
  EXPECT_EQ(order(&base, &localOrder, &remoteOrder, true), localOrder);
  EXPECT_EQ(order(&base, &localOrder, &remoteOrder, false), remoteOrder);
  // Only one side reordered, the other only added: the reordering side, with
  // the addition next to its old predecessor (which the reordering moved).
  const Keys added{"a", "b", "c", "e", "d"};
  EXPECT_EQ(order(&base, &added, &remoteOrder, true), (Keys{"d", "c", "e", "b", "a"}));
  // Neither reordered, both added: the newer side's order, the other's
  // additions embedded; one with no predecessor goes to the front.
  const Keys front{"f", "a", "b", "c", "d"};
  EXPECT_EQ(order(&base, &added, &front, false), (Keys{"f", "a", "b", "c", "e", "d"}));
  EXPECT_EQ(order(&base, &added, &front, true), (Keys{"f", "a", "b", "c", "e", "d"}));
}

TEST(LayoutMergeSides, MissingSidesDuplicatesAndBelonging) {
  const Keys list{"a", "b"};
  EXPECT_EQ(order(nullptr, nullptr, &list, true), list);
  EXPECT_EQ(order(&list, &list, nullptr, false), list);
  EXPECT_EQ(order(&list, nullptr, nullptr, true), Keys{});
  // A key listed twice (or offered by both sides) is kept once, first place.
  const Keys twice{"a", "b", "a"};
  const Keys other{"a", "c", "c", "b"};
  EXPECT_EQ(order(nullptr, &twice, &other, true), (Keys{"a", "c", "b"}));
  // Only belonging keys, from either side; d follows c, its nearest kept
  // predecessor on its side.
  const Keys base{"a", "b", "c"};
  const Keys local{"c", "b", "a"};
  const Keys remote{"a", "b", "c", "d"};
  EXPECT_EQ(LayoutMerge::Sides::order(&base, &local, &remote, true,
                                      [](const std::string& key) { return key != "b"; }),
            (Keys{"c", "d", "a"}));
}

// --- Places, folders, names ----------------------------------------------------

TEST(LayoutMerge, OneSidedChangesWinOverUnchanged) {
  const Layout base = layoutOf({app("a"), app("b"), folder("F", {"c", "d", "e"}), app("f")});
  // Local removed a; remote took e out of F and hid f.
  const Layout local = layoutOf({app("b"), folder("F", {"c", "d", "e"}), app("f")});
  const Layout remote = layoutOf({app("a"), app("b"), folder("F", {"c", "d"}), app("e")}, {"f"});
  for (const bool localIsNewer : {true, false}) {
    EXPECT_EQ(describe(LayoutMerge::merge(base, local, remote, localIsNewer)), "b [F: c d] e | hidden: f");
  }
}

TEST(LayoutMerge, ConflictsFollowTheNewerSideButRemovalsNeverWinOverMoves) {
  const Layout base = layoutOf({app("a"), app("b"), app("c"), folder("G", {"x", "y"})});
  // a: into G here, hidden there. b: hidden here, removed there. c: removed
  // here, into G there.
  const Layout local = layoutOf({folder("G", {"x", "y", "a"})}, {"b"});
  const Layout remote = layoutOf({folder("G", {"x", "y", "c"})}, {"a"});
  EXPECT_EQ(describe(LayoutMerge::merge(base, local, remote, true)), "[G: x y c a] | hidden: b");
  EXPECT_EQ(describe(LayoutMerge::merge(base, local, remote, false)), "[G: x y c] | hidden: a b");
}

TEST(LayoutMerge, FolderNamesAndSurvival) {
  const Layout base =
      layoutOf({folder("F", {"a", "b"}), folder("G", {"c", "d"}), folder("H", {"e", "f"}), app("x")});
  Layout local = base;
  local.renameFolder(uuidFor("F"), "Games");
  local.dissolveFolder(uuidFor("G"));
  local.renameFolder(uuidFor("H"), "Mine");
  Layout remote = base;
  remote.move("x", uuidFor("G"));
  remote.renameFolder(uuidFor("H"), "Theirs");

  // F: only local renamed it. G: dissolved here, but remote put x into it, so
  // it survives with x alone (not normalized). H: renamed on both sides.
  const Layout newer = LayoutMerge::merge(base, local, remote, true);
  EXPECT_EQ(describe(newer), "[Games: a b] [G: x] c d [Mine: e f]");
  EXPECT_EQ(describe(LayoutMerge::merge(base, local, remote, false)),
            "[Games: a b] c d [G: x] [Theirs: e f]");
  ASSERT_TRUE(newer.items[1].isFolder());
  EXPECT_EQ(newer.items[1].asFolder()->id, uuidFor("G"));

  // A folder one side dissolved and the other left alone is gone.
  Layout dissolved = base;
  dissolved.dissolveFolder(uuidFor("H"));
  EXPECT_EQ(describe(LayoutMerge::merge(base, base, dissolved, true)), "[F: a b] [G: c d] e f x");
}

TEST(LayoutMerge, NewFolderOnlyOneSideHasAndVersion) {
  const Layout base = layoutOf({app("a"), app("b"), app("c"), app("d")});
  Layout local = base;
  local.makeFolder(AppIDSet{"b", "c"}, "Pair");
  Layout remote = base;
  remote.move(0, 3);
  remote.version = 2;
  // The new folder keeps its place after a (its predecessor here), while the
  // top level follows remote, the only side that reordered.
  const Layout merged = LayoutMerge::merge(base, local, remote, true);
  EXPECT_EQ(describe(merged), "d a [Pair: b c]");
  EXPECT_EQ(merged.version, 2);
}

TEST(LayoutMerge, DamagedSidesStillGiveEveryAppOnePlace) {
  // Duplicates that the operations never make: an app hidden and shown, an
  // app in two folders, a folder UUID twice.
  const Layout base = layoutOf({app("a")});
  const Layout local = layoutOf({app("a"), folder("F", {"b", "c"}), folder("F", {"d", "b"})}, {"a"});
  const Layout remote = layoutOf({app("a"), folder("G", {"c", "e"}), app("e")});
  const Layout merged = LayoutMerge::merge(base, local, remote, true);
  for (const auto& [id, count] : testing::appOccurrences(merged)) EXPECT_EQ(count, 1) << id;
  EXPECT_EQ(describe(merged), "[G: e] [F: b c d] | hidden: a");
}

// --- Properties over random edits of a common base ---------------------------

struct Triple {
  Layout base, local, remote;
};

Triple randomTriple(testing::Random& random, const std::vector<std::string>& universe) {
  Triple triple;
  triple.base = testing::randomLayout(random, universe);
  triple.local = triple.base;
  triple.remote = triple.base;
  const auto edit = [&](Layout& layout) {
    const std::size_t edits = std::uniform_int_distribution<std::size_t>(0, 8)(random);
    for (std::size_t i = 0; i < edits; ++i) testing::applyRandomOperation(layout, random, universe);
  };
  edit(triple.local);
  edit(triple.remote);
  return triple;
}

TEST(LayoutMergeProperties, EveryAppOncePlacedByTheTable) {
  const auto universe = testing::appUniverse(24);
  for (std::uint64_t seed = 0; seed < 2000; ++seed) {
    testing::Random random(seed);
    const Triple t = randomTriple(random, universe);
    const bool localIsNewer = seed % 2 == 0;
    const Layout merged = LayoutMerge::merge(t.base, t.local, t.remote, localIsNewer);
    SCOPED_TRACE("seed " + std::to_string(seed) + "\nbase   " + describe(t.base) + "\nlocal  " +
                 describe(t.local) + "\nremote " + describe(t.remote) + "\nmerged " + describe(merged));

    for (const auto& [id, count] : testing::appOccurrences(merged)) ASSERT_EQ(count, 1) << id;
    for (const auto& item : merged.items) {
      if (const Folder* f = item.asFolder()) {
        ASSERT_FALSE(f->appIDs.empty());
      }
    }

    AppIDSet all = t.base.referencedAppIDs();
    for (const Layout* side : {&t.local, &t.remote}) {
      const AppIDSet ids = side->referencedAppIDs();
      all.insert(ids.begin(), ids.end());
    }
    for (const auto& id : all) {
      const std::string b = placeOf(t.base, id), l = placeOf(t.local, id), r = placeOf(t.remote, id);
      const std::string m = placeOf(merged, id);
      if (l == r) {
        ASSERT_EQ(m, l) << id;
      } else if (l == b) {
        ASSERT_EQ(m, r) << id;
      } else if (r == b) {
        ASSERT_EQ(m, l) << id;
      } else if (l == "absent" || r == "absent") {
        ASSERT_NE(m, "absent") << id << ": a removal beat a move";
      } else {
        ASSERT_EQ(m, localIsNewer ? l : r) << id;
      }
    }
  }
}

TEST(LayoutMergeProperties, IdentitiesAndSymmetry) {
  const auto universe = testing::appUniverse(24);
  for (std::uint64_t seed = 0; seed < 1000; ++seed) {
    testing::Random random(seed + 100000);
    const Triple t = randomTriple(random, universe);
    SCOPED_TRACE("seed " + std::to_string(seed) + "\nbase   " + describe(t.base) + "\nlocal  " +
                 describe(t.local) + "\nremote " + describe(t.remote));
    for (const bool newer : {true, false}) {
      ASSERT_EQ(LayoutMerge::merge(t.base, t.local, t.local, newer), t.local);
      ASSERT_EQ(LayoutMerge::merge(t.base, t.base, t.remote, newer), t.remote);
      ASSERT_EQ(LayoutMerge::merge(t.base, t.local, t.base, newer), t.local);
      ASSERT_EQ(LayoutMerge::merge(t.base, t.local, t.remote, newer),
                LayoutMerge::merge(t.base, t.remote, t.local, !newer));
    }
  }
}

}  // namespace
}  // namespace orrery
