// ScrollGrid and ScrollMetrics: the grid of the scrolling layout mode.
//
// In scroll mode the arrangement is one tall grid of `columns` columns, and
// `rows` says how many rows are visible at once: the row height is chosen so
// that exactly that many rows fill the viewport, whatever the icon size. The
// GridGeometry returned here covers the whole scrolled content, so a point
// in the viewport needs the scroll offset added before asking for its slot.
//
// Counts are clamped to at least 1 and lengths to at least 1 point where
// they divide, so a collapsed window or a bad setting never yields infinite
// or negative sizes.
//
// Thread rules: pure functions and a plain value.
#pragma once

#include <cstdint>

#include "OrreryCore/base/Geometry.h"
#include "OrreryCore/overlay/GridGeometry.h"

namespace orrery {

namespace ScrollGrid {

// max(viewportHeight, 1) / max(visibleRows, 1).
double rowHeight(double viewportHeight, std::int64_t visibleRows);

// The content grid for itemCount items: viewport width, one row height per
// row, and at least one row even when there are no items.
GridGeometry geometry(std::int64_t itemCount, std::int64_t columns, std::int64_t visibleRows, Size viewport,
                      double iconSize);

// The offset kept within [0, max(contentHeight − viewportHeight, 0)]; a
// content shorter than the viewport always sits at 0.
double clampedOffset(double offset, double contentHeight, double viewportHeight);

// One screenful less one row, so the last visible row becomes the first
// after the step; one row when only one row is visible.
double pageStep(double viewportHeight, std::int64_t visibleRows);

}  // namespace ScrollGrid

// Where the scrolling grid stands: what the overlay model keeps while the
// scroll layout is shown.
struct ScrollMetrics {
  double offset = 0;
  double contentHeight = 0;
  double viewportHeight = 0;

  // Moved by delta (negative is up) and kept inside the content.
  ScrollMetrics scrolledBy(double delta) const;

  friend bool operator==(const ScrollMetrics&, const ScrollMetrics&) = default;
};

}  // namespace orrery
