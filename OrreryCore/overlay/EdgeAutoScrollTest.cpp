#include <gtest/gtest.h>

#include "OrreryCore/overlay/EdgeAutoScroll.h"

namespace orrery {
namespace {

using EdgeAutoScroll::velocity;

TEST(EdgeAutoScroll, SpeedGrowsTowardsEachEdgeAndStaysFullBeyond) {
  // A tall band from 100 to 700.
  EXPECT_EQ(velocity(100, 100, 700), -1400);
  EXPECT_EQ(velocity(130, 100, 700), -700);
  EXPECT_EQ(velocity(160, 100, 700), 0);
  EXPECT_EQ(velocity(400, 100, 700), 0);
  EXPECT_EQ(velocity(640, 100, 700), 0);
  EXPECT_EQ(velocity(685, 100, 700), 1050);
  EXPECT_EQ(velocity(700, 100, 700), 1400);
  EXPECT_EQ(velocity(20, 100, 700), -1400);
  EXPECT_EQ(velocity(5000, 100, 700), 1400);
}

TEST(EdgeAutoScroll, LowBandsSplitInHalfAndTheTopWins) {
  EXPECT_EQ(velocity(50, 0, 100), 0);  // zone 50: exactly at both inner borders
  EXPECT_EQ(velocity(25, 0, 100), -700);
  EXPECT_EQ(velocity(75, 0, 100), 700);
  // An odd-sized band: zone 25, the middle point counts as the top zone's.
  EXPECT_LT(velocity(24.9, 0, 50), 0);
  EXPECT_GT(velocity(25.1, 0, 50), 0);
}

TEST(EdgeAutoScroll, EmptyOrInvertedBandsNeverScroll) {
  EXPECT_EQ(velocity(10, 10, 10), 0);
  EXPECT_EQ(velocity(10, 500, 100), 0);
  EXPECT_EQ(velocity(-1000, 500, 100), 0);
}

}  // namespace
}  // namespace orrery
