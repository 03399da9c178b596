// Which corners KDE's KWin acts on, read from kwinrc texts the way KConfig
// cascades them, and GNOME's own corner from its settings (GSettings'
// memory backend, set for this test program), in the form the core's
// SystemHotCorners rule reads.
#include <gio/gio.h>
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

TEST(DesktopHotCorners, GnomeMarksItsTopLeftCornerOnlyInItsSessionAndWhileTurnedOn) {
  GSettingsSchema* schema = g_settings_schema_source_lookup(g_settings_schema_source_get_default(),
                                                            "org.gnome.desktop.interface", TRUE);
  ASSERT_NE(schema, nullptr) << "gsettings-desktop-schemas is part of scripts/setup";
  g_settings_schema_unref(schema);
  GSettings* interface = g_settings_new("org.gnome.desktop.interface");
  DesktopHotCorners gnome;
  gnome.gnomeSession = true;
  const DesktopHotCorners elsewhere;

  g_settings_set_boolean(interface, "enable-hot-corners", TRUE);
  EXPECT_TRUE(SystemHotCorners::isUsedBySystem(Corner::topLeft, gnome.read()));
  EXPECT_FALSE(SystemHotCorners::isUsedBySystem(Corner::topRight, gnome.read()));
  EXPECT_FALSE(SystemHotCorners::isUsedBySystem(Corner::topLeft, elsewhere.read()))
      << "the schema is installed, but no GNOME Shell acts on it";

  g_settings_set_boolean(interface, "enable-hot-corners", FALSE);
  EXPECT_FALSE(SystemHotCorners::isUsedBySystem(Corner::topLeft, gnome.read()));
  g_object_unref(interface);
}

}  // namespace
}  // namespace orrery::platform
