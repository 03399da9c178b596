// replayDiff(): walks the steps of a LayoutDiff in the groups a Qt list
// model announces them in.
//
// Neighbouring removals (which come last position first) and neighbouring
// insertions become one range each, so a scan that adds fifty apps at the
// end is one rowsInserted, not fifty. The callbacks do the model's own
// begin…/end… calls; this only does the grouping, shared by every model
// that follows an arrangement.
//
// Thread rules: a pure function; the callbacks run on the caller's thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "OrreryCore/arrangement/LayoutDiff.h"

namespace orrery::app {

// removeRange(first, last), move(from, to) with `to` counted after the
// move, insertRange(first, last) with final indices, update(index, kind).
template <typename RemoveRange, typename Move, typename InsertRange, typename Update>
void replayDiff(const LayoutDiff& diff, RemoveRange&& removeRange, Move&& move, InsertRange&& insertRange,
                Update&& update) {
  using Kind = LayoutChange::Kind;
  const std::vector<LayoutChange>& changes = diff.changes;
  std::size_t i = 0;
  while (i < changes.size()) {
    const LayoutChange& change = changes[i];
    std::size_t end = i + 1;
    switch (change.kind) {
      case Kind::removed:
        while (end < changes.size() && changes[end].kind == Kind::removed &&
               changes[end].from == changes[end - 1].from - 1)
          ++end;
        removeRange(changes[end - 1].from, change.from);
        break;
      case Kind::moved:
        move(change.from, change.to);
        break;
      case Kind::inserted:
        while (end < changes.size() && changes[end].kind == Kind::inserted &&
               changes[end].to == changes[end - 1].to + 1)
          ++end;
        insertRange(change.to, changes[end - 1].to);
        break;
      case Kind::folderChanged:
      case Kind::renamed:
        update(change.to, change.kind);
        break;
    }
    i = end;
  }
}

// The rotation a move makes in a vector of rows.
template <typename Row>
void rotateRow(std::vector<Row>& rows, Index from, Index to) {
  const auto first = rows.begin() + static_cast<std::ptrdiff_t>(from);
  const auto last = rows.begin() + static_cast<std::ptrdiff_t>(to);
  if (to > from)
    std::rotate(first, first + 1, last + 1);
  else
    std::rotate(last, first, first + 1);
}

}  // namespace orrery::app
