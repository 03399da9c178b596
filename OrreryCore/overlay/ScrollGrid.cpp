#include "OrreryCore/overlay/ScrollGrid.h"

#include <algorithm>

namespace orrery {

namespace ScrollGrid {

double rowHeight(double viewportHeight, std::int64_t visibleRows) {
  return std::max(viewportHeight, 1.0) / static_cast<double>(std::max<std::int64_t>(visibleRows, 1));
}

GridGeometry geometry(std::int64_t itemCount, std::int64_t columns, std::int64_t visibleRows, Size viewport,
                      double iconSize) {
  const std::int64_t cols = std::max<std::int64_t>(columns, 1);
  const std::int64_t items = std::max<std::int64_t>(itemCount, 0);
  // Ceiling division written so that it cannot overflow near the top of the range.
  const std::int64_t rowCount = std::max<std::int64_t>(1, items / cols + (items % cols != 0 ? 1 : 0));
  const double contentHeight = rowHeight(viewport.height, visibleRows) * static_cast<double>(rowCount);
  return GridGeometry(Size{viewport.width, contentHeight}, cols, rowCount, iconSize);
}

double clampedOffset(double offset, double contentHeight, double viewportHeight) {
  return std::min(std::max(offset, 0.0), std::max(contentHeight - viewportHeight, 0.0));
}

double pageStep(double viewportHeight, std::int64_t visibleRows) {
  const std::int64_t rowsPerStep = visibleRows - 1 > 0 ? visibleRows - 1 : 1;
  return rowHeight(viewportHeight, visibleRows) * static_cast<double>(rowsPerStep);
}

}  // namespace ScrollGrid

ScrollMetrics ScrollMetrics::scrolledBy(double delta) const {
  ScrollMetrics moved = *this;
  moved.offset = ScrollGrid::clampedOffset(offset + delta, contentHeight, viewportHeight);
  return moved;
}

}  // namespace orrery
