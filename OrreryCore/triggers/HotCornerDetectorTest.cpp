#include <gtest/gtest.h>

#include <vector>

#include "OrreryCore/triggers/EventFlags.h"
#include "OrreryCore/triggers/HotCornerDetector.h"

namespace orrery {
namespace {

// One observation of a scripted pointer path.
struct Step {
  double time;
  Point point;
  bool modifierHeld = false;
};

// Plays the path through the detector and returns the times at which the
// corner fired.
std::vector<double> play(HotCornerDetector& detector, const std::vector<Rect>& screens,
                         const std::vector<Step>& path) {
  std::vector<double> firedAt;
  for (const Step& step : path)
    if (detector.update(step.point, screens, step.modifierHeld, step.time)) firedAt.push_back(step.time);
  return firedAt;
}

using Times = std::vector<double>;

const Rect mainDisplay{{0, 0}, {1440, 900}};
const Point topLeft{0, 900};
const std::vector<Rect> oneDisplay = {mainDisplay};
const Point middle{700, 450};

HotCornerDetector watching(Corner corner, CornerModifier modifier = CornerModifier::none) {
  return HotCornerDetector(corner, HotCornerDetector::defaultTolerance, HotCornerDetector::defaultDwell,
                           modifier);
}

TEST(HotCornerDetector, CornerPointsFollowTheBottomLeftOrigin) {
  // A display left of and above the main one: negative x, y from 100 up.
  const Rect frame{{-1920, 100}, {1920, 1080}};
  EXPECT_EQ(HotCornerDetector::cornerPoint(Corner::topLeft, frame), (Point{-1920, 1180}));
  EXPECT_EQ(HotCornerDetector::cornerPoint(Corner::topRight, frame), (Point{0, 1180}));
  EXPECT_EQ(HotCornerDetector::cornerPoint(Corner::bottomLeft, frame), (Point{-1920, 100}));
  EXPECT_EQ(HotCornerDetector::cornerPoint(Corner::bottomRight, frame), (Point{0, 100}));
  EXPECT_FALSE(HotCornerDetector::cornerPoint(Corner::none, frame));
}

TEST(HotCornerDetector, SwipeThroughTheCornerDoesNotFire) {
  auto detector = watching(Corner::topLeft);
  const std::vector<Step> path = {
      {0.00, {40, 860}}, {0.03, {1, 899}}, {0.08, topLeft}, {0.14, {1, 899}},
      {0.18, {60, 840}}, {0.50, middle},   {2.00, middle},
  };
  EXPECT_EQ(play(detector, {mainDisplay}, path), Times{});
  EXPECT_FALSE(detector.entryTime);
}

TEST(HotCornerDetector, RestFiresOnceAfterTheDwellAndNotAgainUntilLeft) {
  auto detector = watching(Corner::topLeft);
  const std::vector<Step> path = {
      {1.00, topLeft},
      {1.10, topLeft},
      {1.14, {1, 899}},
      {1.16, topLeft},
      {1.20, topLeft},
      {3.00, {2, 898}},
      {9.00, topLeft},
      // Leave and come back: a new visit with its own dwell.
      {9.50, middle},
      {10.0, topLeft},
      {10.1, topLeft},
      {10.14, topLeft},
      {10.16, topLeft},
      {10.3, topLeft},
  };
  EXPECT_EQ(play(detector, {mainDisplay}, path), (Times{1.16, 10.16}));

  // Exactly the dwell is enough (times chosen to be exact in binary).
  auto exact = watching(Corner::topLeft);
  exact.dwell = 0.25;
  EXPECT_EQ(play(exact, {mainDisplay}, {{2.0, topLeft}, {2.125, topLeft}, {2.25, topLeft}}), Times{2.25});
}

TEST(HotCornerDetector, ToleranceIsTwoPointsOnEachAxisEitherSide) {
  const std::vector<Rect> screens = {mainDisplay};
  const auto detector = watching(Corner::topLeft);
  EXPECT_TRUE(detector.isInCorner({2, 898}, screens));
  EXPECT_TRUE(detector.isInCorner({-2, 902}, screens));  // pointer reported just off the frame
  EXPECT_FALSE(detector.isInCorner({3, 898}, screens));
  EXPECT_FALSE(detector.isInCorner({2, 897}, screens));
  EXPECT_FALSE(detector.isInCorner(topLeft, {}));

  const auto bottomRight = watching(Corner::bottomRight);
  EXPECT_TRUE(bottomRight.isInCorner({1438, 2}, screens));
  EXPECT_FALSE(bottomRight.isInCorner(topLeft, screens));
}

TEST(HotCornerDetector, ModifierMustBeHeldAndPressingItStartsTheDwell) {
  auto detector = watching(Corner::topLeft, CornerModifier::option);
  const std::vector<Step> path = {
      {0.0, topLeft, false},
      {0.5, topLeft, false},
      {1.0, topLeft, false},
      // Pressed mid-rest: the dwell counts from here.
      {1.05, topLeft, true},
      {1.15, topLeft, true},
      {1.19, topLeft, true},
      {1.21, topLeft, true},
      // Released and pressed again without moving: a new visit.
      {1.5, topLeft, false},
      {1.6, topLeft, true},
      {1.74, topLeft, true},
      {1.76, topLeft, true},
  };
  EXPECT_EQ(play(detector, {mainDisplay}, path), (Times{1.21, 1.76}));
}

TEST(HotCornerDetector, NoCornerNeverFiresAndForgetsTheVisit) {
  auto detector = watching(Corner::topLeft);
  EXPECT_FALSE(detector.update(topLeft, oneDisplay, false, 0.0));
  ASSERT_TRUE(detector.entryTime);
  detector.corner = Corner::none;
  EXPECT_EQ(play(detector, {mainDisplay}, {{1.0, topLeft}, {5.0, topLeft}}), Times{});
  EXPECT_FALSE(detector.entryTime);
  EXPECT_FALSE(detector.fired);
}

TEST(HotCornerDetector, ZeroDwellFiresOnArrivalOncePerVisit) {
  HotCornerDetector detector(Corner::bottomLeft, 2.0, 0.0);
  const std::vector<Step> path = {
      {0.0, {0, 0}}, {0.1, {1, 1}}, {0.2, {0, 0}}, {0.3, middle}, {0.4, {0, 0}},
  };
  EXPECT_EQ(play(detector, {mainDisplay}, path), (Times{0.0, 0.4}));
}

TEST(HotCornerDetector, SharedCornersOfDisplaysSideBySideNeverFire) {
  // Same height, touching at x = 1440: the pointer slides across the top
  // edge there, so neither display's inner top corner is a corner.
  const std::vector<Rect> screens = {mainDisplay, {{1440, 0}, {1440, 900}}};
  const Point sharedTop{1440, 900};
  const std::vector<Step> rest = {{0.0, sharedTop}, {0.2, sharedTop}, {1.0, {1441, 899}}, {2.0, sharedTop}};

  auto right = watching(Corner::topRight);
  EXPECT_EQ(play(right, screens, rest), Times{});
  auto left = watching(Corner::topLeft);
  EXPECT_EQ(play(left, screens, rest), Times{});

  // The outer corners are real.
  auto outerRight = watching(Corner::topRight);
  EXPECT_EQ(play(outerRight, screens, {{0.0, {2880, 900}}, {0.2, {2880, 900}}}), Times{0.2});
  auto outerLeft = watching(Corner::topLeft);
  EXPECT_EQ(play(outerLeft, screens, {{0.0, topLeft}, {0.2, topLeft}}), Times{0.2});
}

TEST(HotCornerDetector, RealCornerTestLooksAtEachNeighbour) {
  const Rect tallRight{{1440, 0}, {1920, 1080}};
  // Different heights: the taller display's top-left corner sticks out above
  // the shorter one and can be hit; the shorter one's top-right cannot.
  {
    const std::vector<Rect> screens = {mainDisplay, tallRight};
    EXPECT_FALSE(HotCornerDetector::isRealCorner(Corner::topRight, screens, 0));
    EXPECT_TRUE(HotCornerDetector::isRealCorner(Corner::topLeft, screens, 1));
    EXPECT_TRUE(HotCornerDetector::isRealCorner(Corner::bottomRight, screens, 1));
    EXPECT_FALSE(HotCornerDetector::isRealCorner(Corner::bottomLeft, screens, 1));
    auto detector = watching(Corner::topLeft);
    EXPECT_EQ(play(detector, screens, {{0.0, {1440, 1080}}, {0.15, {1441, 1079}}}), Times{0.15});
  }
  // A display stacked on top: the lower one's top corners touch it.
  {
    const std::vector<Rect> screens = {mainDisplay, {{0, 900}, {1440, 900}}};
    EXPECT_FALSE(HotCornerDetector::isRealCorner(Corner::topLeft, screens, 0));
    EXPECT_FALSE(HotCornerDetector::isRealCorner(Corner::topRight, screens, 0));
    EXPECT_TRUE(HotCornerDetector::isRealCorner(Corner::topLeft, screens, 1));
    EXPECT_FALSE(HotCornerDetector::isRealCorner(Corner::bottomLeft, screens, 1));
  }
  // Touching only diagonally: both corners stay real, the pointer cannot
  // cross a single point.
  {
    const std::vector<Rect> screens = {mainDisplay, {{1440, 900}, {800, 600}}};
    EXPECT_TRUE(HotCornerDetector::isRealCorner(Corner::topRight, screens, 0));
    EXPECT_TRUE(HotCornerDetector::isRealCorner(Corner::bottomLeft, screens, 1));
  }
  EXPECT_FALSE(HotCornerDetector::isRealCorner(Corner::topLeft, oneDisplay, 1));
  EXPECT_FALSE(HotCornerDetector::isRealCorner(Corner::none, oneDisplay, 0));
}

TEST(HotCornerDetector, NearnessIgnoresTheRealCornerTest) {
  const std::vector<Rect> screens = {mainDisplay, {{1440, 0}, {1440, 900}}};
  const auto detector = watching(Corner::topRight);
  const double margin = detector.tolerance + HotCornerDetector::nearMargin;
  EXPECT_TRUE(detector.isNear({1418, 878}, screens, margin));  // shared corner, 22 points away
  EXPECT_FALSE(detector.isNear({1417, 890}, screens, margin));
  EXPECT_TRUE(detector.isNear({2880, 900}, screens, margin));
  EXPECT_FALSE(detector.isNear(middle, screens, margin));
  EXPECT_FALSE(watching(Corner::none).isNear({1440, 900}, screens, margin));
  EXPECT_FALSE(detector.isNear({1440, 900}, {}, margin));
}

TEST(HotCornerDetector, EachModifierIsHeldByItsOwnFlagOnly) {
  const std::uint64_t all =
      EventFlags::shift | EventFlags::control | EventFlags::option | EventFlags::command;
  EXPECT_FALSE(isModifierHeld(CornerModifier::none, all));
  for (const auto& [modifier, flag] : {std::pair{CornerModifier::command, EventFlags::command},
                                       {CornerModifier::option, EventFlags::option},
                                       {CornerModifier::control, EventFlags::control},
                                       {CornerModifier::shift, EventFlags::shift}}) {
    EXPECT_TRUE(isModifierHeld(modifier, flag | (std::uint64_t{1} << 16))) << flag;  // caps lock too
    EXPECT_FALSE(isModifierHeld(modifier, all & ~flag)) << flag;
  }
}

}  // namespace
}  // namespace orrery
