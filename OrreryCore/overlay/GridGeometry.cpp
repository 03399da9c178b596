#include "OrreryCore/overlay/GridGeometry.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace orrery {

namespace {

// The fields are public, so a caller may have put a zero or negative count
// back in after construction; clamp again wherever a count is used.
std::int64_t atLeastOne(std::int64_t count) { return std::max<std::int64_t>(count, 1); }

}  // namespace

GridGeometry::GridGeometry(Size size_, std::int64_t columns_, std::int64_t rows_, double iconSize_)
    : size(size_), columns(atLeastOne(columns_)), rows(atLeastOne(rows_)), iconSize(iconSize_) {}

std::int64_t GridGeometry::slotsPerPage(std::int64_t columns_, std::int64_t rows_) {
  std::int64_t product = 0;
  if (__builtin_mul_overflow(atLeastOne(columns_), atLeastOne(rows_), &product)) {
    const std::string message = "GridGeometry: " + std::to_string(columns_) + " columns × " +
                                std::to_string(rows_) + " rows overflow the slot count\n";
    std::fputs(message.c_str(), stderr);
    std::abort();
  }
  return product;
}

std::int64_t GridGeometry::perPage() const { return slotsPerPage(columns, rows); }

Size GridGeometry::cellSize() const {
  return Size{size.width / static_cast<double>(atLeastOne(columns)),
              size.height / static_cast<double>(atLeastOne(rows))};
}

std::optional<std::int64_t> GridGeometry::slot(Point at) const {
  // Written so that NaN coordinates fall outside as well.
  if (!(at.x >= 0 && at.y >= 0 && at.x < size.width && at.y < size.height)) return std::nullopt;
  // Slot numbers exist only where the page's slot count does.
  perPage();
  const std::int64_t cols = atLeastOne(columns);
  const std::int64_t rowCount = atLeastOne(rows);
  const Size cell = cellSize();
  // Truncate and cap in floating point, so that rounding at the far edge never
  // converts a value past the last column or row.
  const auto index = [](double position, double cellLength, std::int64_t count) {
    return static_cast<std::int64_t>(
        std::min(static_cast<double>(count - 1), std::trunc(position / cellLength)));
  };
  return index(at.y, cell.height, rowCount) * cols + index(at.x, cell.width, cols);
}

Rect GridGeometry::cellFrame(std::int64_t slot_) const {
  const std::int64_t count = perPage();
  const std::int64_t cols = atLeastOne(columns);
  std::int64_t local = slot_ % count;  // true modulo, without risking count + count
  if (local < 0) local += count;
  const Size cell = cellSize();
  return Rect{
      {static_cast<double>(local % cols) * cell.width, static_cast<double>(local / cols) * cell.height},
      cell};
}

Rect GridGeometry::hitFrame(std::int64_t slot_) const {
  const Rect cell = cellFrame(slot_);
  const double w = std::min(iconSize + labelExtraWidth, cell.width());
  const double h = std::min(iconSize + labelSpacing + labelHeight, cell.height());
  return Rect{{cell.midX() - w * 0.5, cell.midY() - h * 0.5}, {w, h}};
}

}  // namespace orrery
