// Which corners KDE's KWin acts on, read from kwinrc texts the way KConfig
// cascades them, in the form the core's SystemHotCorners rule reads.
#include <gtest/gtest.h>

#include "Orrery/platform/gio/DesktopHotCorners.h"

namespace orrery::platform {
namespace {

bool used(Corner corner, const std::vector<std::string>& texts, bool plasma = true) {
  return SystemHotCorners::isUsedBySystem(corner, DesktopHotCorners::fromKWin(texts, plasma));
}

TEST(DesktopHotCorners, KWinScreenEdgesAndEffectsMarkTheirCorners) {
  const std::string user =
      "[ElectricBorders]\nTopRight=ShowDesktop\nBottomLeft=None\n\n"
      "[Effect-windowview]\nBorderActivateAll=7\nBorderActivate=3, 5\n";
  EXPECT_TRUE(used(Corner::topRight, {user}));
  EXPECT_TRUE(used(Corner::bottomRight, {user}));
  EXPECT_FALSE(used(Corner::bottomLeft, {user})) << "[ElectricBorders] None wins over an effect";
  EXPECT_FALSE(used(Corner::topLeft, {user})) << "BorderActivateAll is another key";
  EXPECT_FALSE(used(Corner::none, {user}));
}

TEST(DesktopHotCorners, TheUsersFileWinsAndPlasmaKeepsItsOverviewCornerUnlessTold) {
  const std::string system = "[ElectricBorders]\nTopRight=LockScreen\n";
  const std::string user = "[ElectricBorders]\nTopRight[$i]=None\n";
  EXPECT_FALSE(used(Corner::topRight, {user, system}));
  EXPECT_TRUE(used(Corner::topRight, {system}));

  // Plasma as shipped: the Overview on the top left.
  EXPECT_TRUE(used(Corner::topLeft, {}));
  EXPECT_FALSE(used(Corner::topLeft, {}, false)) << "not a Plasma session";
  EXPECT_FALSE(used(Corner::topLeft, {"[Effect-overview]\nBorderActivate=9\n"})) << "moved to no edge";
  EXPECT_TRUE(used(Corner::topLeft, {"# comment\n[ElectricBorders]\nTopLeft = KRunner\r\n"}, false));
}

}  // namespace
}  // namespace orrery::platform
