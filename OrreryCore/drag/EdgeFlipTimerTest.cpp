#include <gtest/gtest.h>

#include "OrreryCore/drag/EdgeFlipTimer.h"

namespace orrery {
namespace {

constexpr double kMin = 0;
constexpr double kMax = 1000;

TEST(EdgeFlipTimer, FlipsOnceAfterTheDwellAndRestartsOnReturn) {
  EdgeFlipTimer timer;
  EXPECT_EQ(timer.update(20, kMin, kMax, 10), std::nullopt);
  EXPECT_EQ(timer.update(5, kMin, kMax, 10.59), std::nullopt);
  EXPECT_EQ(timer.update(5, kMin, kMax, 10.6), -1);  // exactly at the deadline
  EXPECT_EQ(timer.update(5, kMin, kMax, 12), std::nullopt);
  EXPECT_EQ(timer.update(500, kMin, kMax, 12.5), std::nullopt);
  EXPECT_EQ(timer, (EdgeFlipTimer{std::nullopt, 10, false}));
  EXPECT_EQ(timer.update(5, kMin, kMax, 13), std::nullopt);
  EXPECT_EQ(timer.update(5, kMin, kMax, 13.5), std::nullopt);
  EXPECT_EQ(timer.update(5, kMin, kMax, 13.7), -1);
}

TEST(EdgeFlipTimer, BandsIncludeTheirInnerBorderAndSwitchingSidesRestarts) {
  EdgeFlipTimer timer;
  EXPECT_EQ(timer.update(40, kMin, kMax, 0), std::nullopt);
  EXPECT_EQ(timer.edge, -1);
  EXPECT_EQ(timer.update(40.01, kMin, kMax, 0.1), std::nullopt);
  EXPECT_EQ(timer.edge, std::nullopt);
  EXPECT_EQ(timer.update(960, kMin, kMax, 1), std::nullopt);
  EXPECT_EQ(timer.update(1200, kMin, kMax, 1.7), 1);           // beyond the edge is the same stay
  EXPECT_EQ(timer.update(10, kMin, kMax, 1.8), std::nullopt);  // straight to the other side
  EXPECT_EQ(timer.update(10, kMin, kMax, 2.3), std::nullopt);
  EXPECT_EQ(timer.update(10, kMin, kMax, 2.5), -1);
  EXPECT_EQ(timer.update(990, kMin, kMax, 2.6), std::nullopt);
  EXPECT_EQ(timer.update(990, kMin, kMax, 3.3), 1);
}

TEST(EdgeFlipTimer, ANarrowSpanIsTheLeftEdge) {
  EdgeFlipTimer timer;
  timer.update(130, 100, 160, 0);  // inside both bands
  EXPECT_EQ(timer.update(130, 100, 160, 1), -1);
}

}  // namespace
}  // namespace orrery
