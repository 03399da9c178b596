#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "OrreryCore/overlay/ScrollGrid.h"

namespace orrery {
namespace {

TEST(ScrollGrid, RowHeightFillsTheViewportWithTheVisibleRows) {
  EXPECT_DOUBLE_EQ(ScrollGrid::rowHeight(500, 5), 100);
  EXPECT_DOUBLE_EQ(ScrollGrid::rowHeight(500, 0), 500);
  EXPECT_DOUBLE_EQ(ScrollGrid::rowHeight(500, -2), 500);
  EXPECT_DOUBLE_EQ(ScrollGrid::rowHeight(0, 5), 0.2);  // a collapsed view still has positive rows
}

TEST(ScrollGrid, ContentGeometryHasOneRowPerStartedLine) {
  const GridGeometry empty = ScrollGrid::geometry(0, 7, 5, {700, 500}, 64);
  EXPECT_EQ(empty.rows, 1);
  EXPECT_EQ(empty.size, (Size{700, 100}));

  const GridGeometry spill = ScrollGrid::geometry(36, 7, 5, {700, 500}, 64);
  EXPECT_EQ(spill.rows, 6);
  EXPECT_EQ(spill.size, (Size{700, 600}));

  // Content coordinates: the single item of the sixth row is slot 35.
  EXPECT_EQ(spill.slot({50, 550}), 35);
  EXPECT_EQ(spill.cellFrame(35), (Rect{{0, 500}, {100, 100}}));

  const GridGeometry bad = ScrollGrid::geometry(-4, 0, 0, {300, 300}, 64);
  EXPECT_EQ(bad.columns, 1);
  EXPECT_EQ(bad.rows, 1);

  const std::int64_t most = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(ScrollGrid::geometry(most, 2, 5, {700, 500}, 64).rows, most / 2 + 1);
}

TEST(ScrollGrid, OffsetStaysInsideTheContent) {
  EXPECT_EQ(ScrollGrid::clampedOffset(-10, 300, 500), 0);
  EXPECT_EQ(ScrollGrid::clampedOffset(50, 300, 500), 0);  // shorter than the viewport
  EXPECT_EQ(ScrollGrid::clampedOffset(900, 1200, 500), 700);

  const ScrollMetrics metrics{100, 1200, 500};
  EXPECT_EQ(metrics.scrolledBy(-250).offset, 0);
  EXPECT_EQ(metrics.scrolledBy(1000).offset, 700);
  EXPECT_EQ(metrics.scrolledBy(50), (ScrollMetrics{150, 1200, 500}));
}

TEST(ScrollGrid, PageStepKeepsTheLastRowInView) {
  EXPECT_DOUBLE_EQ(ScrollGrid::pageStep(500, 5), 400);
  EXPECT_DOUBLE_EQ(ScrollGrid::pageStep(500, 2), 250);
  EXPECT_DOUBLE_EQ(ScrollGrid::pageStep(500, 1), 500);
  EXPECT_DOUBLE_EQ(ScrollGrid::pageStep(500, 0), 500);
}

}  // namespace
}  // namespace orrery
