// DragPreview: where a dragged item would land among the items that stay in
// the grid while it is dragged.
//
// The preview grid has one slot more than there are remaining items: the
// gap, the empty place the dragged item would drop into. Slots before the
// gap show the remaining items at the same index, slots after it show them
// shifted by one. Instead of a gap move, hovering over the centre of an item
// may select it as a merge target (a folder would be made or filled); the
// gap then stays where it was, so the other items do not jump around while
// the user aims at one of them.
//
// The main grid (GridDrag) and the reorder inside an open folder both use
// this type; they differ only in which items may be merged with.
//
// Thread rules: a plain value.
#pragma once

#include <functional>
#include <optional>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/drag/DropZone.h"

namespace orrery {

struct DragPreview {
  // Fixed for the whole drag. The operations below keep 0 <= gap <=
  // remainingCount and a mergeTarget within [0, remainingCount).
  Index remainingCount = 0;
  Index gap = 0;
  std::optional<Index> mergeTarget;

  // Clamps: a negative count becomes 0, the gap is put into [0, count].
  DragPreview(Index remaining, Index gapSlot);

  // Slots of the preview grid: the remaining items plus the gap.
  Index count() const { return remainingCount + 1; }

  // The remaining item shown at a preview slot; nothing for the gap and for
  // slots outside the preview grid.
  std::optional<Index> remainingIndex(Index slot) const;
  // The preview slot that shows the remaining item at index `remaining`.
  Index slot(Index remaining) const { return remaining < gap ? remaining : remaining + 1; }

  // The pointer is over `slot` (a preview slot, pages included) in `zone`.
  // `canMerge` says whether the remaining item at an index may take the
  // dragged item. Negative slots are ignored; slots beyond the end move the
  // gap to the end.
  void hover(Index slot, DropZone zone, const std::function<bool(Index)>& canMerge);

  // The pointer is over the empty part of page `page` of `perPage` slots:
  // the gap goes to the last slot of that page, or to the end of the list
  // when the page is not full.
  void hoverOutside(Index page, Index perPage);

  friend bool operator==(const DragPreview&, const DragPreview&) = default;
};

}  // namespace orrery
