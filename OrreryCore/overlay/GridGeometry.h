// GridGeometry: the arithmetic of the overlay's icon grid.
//
// A grid area of `size` points split into `columns` × `rows` equal cells.
// Coordinates are the grid's own: origin at the top left of the grid area,
// y downwards. Slots are 0-based and row-major, local to one page; in paged
// mode the caller adds page × perPage() to reach an index into the items.
// In scroll mode the same type describes the whole scrolled content (see
// ScrollGrid), and a viewport point must have the scroll offset added first.
//
// Counts come from the settings and may be anything a stored record or a
// caller holds; every entry point clamps them to at least 1, so a zero or
// negative count never divides or wraps. A grid whose columns × rows does not
// fit in 64 bits is a programming error and stops the program rather than
// producing a wrapped, nonsensical page size.
//
// Thread rules: a plain value.
#pragma once

#include <cstdint>
#include <optional>

#include "OrreryCore/base/Geometry.h"

namespace orrery {

struct GridGeometry {
  // The tile of one icon: the icon, a gap, then its name label. The hit area
  // may be wider than the icon so that a click on a long name still counts.
  static constexpr double labelSpacing = 13.0;
  static constexpr double labelHeight = 18.0;
  static constexpr double labelExtraWidth = 84.0;

  Size size;
  std::int64_t columns = 1;  // at least 1 when made by the constructor
  std::int64_t rows = 1;     // at least 1 when made by the constructor
  double iconSize = 0;

  GridGeometry() = default;
  // Stores max(columns, 1) and max(rows, 1); size and icon size as given.
  GridGeometry(Size size, std::int64_t columns, std::int64_t rows, double iconSize);

  // max(columns, 1) × max(rows, 1). Aborts with a message when the product
  // does not fit in 64 bits.
  static std::int64_t slotsPerPage(std::int64_t columns, std::int64_t rows);

  std::int64_t perPage() const;
  Size cellSize() const;
  // The slot under the point; nothing outside the grid, the right and bottom
  // borders included.
  std::optional<std::int64_t> slot(Point at) const;
  // The cell of a slot taken modulo perPage(): slot perPage() + 3 has the
  // frame of slot 3, slot -1 that of the last cell.
  Rect cellFrame(std::int64_t slot) const;
  // The part of the cell that counts as the tile for clicks and hovering:
  // icon plus label (and some width for the label), centred in the cell,
  // never larger than the cell.
  Rect hitFrame(std::int64_t slot) const;

  friend bool operator==(const GridGeometry&, const GridGeometry&) = default;
};

}  // namespace orrery
