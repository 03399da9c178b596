#include "OrreryCore/arrangement/SortUndo.h"

namespace orrery {

bool SortUndo::canUndo(const Layout& current) const { return current == after; }

std::optional<Layout> SortUndo::restored(const Layout& current) const {
  if (!canUndo(current)) return std::nullopt;
  return before;
}

}  // namespace orrery
