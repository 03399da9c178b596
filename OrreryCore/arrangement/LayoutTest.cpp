#include "OrreryCore/arrangement/Layout.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "OrreryCore/testing/LayoutBuilders.h"
#include "OrreryCore/testing/RandomLayout.h"

namespace orrery {
namespace {

using testing::app;
using testing::appInfo;
using testing::appInfos;
using testing::describe;
using testing::folder;
using testing::layoutOf;
using testing::uuidFor;

// --- Scans -----------------------------------------------------------------

TEST(LayoutReconcile, AppendsNewAppsByNameThenIDAndDropsVanishedOnes) {
  const Layout empty;
  const Layout first = empty.reconciled(
      {appInfo("z.calc", "Calculator"), appInfo("b.notes", "notes"), appInfo("a.notes", "Notes"),
       appInfo("c.app10", "App 10"), appInfo("c.app9", "App 9"), appInfo("a.notes", "Notes")},
      {});
  EXPECT_EQ(describe(first), "c.app9 c.app10 z.calc a.notes b.notes");

  // Known apps keep their places; the newcomer goes to the end.
  const Layout second = layoutOf({app("x"), folder("F", {"a", "b", "c"}), app("y")})
                            .reconciled(appInfos({"x", "c", "y", "new"}), {});
  EXPECT_EQ(describe(second), "x c y new");
  const Layout gone = layoutOf({app("x"), folder("F", {"a", "b", "c"})}).reconciled(appInfos({"x"}), {});
  EXPECT_EQ(describe(gone), "x");
}

TEST(LayoutReconcile, HiddenAndKeptApps) {
  const Layout layout = layoutOf({app("a"), app("kept"), app("b")}, {"shy", "gone"});
  const Layout result = layout.reconciled(appInfos({"a", "b", "shy"}), {"kept"});
  // A still-installed hidden app stays hidden and is not new; a vanished one
  // is forgotten; a kept app keeps its place although the scan missed it.
  EXPECT_EQ(describe(result), "a kept b | hidden: shy");
  EXPECT_EQ(result.version, layout.version);
}

TEST(LayoutReconcile, FolderKeepsIdentityWhileTwoAppsRemain) {
  const Layout layout = layoutOf({folder("F", {"a", "b", "c"}), app("d")});
  const Layout result = layout.reconciled(appInfos({"a", "c", "d"}), {});
  ASSERT_TRUE(result.items[0].isFolder());
  EXPECT_EQ(result.items[0].asFolder()->id, uuidFor("F"));
  EXPECT_EQ(describe(result), "[F: a c] d");
}

// --- Folders -----------------------------------------------------------------

TEST(LayoutFolders, MakeFolderByDropping) {
  Layout layout = layoutOf({app("A"), app("B"), app("C")});
  const auto id = layout.makeFolder(0, 2, "Pair");
  ASSERT_TRUE(id);
  EXPECT_EQ(describe(layout), "B [Pair: C A]");
  EXPECT_EQ(layout.items[1].asFolder()->id, *id);

  Layout backwards = layoutOf({app("A"), app("B"), app("C")});
  backwards.makeFolder(2, 0, "Pair");
  EXPECT_EQ(describe(backwards), "[Pair: A C] B");

  // Refused: same index, out of range, onto a folder.
  Layout refused = layoutOf({app("A"), folder("F", {"x", "y"})});
  const Layout before = refused;
  EXPECT_FALSE(refused.makeFolder(0, 0, "n"));
  EXPECT_FALSE(refused.makeFolder(0, 2, "n"));
  EXPECT_FALSE(refused.makeFolder(-1, 0, "n"));
  EXPECT_FALSE(refused.makeFolder(0, 1, "n"));
  EXPECT_EQ(refused, before);
}

TEST(LayoutFolders, MakeFolderFromSelection) {
  // The first selected app (in arrangement order) sits in a folder: the new
  // folder goes right after that folder, which collapses to its last app.
  Layout layout = layoutOf({app("a"), folder("Old", {"b", "c"}), app("d"), app("e")});
  const auto id = layout.makeFolder(AppIDSet{"e", "b"}, "New");
  ASSERT_TRUE(id);
  EXPECT_EQ(describe(layout), "a c [New: b e] d");

  Layout plain = layoutOf({app("a"), app("b"), app("c")});
  plain.makeFolder(AppIDSet{"c", "b", "hidden-or-unknown"}, "New");
  EXPECT_EQ(describe(plain), "a [New: b c]");

  Layout tooFew = layoutOf({app("a")}, {"h"});
  EXPECT_FALSE(tooFew.makeFolder(AppIDSet{"a", "h"}, "New"));
  EXPECT_EQ(describe(tooFew), "a | hidden: h");
}

TEST(LayoutFolders, MovingAppsIntoFolders) {
  Layout layout = layoutOf({app("a"), folder("F", {"b", "c"}), folder("G", {"d", "e"}), app("f")}, {"h"});
  layout.move(std::string("d"), uuidFor("F"));  // leaves G with one app: it collapses
  EXPECT_EQ(describe(layout), "a [F: b c d] e f | hidden: h");
  layout.move(std::string("h"), uuidFor("F"));  // hidden apps are not moved this way
  layout.move(std::string("b"), uuidFor("F"));  // already there
  layout.move(std::string("a"), uuidFor("nope"));
  EXPECT_EQ(describe(layout), "a [F: b c d] e f | hidden: h");

  layout.move(AppIDSet{"f", "a", "c", "h"}, uuidFor("F"));
  EXPECT_EQ(describe(layout), "[F: b c d a f] e | hidden: h");
}

TEST(LayoutFolders, AddTakeOutRemoveReorderRenameDissolve) {
  Layout layout = layoutOf({app("a"), folder("F", {"b", "c"}), app("d")});
  layout.add(2, uuidFor("F"));
  EXPECT_EQ(describe(layout), "a [F: b c d]");
  layout.add(1, uuidFor("F"));  // a folder is not an app
  layout.add(5, uuidFor("F"));
  EXPECT_EQ(describe(layout), "a [F: b c d]");

  layout.moveInFolder(uuidFor("F"), 2, 0);
  EXPECT_EQ(describe(layout), "a [F: d b c]");
  layout.moveInFolder(uuidFor("F"), 0, 3);
  EXPECT_EQ(describe(layout), "a [F: d b c]");

  layout.takeOut("b", uuidFor("F"));
  EXPECT_EQ(describe(layout), "a [F: d c] b");
  layout.remove("d", uuidFor("F"), -7);  // clamped to the front; F collapses to c
  EXPECT_EQ(describe(layout), "d a c b");
  layout.remove("c", uuidFor("F"), 0);  // no such folder any more
  EXPECT_EQ(describe(layout), "d a c b");

  Layout named = layoutOf({folder("F", {"x", "y", "z"})});
  named.renameFolder(uuidFor("F"), "");  // stored as given
  EXPECT_EQ(named.items[0].asFolder()->name, "");
  named.dissolveFolder(uuidFor("F"));
  EXPECT_EQ(describe(named), "x y z");
}

TEST(LayoutFolders, TakeOutOfTwoAppFolderLandsAfterTheSurvivor) {
  Layout layout = layoutOf({app("a"), app("b"), app("c"), folder("F", {"x", "y"}), app("d")});
  layout.takeOut("x", uuidFor("F"));
  EXPECT_EQ(describe(layout), "a b c y x d");
}

TEST(LayoutFolders, NormalizedNames) {
  EXPECT_EQ(Folder::normalizedName("  Games \n"), "Games");
  EXPECT_EQ(Folder::normalizedName("\xC2\xA0Spiele\xE3\x80\x80"),
            "Spiele");  // no-break and ideographic spaces
  EXPECT_EQ(Folder::normalizedName(" \t\n "), "New Folder");
  EXPECT_EQ(Folder::normalizedName(""), Folder::defaultName());
  EXPECT_EQ(Folder::normalizedName("Two  words"), "Two  words");
}

// --- Top level and hiding --------------------------------------------------------

TEST(LayoutTopLevel, MoveHideUnhide) {
  Layout layout = layoutOf({app("a"), app("b"), app("c")});
  layout.move(0, 2);
  EXPECT_EQ(describe(layout), "b c a");
  for (auto [from, to] : {std::pair<Index, Index>{1, 1}, {-1, 0}, {0, 3}}) layout.move(from, to);
  EXPECT_EQ(describe(layout), "b c a");

  Layout withFolder = layoutOf({folder("F", {"a", "b"}), app("c")});
  withFolder.hide("a");
  EXPECT_EQ(describe(withFolder), "b c | hidden: a");
  withFolder.unhide("a");
  EXPECT_EQ(describe(withFolder), "b c a");
  withFolder.unhide("a");  // not hidden: nothing
  EXPECT_EQ(describe(withFolder), "b c a");

  // An inconsistent file: hidden and in a folder. Unhiding only clears hidden.
  Layout inconsistent = layoutOf({folder("F", {"a", "b"})}, {"a"});
  inconsistent.unhide("a");
  EXPECT_EQ(describe(inconsistent), "[F: a b]");
}

TEST(LayoutReading, OrderedAndReferencedIDs) {
  const Layout layout = layoutOf({app("c"), folder("F", {"b", "z"}), app("a")}, {"h"});
  EXPECT_EQ(layout.orderedAppIDs({"a", "b", "c", "h", "unknown"}), (std::vector<std::string>{"c", "b", "a"}));
  EXPECT_EQ(layout.referencedAppIDs(), (AppIDSet{"a", "b", "c", "h", "z"}));
  EXPECT_EQ(layout.folderID("z"), uuidFor("F"));
  EXPECT_FALSE(layout.folderID("c"));
}

// --- Projection and embedding ---------------------------------------------------

TEST(LayoutProjection, CollapsesAndReExpandsFolders) {
  const Layout shared =
      layoutOf({app("a"), folder("F", {"x", "remote"}), app("remote2"), app("b")}, {"h", "rh"});
  const AppIDSet installed{"a", "x", "b", "h"};
  const LayoutProjection projection = shared.projected(installed);
  EXPECT_EQ(describe(projection.visible), "a x b | hidden: h");
  EXPECT_EQ(projection.collapsed.at("x"), uuidFor("F"));

  // The user moves the collapsed app to the front and b before it: the folder
  // comes back with its remote member, remote2 follows the folder's old place.
  Layout edited = projection.visible;
  edited.move(1, 0);
  edited.move(2, 0);
  const Layout merged = shared.embedding(edited, projection, installed);
  EXPECT_EQ(describe(merged), "b [F: x remote] remote2 a | hidden: h rh");
}

TEST(LayoutProjection, InvisibleAppsAndFoldersFollowTheirOldNeighbour) {
  const auto embedded = [](const Layout& shared, const AppIDSet& installed, auto edit) {
    const auto projection = shared.projected(installed);
    Layout edited = projection.visible;
    edit(edited);
    return describe(shared.embedding(edited, projection, installed));
  };
  const Layout shared = layoutOf({app("a"), app("r1"), app("r2"), app("b"), app("c")});
  EXPECT_EQ(embedded(shared, {"a", "b", "c"}, [](Layout& l) { l.move(0, 2); }), "b c a r1 r2");
  // The anchor is gone: r1 r2 go to the front.
  EXPECT_EQ(embedded(shared, {"a", "b", "c"},
                     [](Layout& l) {
                       l.move(0, 2);
                       l.hide("a");
                     }),
            "r1 r2 b c | hidden: a");
  // A folder dissolved here keeps its remote member, at the front as F had nothing before it.
  EXPECT_EQ(embedded(layoutOf({folder("F", {"x", "y", "remote"}), app("b")}), {"x", "y", "b"},
                     [](Layout& l) { l.dissolveFolder(uuidFor("F")); }),
            "[F: remote] x y b");
}

TEST(LayoutProjection, PrunedFiltersHiddenToo) {
  const Layout layout = layoutOf({folder("F", {"a", "b", "c"}), app("d")}, {"h1", "h2"});
  EXPECT_EQ(describe(layout.pruned({"a", "d", "h2"})), "a d | hidden: h2");
}

// --- JSON --------------------------------------------------------------------

TEST(LayoutJson, ShapeIsExact) {
  const Uuid id = *Uuid::parse("e621e1f8-c36c-495a-93fc-0c247a3e6e5f");
  const Layout layout = layoutOf({app("com.apple.Safari"), folder(id, "Dev", {"a", "b"})}, {"z", "h"});
  const auto expected = nlohmann::json::parse(R"({
    "hidden": ["h", "z"], "version": 1,
    "items": [{"app": {"_0": "com.apple.Safari"}},
              {"folder": {"_0": {"appIDs": ["a", "b"], "id": "E621E1F8-C36C-495A-93FC-0C247A3E6E5F", "name": "Dev"}}}]})");
  EXPECT_EQ(layout.toJson(), expected);
  EXPECT_EQ(layout.encoded(), expected.dump(2));
}

const char* const kRejected[] = {
    R"({"version":1,"hidden":[],"items":[{"app":{"_0":"x"},"folder":{"_0":{}}}]})",
    R"({"version":1,"hidden":[],"items":[{}]})",
    R"({"version":1,"hidden":[],"items":[{"widget":{"_0":"x"}}]})",
    R"({"version":1,"items":[]})",
    R"({"version":"1","hidden":[],"items":[]})",
    R"({"version":1.5,"hidden":[],"items":[]})",
    R"({"version":1,"hidden":[3],"items":[]})",
    R"({"version":1,"hidden":[],"items":[{"folder":{"_0":{"id":"nope","name":"n","appIDs":[]}}}]})",
    R"({"version":1,"hidden":[],"items":[{"folder":{"_0":{"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","appIDs":[]}}}]})",
    "{\"version\":1,\"hidden\":[],\"items\":[",
    "[]",
};
const char* const kLenient =
    R"({"version":-9,"hidden":[],"items":[{"app":{"_0":"x","extra":1}}],"more":true})";

// The arrangement file is decoded as it is parsed; records that embed an
// arrangement hand over their JSON tree, which keeps only the last of
// repeated keys and orders keys its own way. Both must accept and reject the
// same documents.
void expectDecodersAgree(const std::string& bytes) {
  const auto streamed = Layout::decode(bytes);
  const auto dom = nlohmann::json::parse(bytes, nullptr, false);
  const auto viaDom = dom.is_discarded() ? Expected<Layout, DecodingError>(Unexpected(DecodingError{}))
                                         : Layout::fromJson(dom);
  ASSERT_EQ(streamed.has_value(), viaDom.has_value())
      << bytes << "\nstreamed: " << (streamed ? "ok" : streamed.error().description())
      << "\ndom: " << (viaDom ? "ok" : viaDom.error().description());
  if (streamed) {
    EXPECT_EQ(*streamed, *viaDom) << bytes;
  }
}

TEST(LayoutJson, StrictDecoding) {
  for (const char* twoKeys : {kRejected[0], kRejected[1]}) {  // two keys, no key
    const auto result = Layout::decode(twoKeys);
    ASSERT_FALSE(result) << twoKeys;
    EXPECT_EQ(result.error().description(),
              "typeMismatch at items[0]: Invalid number of keys found, expected one.");
  }
  // Rejections; that the DOM decoder agrees is checked below.
  for (const char* bad : kRejected) EXPECT_FALSE(Layout::decode(bad)) << bad;
  // Extra keys are ignored; version is any 64-bit integer.
  const auto lenient = Layout::decode(kLenient);
  ASSERT_TRUE(lenient);
  EXPECT_EQ(lenient->version, -9);
}

// --- Properties over random edits -----------------------------------------------

void expectConsistent(const Layout& layout, const std::string& context, bool normalized = true) {
  for (const auto& [id, count] : testing::appOccurrences(layout))
    EXPECT_EQ(count, 1) << id << " after " << context;
  for (const auto& item : layout.items)
    if (const Folder* f = item.asFolder(); f && normalized) {
      EXPECT_GE(f->appIDs.size(), 2u) << describe(layout) << " after " << context;
    }
}

TEST(LayoutProperties, RandomEditsKeepEveryAppOnceAndRoundTrip) {
  const auto universe = testing::appUniverse(40);
  for (std::uint64_t seed = 1; seed <= 60; ++seed) {
    testing::Random random(seed);
    Layout layout = testing::randomLayout(random, universe);
    for (int step = 0; step < 150; ++step) {
      const Layout before = layout;
      const std::string operation = testing::applyRandomOperation(layout, random, universe);
      const std::string context =
          operation + " (seed " + std::to_string(seed) + ", step " + std::to_string(step) + ")";
      expectConsistent(layout, context);
      // Only scans bring apps into the grid; hide() may name any app.
      if (operation.rfind("reconciled", 0) != 0) {
        for (const auto& [id, count] : testing::appOccurrences(layout)) {
          EXPECT_TRUE(before.referencedAppIDs().contains(id) || layout.hidden.contains(id))
              << id << " appeared after " << context;
        }
      }

      const std::string bytes = layout.encoded();
      const auto decoded = Layout::decode(bytes);
      ASSERT_TRUE(decoded) << context;
      ASSERT_EQ(*decoded, layout) << context;
      ASSERT_EQ(decoded->encoded(), bytes) << context;
      if (HasFailure()) return;
    }
  }
}

TEST(LayoutProperties, EmbeddingKeepsEditsAndInvisibleApps) {
  const auto universe = testing::appUniverse(30);
  for (std::uint64_t seed = 1; seed <= 200; ++seed) {
    testing::Random random(seed);
    Layout shared = testing::randomLayout(random, universe);
    for (int i = 0; i < 10; ++i) testing::applyRandomOperation(shared, random, universe);
    const AppIDSet installed = testing::randomSubset(random, universe, 0.6);
    const LayoutProjection projection = shared.projected(installed);
    ASSERT_EQ(shared.embedding(projection.visible, projection, installed), shared) << "seed " << seed;

    // Edit the view with operations on installed apps only.
    std::vector<std::string> installedList(installed.begin(), installed.end());
    std::sort(installedList.begin(), installedList.end());
    if (installedList.empty()) continue;
    Layout edited = projection.visible;
    for (int i = 0; i < 8; ++i) testing::applyRandomOperation(edited, random, installedList, false);
    const Layout result = shared.embedding(edited, projection, installed);

    // Not normalized: a folder may be left holding only apps this machine
    // does not have, and it must keep its identity for the machines that do.
    expectConsistent(result, "embedding, seed " + std::to_string(seed), false);
    // Exactly the edited view's apps plus the invisible ones of the shared arrangement.
    AppIDSet expected = edited.referencedAppIDs();
    for (const auto& id : shared.referencedAppIDs())
      if (!installed.contains(id)) expected.insert(id);
    EXPECT_EQ(result.referencedAppIDs(), expected) << "seed " << seed;
    // Seen from this machine again, the result is the edit (up to folders the
    // edit left with one visible app, which the view shows collapsed).
    Layout normalizedEdit = edited;
    normalizedEdit.normalizeFolders();
    EXPECT_EQ(describe(result.projected(installed).visible), describe(normalizedEdit)) << "seed " << seed;
    if (HasFailure()) return;
  }
}

TEST(LayoutJson, FileAndTreeFormsAgree) {
  const char* documents[] = {
      R"({"version":1,"hidden":[],"items":[]})",
      R"({"version":1,"hidden":["a","a"],"items":[],"items":[{"app":{"_0":"x"}}]})",  // last "items" wins
      R"({"items":[{"app":{"_0":"x"},"app":{"_0":"y"}}],"version":2,"hidden":[]})",   // "app" twice: one key
      R"({"version":1,"hidden":[],"items":[{"app":{"_1":"x"}}]})",
      R"({"version":1,"hidden":[],"items":[{"app":{"_0":null}}]})",
      R"({"version":null,"hidden":[],"items":[]})",
      R"({"version":1,"hidden":[],"items":[null]})",
      R"({"version":1e3,"hidden":[],"items":[]})",
      R"({"version":18446744073709551615,"hidden":[],"items":[]})",
      R"({"version":-1,"hidden":[],"items":[],"extra":{"deep":[[{"items":5}]]}})",
      R"({"version":1,"hidden":[],"items":[{"folder":{"_0":{"id":"e621e1f8-c36c-495a-93fc-0c247a3e6e5f","name":"n","appIDs":["a","b"],"appIDs":["c"],"x":[1]}}}]})",
      R"({"version":1,"hidden":[],"items":[{"folder":{"_0":{"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","name":5,"appIDs":[]}}}]})",
      R"({"version":1,"hidden":[],"items":[{"folder":{"_0":"flat"}}]})",
      R"({"version":1,"hidden":{},"items":[]})",
      R"([{"version":1,"hidden":[],"items":[]}])",
      R"({"version":1,"hidden":[],"items":[]} trailing)",
      "",
  };
  for (const char* document : documents) expectDecodersAgree(document);
  for (const char* document : kRejected) expectDecodersAgree(document);
  expectDecodersAgree(kLenient);

  // Ignored values of any depth, far beyond what recursion could walk.
  const std::string deep = std::string(200'000, '[') + std::string(200'000, ']');
  expectDecodersAgree(R"({"version":1,"hidden":[],"items":[],"extra":)" + deep + "}");
  EXPECT_TRUE(Layout::decode(R"({"version":1,"hidden":[],"items":[],"extra":)" + deep + "}"));
}

}  // namespace
}  // namespace orrery
