#include <gtest/gtest.h>

#include <algorithm>

#include "OrreryCore/drag/GridDrag.h"
#include "OrreryCore/testing/LayoutBuilders.h"
#include "OrreryCore/testing/RandomLayout.h"

namespace orrery {
namespace {

using testing::app;
using testing::describe;
using testing::folder;
using testing::layoutOf;
using testing::uuidFor;
using Source = GridDrag::Source;

GridDrag start(const Layout& layout, Source source) {
  auto drag = GridDrag::make(layout, std::move(source));
  EXPECT_TRUE(drag);
  return drag ? *drag : GridDrag{Source::item(0), layout, app("?"), DragPreview(0, 0), {}};
}

std::string dropped(Layout layout, const GridDrag& drag) {
  drag.apply(layout);
  return describe(layout);
}

TEST(GridDrag, StartsOnlyFromAnItemOrAnAppOfThatFolder) {
  const Layout layout = layoutOf({app("a"), folder("F", {"b", "c"}), app("d"), folder("G", {"e", "f"})});
  EXPECT_FALSE(GridDrag::make(layout, Source::item(-1)));
  EXPECT_FALSE(GridDrag::make(layout, Source::item(4)));
  EXPECT_FALSE(GridDrag::make(layout, Source::folderApp("e", uuidFor("F"))));
  EXPECT_FALSE(GridDrag::make(layout, Source::folderApp("a", uuidFor("F"))));
  EXPECT_FALSE(GridDrag::make(Layout::empty(), Source::item(0)));

  const GridDrag item = start(layout, Source::item(1));
  EXPECT_EQ(item.dragged, folder("F", {"b", "c"}));
  EXPECT_EQ(item.remaining, (std::vector{app("a"), app("d"), folder("G", {"e", "f"})}));
  EXPECT_EQ(item.preview, DragPreview(3, 1));
  EXPECT_EQ(item.base, layout);
  EXPECT_EQ(item.previewItems(), layout.items);

  // The folder stays; the app opens a gap right after it.
  const GridDrag fromFolder = start(layout, Source::folderApp("f", uuidFor("G")));
  EXPECT_EQ(fromFolder.dragged, app("f"));
  EXPECT_EQ(fromFolder.remaining, layout.items);
  EXPECT_EQ(fromFolder.preview, DragPreview(4, 4));
  EXPECT_EQ(fromFolder.draggedSlot(), 4);
}

TEST(GridDrag, FoldersAreNeverMergedButAppsMergeWithAnything) {
  const Layout layout = layoutOf({app("a"), folder("F", {"b", "c"}), app("d"), app("e")});
  GridDrag folderDrag = start(layout, Source::item(1));
  folderDrag.hover(2, DropZone::merge);  // over d
  EXPECT_EQ(folderDrag.preview, DragPreview(3, 2));
  EXPECT_EQ(describe(layoutOf(folderDrag.previewItems())), "a d [F: b c] e");

  GridDrag appDrag = start(layout, Source::item(0));
  appDrag.hover(1, DropZone::merge);  // over the folder
  EXPECT_EQ(appDrag.preview.mergeTarget, 0);
  appDrag.hover(3, DropZone::before);  // before e
  appDrag.hover(0, DropZone::merge);   // the folder, now in front of the gap
  EXPECT_EQ(appDrag.preview.gap, 2);
  EXPECT_EQ(appDrag.preview.mergeTarget, 0);
  EXPECT_EQ(appDrag.mergeTargetSlot(), 0);
  appDrag.hover(3, DropZone::merge);  // over e
  EXPECT_EQ(appDrag.mergeTargetSlot(), 3);
  appDrag.hoverOutside(0, 35);
  EXPECT_EQ(appDrag.mergeTargetSlot(), std::nullopt);
  EXPECT_EQ(appDrag.preview.gap, 3);
}

TEST(GridDrag, TopLevelDropsMoveOrMergeWithTheTargetUnderThePointer) {
  const Layout layout = layoutOf({app("a"), app("b"), app("c"), folder("F", {"x", "y"})});
  GridDrag drag = start(layout, Source::item(0));
  EXPECT_EQ(dropped(layout, drag), describe(layout));  // back on its own place
  drag.hover(2, DropZone::after);                      // after c
  EXPECT_EQ(dropped(layout, drag), "b c a [F: x y]");
  EXPECT_EQ(dropped(layout, drag), describe(layoutOf(drag.previewItems())));

  // Targets behind the dragged item sit one further in the arrangement.
  drag.hover(1, DropZone::merge);  // c
  EXPECT_EQ(dropped(layout, drag), "b [New Folder: c a] [F: x y]");
  drag.hover(3, DropZone::merge);  // F
  EXPECT_EQ(dropped(layout, drag), "b c [F: x y a]");

  GridDrag backwards = start(layout, Source::item(2));
  backwards.hover(0, DropZone::merge);
  EXPECT_EQ(dropped(layout, backwards), "[New Folder: a c] b [F: x y]");

  // A merge target that the arrangement no longer has changes nothing.
  Layout shorter = layoutOf({app("a"), app("b")});
  drag.apply(shorter);
  EXPECT_EQ(describe(shorter), "a b");
}

TEST(GridDrag, FolderAppDropsTakeTheAppOutFirst) {
  const Layout layout = layoutOf({app("a"), folder("F", {"b", "c", "e"}), app("d"), folder("G", {"x", "y"})});
  GridDrag drag = start(layout, Source::folderApp("b", uuidFor("F")));
  EXPECT_EQ(dropped(layout, drag), "a [F: c e] b d [G: x y]");
  drag.hover(0, DropZone::before);
  EXPECT_EQ(dropped(layout, drag), "b a [F: c e] d [G: x y]");

  drag.hover(3, DropZone::merge);  // d
  EXPECT_EQ(dropped(layout, drag), "a [F: c e] [New Folder: d b] [G: x y]");
  drag.hover(4, DropZone::merge);  // G
  EXPECT_EQ(dropped(layout, drag), "a [F: c e] d [G: x y b]");
  drag.hover(2, DropZone::merge);  // its own folder
  EXPECT_EQ(dropped(layout, drag), describe(layout));

  // Leaving a two-app folder collapses it, which must not shift the target.
  const Layout pair = layoutOf({folder("F", {"b", "c"}), app("d"), folder("G", {"x", "y"})});
  GridDrag fromPair = start(pair, Source::folderApp("c", uuidFor("F")));
  fromPair.hover(3, DropZone::merge);  // G, behind the gap
  EXPECT_EQ(dropped(pair, fromPair), "b d [G: x y c]");
  fromPair.hover(2, DropZone::merge);  // d
  EXPECT_EQ(dropped(pair, fromPair), "b [New Folder: d c] [G: x y]");
  fromPair.hover(0, DropZone::before);
  EXPECT_EQ(dropped(pair, fromPair), "c b d [G: x y]");
}

// --- Randomized: the preview and the drop never lose or duplicate anything ---

// A consistent arrangement, sometimes with one folder cut down to one app or
// none, as a damaged file may hold them.
struct RandomCase {
  Layout layout;
  bool normalized = true;
};

RandomCase randomCase(testing::Random& rng) {
  RandomCase out;
  out.layout = testing::randomLayout(rng, testing::appUniverse(rng() % 30));
  if (rng() % 4 != 0) return out;
  for (auto& item : out.layout.items) {
    if (Folder* f = item.asFolder()) {
      f->appIDs.resize(rng() % 2);
      out.normalized = false;
      break;
    }
  }
  return out;
}

// Any top-level item or any app inside a folder.
Source randomSource(testing::Random& rng, const Layout& layout) {
  std::vector<Source> sources;
  for (std::size_t i = 0; i < layout.items.size(); ++i) {
    sources.push_back(Source::item(static_cast<Index>(i)));
    if (const Folder* f = layout.items[i].asFolder())
      for (const auto& id : f->appIDs) sources.push_back(Source::folderApp(id, f->id));
  }
  return sources[rng() % sources.size()];
}

void expectPreviewHoldsEverythingOnce(const GridDrag& drag) {
  ASSERT_EQ(drag.preview.remainingCount, static_cast<Index>(drag.remaining.size()));
  ASSERT_GE(drag.preview.gap, 0);
  ASSERT_LE(drag.preview.gap, drag.preview.remainingCount);
  std::vector<LayoutItem> shown = drag.previewItems();
  ASSERT_EQ(shown.size(), drag.remaining.size() + 1);
  EXPECT_EQ(shown[static_cast<std::size_t>(drag.draggedSlot())], drag.dragged);
  EXPECT_EQ(std::count(shown.begin(), shown.end(), drag.dragged), 1);
  if (const auto target = drag.preview.mergeTarget) {
    EXPECT_TRUE(drag.dragged.isApp());
    ASSERT_GE(*target, 0);
    ASSERT_LT(*target, drag.preview.remainingCount);
    const Index slot = *drag.mergeTargetSlot();
    EXPECT_NE(slot, drag.draggedSlot());
    EXPECT_EQ(shown[static_cast<std::size_t>(slot)], drag.remaining[static_cast<std::size_t>(*target)]);
  }
  shown.erase(shown.begin() + drag.draggedSlot());
  EXPECT_EQ(shown, drag.remaining);
}

// What the grid showed, with the app gone from the folder it left.
std::vector<LayoutItem> shownAfterLeaving(const GridDrag& drag) {
  std::vector<LayoutItem> items = drag.previewItems();
  const auto& source = *drag.source.asFolderApp();
  for (auto& item : items) {
    Folder* f = item.asFolder();
    if (!f || f->id != source.folder) continue;
    std::erase(f->appIDs, source.appID);
    if (f->appIDs.size() == 1) item = app(f->appIDs.front());
    break;
  }
  return items;
}

void expectDropMatchesPreview(const GridDrag& drag, const Layout& before, const Layout& after,
                              bool normalized) {
  EXPECT_EQ(testing::appOccurrences(after), testing::appOccurrences(before));
  EXPECT_EQ(after.hidden, before.hidden);
  const auto* fromFolder = drag.source.asFolderApp();
  if (!drag.preview.mergeTarget) {
    if (!fromFolder) {
      EXPECT_EQ(after.items, drag.previewItems());
    } else if (normalized) {
      EXPECT_EQ(after.items, shownAfterLeaving(drag));
    }
    return;
  }
  // A damaged file's empty or one-app folder may vanish when the app leaves
  // its own folder; the merge then degrades to taking the app out.
  if (!normalized) return;
  const LayoutItem& target = drag.remaining[static_cast<std::size_t>(*drag.preview.mergeTarget)];
  const std::string& draggedApp = *drag.dragged.appID();
  if (const Folder* f = target.asFolder()) {
    if (fromFolder && f->id == fromFolder->folder) {
      EXPECT_EQ(after, before);
    } else {
      EXPECT_EQ(after.folderID(draggedApp), f->id);
    }
  } else {
    const auto joined = after.folderID(draggedApp);
    ASSERT_TRUE(joined);
    EXPECT_EQ(after.folderID(*target.appID()), joined);
  }
}

TEST(GridDrag, RandomHoversKeepEveryItemAndEveryAppExactlyOnce) {
  testing::Random rng(20240611);
  for (int round = 0; round < 3000; ++round) {
    const RandomCase drawn = randomCase(rng);
    const Layout& layout = drawn.layout;
    if (layout.items.empty()) continue;
    SCOPED_TRACE("round " + std::to_string(round) + ": " + describe(layout));
    auto made = GridDrag::make(layout, randomSource(rng, layout));
    ASSERT_TRUE(made);
    GridDrag drag = *made;
    const auto slots = static_cast<unsigned>(drag.preview.count() + 4);
    for (auto steps = 1 + rng() % 8; steps > 0; --steps) {
      if (rng() % 6 == 0) {
        drag.hoverOutside(static_cast<Index>(rng() % 4) - 1, static_cast<Index>(rng() % 6));
      } else {
        drag.hover(static_cast<Index>(rng() % slots) - 2, static_cast<DropZone>(rng() % 3));
      }
      expectPreviewHoldsEverythingOnce(drag);
    }
    Layout result = layout;
    drag.apply(result);
    SCOPED_TRACE("dropped: " + describe(result));
    expectDropMatchesPreview(drag, layout, result, drawn.normalized);
  }
}

}  // namespace
}  // namespace orrery
