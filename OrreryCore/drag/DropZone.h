// DropZone: where over a tile a dragged item would land.
//
// The middle ninth of a tile (its central third in each direction) means
// "drop onto it" (make or fill a folder); anywhere else the item goes in
// before or after the tile, split at the tile's horizontal centre. The
// classification takes the tile's full cell frame, not the smaller hit
// frame, so that every point of the grid falls into one of the three zones
// and the merge area scales with the cell.
//
// Thread rules: a plain value and a pure function.
#pragma once

#include "OrreryCore/base/Geometry.h"

namespace orrery {

enum class DropZone {
  merge,   // drop onto the item
  before,  // insert before the item
  after,   // insert after the item
};

// Classifies a pointer position against the frame of the tile under it
// (both in grid coordinates).
DropZone classifyDropZone(Point point, const Rect& tileFrame);

}  // namespace orrery
