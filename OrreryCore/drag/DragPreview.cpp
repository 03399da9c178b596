#include "OrreryCore/drag/DragPreview.h"

#include <algorithm>

namespace orrery {

DragPreview::DragPreview(Index remaining, Index gapSlot)
    : remainingCount(std::max<Index>(remaining, 0)),
      gap(std::clamp<Index>(gapSlot, 0, std::max<Index>(remaining, 0))) {}

std::optional<Index> DragPreview::remainingIndex(Index slot) const {
  if (slot < 0 || slot > remainingCount || slot == gap) return std::nullopt;
  return slot > gap ? slot - 1 : slot;
}

void DragPreview::hover(Index slot, DropZone zone, const std::function<bool(Index)>& canMerge) {
  if (slot < 0) return;
  // Written as slot > remainingCount rather than slot >= count() so that no
  // sum can overflow, whatever the caller passes.
  if (slot > remainingCount) {
    gap = remainingCount;
    mergeTarget.reset();
    return;
  }
  if (slot == gap) {
    mergeTarget.reset();
    return;
  }
  const Index target = slot > gap ? slot - 1 : slot;
  switch (zone) {
    case DropZone::merge:
      if (canMerge && canMerge(target)) {
        mergeTarget = target;
      } else {
        // Nothing to merge with: open the gap right where the pointer is,
        // which pushes the hovered item away from it.
        gap = slot;
        mergeTarget.reset();
      }
      return;
    case DropZone::before:
      gap = target;
      mergeTarget.reset();
      return;
    case DropZone::after:
      gap = target + 1;
      mergeTarget.reset();
      return;
  }
}

void DragPreview::hoverOutside(Index page, Index perPage) {
  mergeTarget.reset();
  // (page + 1) * perPage - 1, the last slot of the page. When that does not
  // fit in an Index it lies far beyond the end, so the end is the answer;
  // saturating here is exact, not a wrap.
  Index pageEnd = 0;
  if (__builtin_add_overflow(std::max<Index>(page, 0), Index{1}, &pageEnd) ||
      __builtin_mul_overflow(pageEnd, std::max<Index>(perPage, 1), &pageEnd)) {
    gap = remainingCount;
    return;
  }
  gap = std::min(remainingCount, std::max<Index>(pageEnd - 1, 0));
}

}  // namespace orrery
