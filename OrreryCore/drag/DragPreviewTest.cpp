#include <gtest/gtest.h>

#include <limits>

#include "drag/DragPreview.h"

namespace orrery {
namespace {

const auto kAlways = [](Index) { return true; };
const auto kNever = [](Index) { return false; };

DragPreview previewWith(Index remaining, Index gap, std::optional<Index> mergeTarget = std::nullopt) {
  DragPreview preview(remaining, gap);
  preview.mergeTarget = mergeTarget;
  return preview;
}

TEST(DragPreview, ConstructionClampsCountAndGap) {
  const DragPreview negative(-1, 5);
  EXPECT_EQ(negative.remainingCount, 0);
  EXPECT_EQ(negative.gap, 0);
  EXPECT_EQ(negative.count(), 1);
  EXPECT_EQ(DragPreview(4, 9).gap, 4);
  EXPECT_EQ(DragPreview(4, -2).gap, 0);
  EXPECT_FALSE(DragPreview(4, 2).mergeTarget);
}

TEST(DragPreview, SlotsSkipTheGap) {
  const DragPreview preview(4, 2);
  EXPECT_EQ(preview.remainingIndex(0), 0);
  EXPECT_EQ(preview.remainingIndex(1), 1);
  EXPECT_EQ(preview.remainingIndex(2), std::nullopt);
  EXPECT_EQ(preview.remainingIndex(3), 2);
  EXPECT_EQ(preview.remainingIndex(4), 3);
  EXPECT_EQ(preview.remainingIndex(5), std::nullopt);
  EXPECT_EQ(preview.remainingIndex(-1), std::nullopt);
  EXPECT_EQ(preview.slot(1), 1);
  EXPECT_EQ(preview.slot(2), 3);
  for (Index i = 0; i < preview.remainingCount; ++i) EXPECT_EQ(preview.remainingIndex(preview.slot(i)), i);
}

TEST(DragPreview, HoverBeforeAndAfterMovesTheGapAroundTheShownItem) {
  DragPreview preview(5, 3);
  preview.hover(0, DropZone::after, kAlways);
  EXPECT_EQ(preview.gap, 1);
  preview = DragPreview(5, 2);
  preview.hover(4, DropZone::before, kAlways);  // slot 4 shows remaining item 3
  EXPECT_EQ(preview.gap, 3);
  preview.hover(1, DropZone::before, kAlways);
  EXPECT_EQ(preview.gap, 1);
  preview.hover(5, DropZone::after, kAlways);  // the last item, behind the gap
  EXPECT_EQ(preview.gap, 5);
}

TEST(DragPreview, HoverClearsAPendingMergeExceptForNegativeSlots) {
  DragPreview preview = previewWith(5, 2, 3);
  preview.hover(-1, DropZone::before, kAlways);
  EXPECT_EQ(preview, previewWith(5, 2, 3));
  preview.hover(2, DropZone::merge, kAlways);  // over the gap itself
  EXPECT_EQ(preview, previewWith(5, 2));
  preview = previewWith(5, 2, 3);
  preview.hover(6, DropZone::before, kAlways);  // beyond the last slot
  EXPECT_EQ(preview, previewWith(5, 5));
  preview = previewWith(5, 2, 3);
  preview.hover(1, DropZone::after, kAlways);
  EXPECT_EQ(preview, previewWith(5, 2));
}

TEST(DragPreview, MergeTargetsTheShownItemOrOpensTheGapThere) {
  // canMerge is asked about the remaining index shown at the slot, not the slot.
  DragPreview preview(5, 1);
  preview.hover(3, DropZone::merge, [](Index r) { return r == 2; });
  EXPECT_EQ(preview, previewWith(5, 1, 2));
  preview.hover(0, DropZone::merge, [](Index r) { return r == 2; });
  EXPECT_EQ(preview, previewWith(5, 0));
  // Refused merges put the gap on the hovered slot itself, on either side of the gap.
  preview = DragPreview(5, 1);
  preview.hover(4, DropZone::merge, kNever);
  EXPECT_EQ(preview, previewWith(5, 4));
  preview.hover(2, DropZone::merge, nullptr);
  EXPECT_EQ(preview, previewWith(5, 2));
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
