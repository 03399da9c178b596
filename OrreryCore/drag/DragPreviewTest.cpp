#include <gtest/gtest.h>

#include <limits>

#include "OrreryCore/drag/DragPreview.h"

namespace orrery {
namespace {

DragPreview previewWith(Index remaining, Index gap, std::optional<Index> mergeTarget = std::nullopt) {
  DragPreview preview(remaining, gap);
  preview.mergeTarget = mergeTarget;
  return preview;
}

TEST(DragPreview, ClampsOnConstructionAndMapsSlotsAroundTheGap) {
  EXPECT_EQ(DragPreview(-1, 5), previewWith(0, 0));
  EXPECT_EQ(DragPreview(4, 9).gap, 4);
  EXPECT_EQ(DragPreview(4, -2).gap, 0);

  const DragPreview preview(4, 2);
  EXPECT_EQ(preview.count(), 5);
  const std::optional<Index> shown[] = {std::nullopt, 0, 1, std::nullopt, 2, 3, std::nullopt};
  for (Index slot = -1; slot <= 5; ++slot) EXPECT_EQ(preview.remainingIndex(slot), shown[slot + 1]) << slot;
  for (Index i = 0; i < preview.remainingCount; ++i) EXPECT_EQ(preview.remainingIndex(preview.slot(i)), i);
  EXPECT_EQ(preview.slot(2), 3);
}

TEST(DragPreview, HoverMovesTheGapOrPicksTheShownItemForAMerge) {
  struct Case {
    Index gap;
    std::optional<Index> merge;
    Index slot;
    DropZone zone;
    Index mergeable;  // the one remaining index canMerge accepts
    Index wantGap;
    std::optional<Index> wantMerge;
  };
  const Case cases[] = {
      {3, {}, 0, DropZone::after, 0, 1, {}},
      {2, {}, 4, DropZone::before, 3, 3, {}},  // slot 4 shows item 3
      {2, {}, 5, DropZone::after, 4, 5, {}},
      {2, 3, -1, DropZone::before, 3, 2, 3},  // negative slots change nothing
      {2, 3, 2, DropZone::merge, 2, 2, {}},   // over the gap itself
      {2, 3, 6, DropZone::before, 3, 5, {}},  // beyond the last slot
      {2, 3, 1, DropZone::after, 3, 2, {}},
      {1, {}, 3, DropZone::merge, 2, 1, 2},  // canMerge is asked about the item, not the slot
      {1, {}, 0, DropZone::merge, 0, 1, 0},
      {1, {}, 4, DropZone::merge, 9, 4, {}},  // refused: the gap opens on the slot itself
      {3, 2, 1, DropZone::merge, 9, 1, {}},
  };
  for (const Case& c : cases) {
    DragPreview preview = previewWith(5, c.gap, c.merge);
    preview.hover(c.slot, c.zone, [&](Index r) { return r == c.mergeable; });
    EXPECT_EQ(preview, previewWith(5, c.wantGap, c.wantMerge)) << "gap " << c.gap << " slot " << c.slot;
  }
  DragPreview noPredicate(5, 1);
  noPredicate.hover(3, DropZone::merge, nullptr);
  EXPECT_EQ(noPredicate, previewWith(5, 3));
}

TEST(DragPreview, HoverOutsideGoesToTheLastSlotOfThePageOrTheEnd) {
  DragPreview preview = previewWith(50, 3, 7);
  preview.hoverOutside(1, 35);
  EXPECT_EQ(preview, previewWith(50, 50));
  preview = DragPreview(80, 3);
  preview.hoverOutside(1, 35);
  EXPECT_EQ(preview.gap, 69);
  preview.hoverOutside(-4, 35);  // negative pages count as the first
  EXPECT_EQ(preview.gap, 34);
  preview.hoverOutside(0, 0);  // a page holds at least one slot
  EXPECT_EQ(preview.gap, 0);
  constexpr Index kHuge = std::numeric_limits<Index>::max();
  preview.hoverOutside(kHuge, 2);
  EXPECT_EQ(preview.gap, 80);
  preview.hoverOutside(3, kHuge);
  EXPECT_EQ(preview.gap, 80);
}

}  // namespace
}  // namespace orrery
