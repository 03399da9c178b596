#include <gtest/gtest.h>

#include <cstdio>
#include <limits>

#include "OrreryCore/appearance/HexColor.h"

namespace orrery {
namespace {

TEST(HexColor, ParsesSixDigitsWithOrWithoutHash) {
  const HexColor expected{0x1E / 255.0, 0x1E / 255.0, 0x1E / 255.0};
  EXPECT_EQ(HexColor::fromHex("1E1E1E"), expected);
  EXPECT_EQ(HexColor::fromHex("#1E1E1E"), expected);
  EXPECT_EQ(HexColor::fromHex("#1e1e1e"), expected);
  EXPECT_EQ(HexColor::fromHex("#FF8000"), (HexColor{1.0, 128 / 255.0, 0.0}));

  for (const char* bad :
       {"#1E1E1", "#1E1E1E0", "#GGGGGG", "", "#", "##1E1E1E", " #1E1E1E", "1E1E1E ", "#+1E1E1", "0x1E1E"}) {
    EXPECT_FALSE(HexColor::fromHex(bad)) << '"' << bad << '"';
    EXPECT_EQ(HexColor::resolved(bad).hexString(), "#1E1E1E") << '"' << bad << '"';
  }
  EXPECT_EQ(HexColor::resolved("#336699").hexString(), "#336699");
}

TEST(HexColor, EveryByteSurvivesTheRoundTrip) {
  for (int value = 0; value < 256; ++value) {
    char text[8];
    std::snprintf(text, sizeof text, "#%02X%02X%02X", value, 255 - value, (value * 7) % 256);
    const auto color = HexColor::fromHex(text);
    ASSERT_TRUE(color) << text;
    EXPECT_EQ(color->hexString(), text);
  }
}

TEST(HexColor, FormattingClampsAndRoundsHalfUp) {
  EXPECT_EQ((HexColor{1.2, -0.3, 0.5}).hexString(), "#FF0080");
  EXPECT_EQ((HexColor{0.0, 1.0, 1.0 / 255}).hexString(), "#00FF01");
  EXPECT_EQ((HexColor{0.5 / 255, 1.49 / 255, 254.5 / 255}).hexString(), "#0101FF");
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ((HexColor{nan, infinity, -infinity}).hexString(), "#00FF00");
}

TEST(HexColor, LuminanceDecidesDarkness) {
  EXPECT_DOUBLE_EQ(HexColor::resolved("#FFFFFF").luminance(), 1.0);
  EXPECT_DOUBLE_EQ(HexColor::resolved("#000000").luminance(), 0.0);
  EXPECT_FALSE(HexColor::resolved("#FFFFFF").isDark());
  EXPECT_TRUE(HexColor::resolved("#1E1E1E").isDark());
  EXPECT_NEAR(HexColor::resolved("#777777").luminance(), 0.184, 0.001);
  EXPECT_FALSE(HexColor::resolved("#777777").isDark());
  EXPECT_TRUE(HexColor::resolved("#757575").isDark());
  // Green weighs most, blue least.
  EXPECT_NEAR(HexColor::resolved("#00FF00").luminance(), 0.7152, 1e-12);
  EXPECT_NEAR(HexColor::resolved("#0000FF").luminance(), 0.0722, 1e-12);
  EXPECT_FALSE(HexColor::resolved("#00FF00").isDark());
  EXPECT_TRUE(HexColor::resolved("#0000FF").isDark());
  // Below the knee the curve is linear.
  EXPECT_DOUBLE_EQ((HexColor{0.03, 0.03, 0.03}).luminance(), 0.03 / 12.92);
}

}  // namespace
}  // namespace orrery
