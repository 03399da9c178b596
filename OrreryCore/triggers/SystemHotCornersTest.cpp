#include <gtest/gtest.h>

#include <limits>

#include "OrreryCore/triggers/SystemHotCorners.h"

namespace orrery {
namespace {

TEST(SystemHotCorners, ValuesAboveOneMeanTheCornerIsUsed) {
  const auto used = [](DefaultsValue value) {
    return SystemHotCorners::isUsedBySystem(Corner::bottomRight, {{"wvous-br-corner", value}});
  };
  EXPECT_FALSE(used(std::int64_t{0}));
  EXPECT_FALSE(used(std::int64_t{1}));
  EXPECT_TRUE(used(std::int64_t{2}));
  EXPECT_TRUE(used(std::int64_t{14}));
  EXPECT_FALSE(used(std::int64_t{-5}));
  // Doubles count by their truncated value.
  EXPECT_FALSE(used(1.99));
  EXPECT_TRUE(used(2.0));
  EXPECT_FALSE(used(-2.5));
  EXPECT_TRUE(used(1e300));
  EXPECT_FALSE(used(std::numeric_limits<double>::quiet_NaN()));
  // Not numbers.
  EXPECT_FALSE(used(true));
  EXPECT_FALSE(used(std::string("5")));
}

TEST(SystemHotCorners, EachCornerReadsItsOwnKey) {
  const DockDefaults dock = {{"wvous-tl-corner", std::int64_t{5}},
                             {"wvous-tr-corner", std::int64_t{1}},
                             {"wvous-bl-corner", 3.0},
                             {"showhidden", std::int64_t{9}}};
  EXPECT_TRUE(SystemHotCorners::isUsedBySystem(Corner::topLeft, dock));
  EXPECT_FALSE(SystemHotCorners::isUsedBySystem(Corner::topRight, dock));
  EXPECT_TRUE(SystemHotCorners::isUsedBySystem(Corner::bottomLeft, dock));
  EXPECT_FALSE(SystemHotCorners::isUsedBySystem(Corner::bottomRight, dock));  // missing
  EXPECT_FALSE(SystemHotCorners::isUsedBySystem(Corner::none, dock));
  EXPECT_FALSE(SystemHotCorners::isUsedBySystem(Corner::topLeft, {}));
}

}  // namespace
}  // namespace orrery
