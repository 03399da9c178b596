// diff(): what changed between two arrangements, item by item, as a script
// of steps that a list view can replay row by row instead of starting over.
//
// A grid shows the top-level items of a Layout in order. When the
// arrangement changes (a drag, a new folder, a scan, a merge) the views must
// learn which rows left, which arrived, which moved and which folders show
// something new, so that delegates keep their state (an icon mid-drag, an
// open folder) and unchanged tiles are not redrawn. Items are matched by
// their LayoutItemKey: an app by its ID, a folder by its UUID, so a folder
// whose apps or name changed is the same row, updated.
//
// The steps come in this order, each index counted in the list as it is
// right before that step:
//   1. removals, from the last position to the first;
//   2. moves of items present before and after, few (the items outside a
//      longest run already in order), each to the position it takes right
//      after the move;
//   3. insertions, from the first final position to the last, so that the
//      index of each is its final one;
//   4. content changes (a folder's apps or their order, a folder's name),
//      at final positions.
// Replaying the steps on the old items, taking each inserted or updated
// item from `after` at the step's index, gives exactly the new items.
//
// Thread rules: pure functions over values.
#pragma once

#include <vector>

#include "OrreryCore/arrangement/Layout.h"

namespace orrery {

struct LayoutChange {
  enum class Kind {
    removed,        // the item at `from` leaves
    moved,          // the item at `from` ends up at `to` (counted after the move)
    inserted,       // after.items[to] arrives at `to`
    folderChanged,  // the folder at `to` holds other apps, or the same in another order
    renamed,        // the folder at `to` has another name
  };

  Kind kind;
  LayoutItemKey key;
  Index from = -1;  // removed, moved
  Index to = -1;    // moved, inserted, folderChanged, renamed

  friend bool operator==(const LayoutChange&, const LayoutChange&) = default;
};

struct LayoutDiff {
  std::vector<LayoutChange> changes;
  // The set of hidden apps differs.
  bool hiddenChanged = false;

  bool empty() const { return changes.empty() && !hiddenChanged; }

  friend bool operator==(const LayoutDiff&, const LayoutDiff&) = default;
};

// The steps that turn `before`'s items into `after`'s. Every Layout
// operation keeps each key at most once; should either side repeat a key
// anyway, the script removes every old item and inserts every new one.
LayoutDiff diff(const Layout& before, const Layout& after);

}  // namespace orrery
