// SortUndo: the one-step undo of "Sort by Name".
//
// Holds the arrangement just before a sort and the one the sort produced.
// Undo is offered only while the live arrangement is still exactly the
// sorted one: any other change since — a drag, a scan that added an app, a
// merge from another machine — means going back would throw that change
// away, so the offer lapses instead.
//
// Thread rules: a plain value.
#pragma once

#include <optional>

#include "OrreryCore/arrangement/Layout.h"

namespace orrery {

struct SortUndo {
  Layout before;
  Layout after;

  // True exactly when current equals `after` (version, items and hidden).
  bool canUndo(const Layout& current) const;
  // `before` while nothing else changed the arrangement, otherwise nothing.
  std::optional<Layout> restored(const Layout& current) const;

  friend bool operator==(const SortUndo&, const SortUndo&) = default;
};

}  // namespace orrery
