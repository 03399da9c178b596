#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "OrreryCore/overlay/GridGeometry.h"

namespace orrery {
namespace {

const GridGeometry kGrid7x5({700, 500}, 7, 5, 64);

TEST(GridGeometry, CountsAreClampedToOne) {
  const GridGeometry grid({300, 200}, 0, -3, 64);
  EXPECT_EQ(grid.columns, 1);
  EXPECT_EQ(grid.rows, 1);
  EXPECT_EQ(grid.perPage(), 1);
  EXPECT_EQ(grid.cellFrame(7), (Rect{{0, 0}, {300, 200}}));

  // Counts assigned after construction are clamped where they are used.
  GridGeometry changed = kGrid7x5;
  changed.columns = 0;
  changed.rows = -1;
  EXPECT_EQ(changed.cellSize(), (Size{700, 500}));
  EXPECT_EQ(changed.slot({650, 450}), 0);
  EXPECT_EQ(changed.cellFrame(-4), (Rect{{0, 0}, {700, 500}}));
}

TEST(GridGeometry, PointToSlotIsRowMajorAndExcludesFarBorders) {
  EXPECT_EQ(kGrid7x5.slot({0, 0}), 0);
  EXPECT_EQ(kGrid7x5.slot({100, 0}), 1);
  EXPECT_EQ(kGrid7x5.slot({350, 250}), 2 * 7 + 3);
  EXPECT_EQ(kGrid7x5.slot({699.9, 499.9}), 34);
  EXPECT_EQ(kGrid7x5.slot({700, 10}), std::nullopt);
  EXPECT_EQ(kGrid7x5.slot({10, 500}), std::nullopt);
  EXPECT_EQ(kGrid7x5.slot({-0.1, 10}), std::nullopt);
  EXPECT_EQ(kGrid7x5.slot({10, -0.1}), std::nullopt);
  EXPECT_EQ(kGrid7x5.slot({std::numeric_limits<double>::quiet_NaN(), 10}), std::nullopt);

  // Cells whose width does not divide evenly: the last point inside still
  // lands in the last column, never one past it.
  const GridGeometry uneven({100, 100}, 3, 3, 10);
  EXPECT_EQ(uneven.slot({std::nextafter(100.0, 0.0), std::nextafter(100.0, 0.0)}), 8);
}

TEST(GridGeometry, CellFramesRepeatOnEveryPage) {
  EXPECT_EQ(kGrid7x5.cellFrame(9), (Rect{{200, 100}, {100, 100}}));
  EXPECT_EQ(kGrid7x5.cellFrame(35 + 3), kGrid7x5.cellFrame(3));
  EXPECT_EQ(kGrid7x5.cellFrame(-1), kGrid7x5.cellFrame(34));
  EXPECT_EQ(kGrid7x5.cellFrame(-36), kGrid7x5.cellFrame(34));
  EXPECT_EQ(kGrid7x5.cellFrame(std::numeric_limits<std::int64_t>::min()),
            kGrid7x5.cellFrame(std::numeric_limits<std::int64_t>::min() % 35 + 35));
  // Every slot's frame maps back to that slot at its centre.
  for (std::int64_t slot = 0; slot < kGrid7x5.perPage(); ++slot) {
    const Rect frame = kGrid7x5.cellFrame(slot);
    EXPECT_EQ(kGrid7x5.slot({frame.midX(), frame.midY()}), slot);
  }
}

TEST(GridGeometry, HitFrameIsCentredAndNeverLargerThanTheCell) {
  const Rect hit = kGrid7x5.hitFrame(8);  // cell (100, 100)-(200, 200)
  EXPECT_EQ(hit.size, (Size{100, 95}));   // 64 + 84 capped to 100; 64 + 13 + 18
  EXPECT_DOUBLE_EQ(hit.midX(), 150);
  EXPECT_DOUBLE_EQ(hit.midY(), 150);

  const GridGeometry roomy({1400, 1000}, 7, 5, 64);  // cells of 200 × 200
  EXPECT_EQ(roomy.hitFrame(0), (Rect{{26, 52.5}, {148, 95}}));

  const GridGeometry huge({700, 500}, 7, 5, 160);
  EXPECT_EQ(huge.hitFrame(34), huge.cellFrame(34));
}

TEST(GridGeometryDeathTest, SlotCountOverflowStopsTheProgram) {
  const std::int64_t big = std::int64_t{1} << 32;
  EXPECT_EQ(GridGeometry::slotsPerPage(big, (std::int64_t{1} << 30)), std::int64_t{1} << 62);
  EXPECT_DEATH(GridGeometry::slotsPerPage(big, big), "overflow");
  const GridGeometry grid({100, 100}, big, big, 10);
  EXPECT_DEATH(grid.perPage(), "overflow");
  EXPECT_DEATH(grid.slot({1, 1}), "overflow");
}

}  // namespace
}  // namespace orrery
