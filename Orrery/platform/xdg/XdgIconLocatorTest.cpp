#include "Orrery/platform/xdg/XdgIconLocator.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "OrreryCore/testing/ScopedVariable.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::platform {
namespace {

std::string entry(const std::string& lines) {
  return "[Desktop Entry]\nType=Application\nName=App\n" + lines;
}

TEST(XdgIconLocator, ReadsTheIconKeyAsGioDoes) {
  const orrery::testing::ScopedVariable all{"LC_ALL", ""};
  const orrery::testing::ScopedVariable language{"LANGUAGE", "de_CH.UTF-8:fr"};
  const XdgIconLocator locator;

  EXPECT_EQ(locator.iconOfEntry(entry("Icon=org.gnome.Nautilus\n")), "org.gnome.Nautilus");
  // Translations in the message languages first, even an empty one; other
  // languages are ignored.
  EXPECT_EQ(locator.iconOfEntry(entry("Icon=plain\nIcon[fr]=french\nIcon[de_CH]=swiss\n")), "swiss");
  EXPECT_EQ(locator.iconOfEntry(entry("Icon=plain\nIcon[fr]=french\nIcon[it]=italian\n")), "french");
  EXPECT_EQ(locator.iconOfEntry(entry("Icon=plain\nIcon[ja]=japanese\n")), "plain");
  EXPECT_EQ(locator.iconOfEntry(entry("Icon=plain\nIcon[de_CH]=\n")), "");

  // A file name where a theme name belongs loses its image extension, as
  // in GIO; absolute paths and other dots are kept.
  EXPECT_EQ(locator.iconOfEntry(entry("Icon=gimp.png\n")), "gimp");
  EXPECT_EQ(locator.iconOfEntry(entry("Icon=inkscape.svg\n")), "inkscape");
  EXPECT_EQ(locator.iconOfEntry(entry("Icon=xterm-color.xpm\n")), "xterm-color");
  EXPECT_EQ(locator.iconOfEntry(entry("Icon=org.kde.krita\n")), "org.kde.krita");
  EXPECT_EQ(locator.iconOfEntry(entry("Icon=photo.jpg\n")), "photo.jpg");
  EXPECT_EQ(locator.iconOfEntry(entry("Icon=/opt/app/icon.png\n")), "/opt/app/icon.png");

  EXPECT_EQ(locator.iconOfEntry(entry("")), "");
  EXPECT_EQ(locator.iconOfEntry(entry("Icon=\n")), "");
  // Only the [Desktop Entry] group names the app's icon.
  EXPECT_EQ(locator.iconOfEntry(entry("[Desktop Action new]\nIcon=action\n")), "");
  EXPECT_EQ(locator.iconOfEntry("[Other]\nIcon=other\n[Desktop Entry]\nIcon=late\n"), "");
}

TEST(XdgIconLocator, EntriesLeftToGLibGiveTheSameIcon) {
  const XdgIconLocator locator;
  // A carriage return and an escape sequence send the file to GLib's parser.
  EXPECT_EQ(locator.iconOfEntry("[Desktop Entry]\r\nType=Application\r\nIcon=terminal\r\n"), "terminal");
  EXPECT_EQ(locator.iconOfEntry(entry("Icon=/opt/My\\sApp/icon.png\n")), "/opt/My App/icon.png");
  // A file GLib rejects names nothing.
  EXPECT_EQ(locator.iconOfEntry("[Desktop Entry]\nIcon=a\n[Desktop Entry\n"), "");
}

TEST(XdgIconLocator, ReadsTheAppsFile) {
  const orrery::testing::TemporaryDirectory folder;
  const std::string path = (folder.path() / "editor.desktop").string();
  std::ofstream(path) << entry("Icon=accessories-text-editor\n");
  const XdgIconLocator locator;
  EXPECT_EQ(locator.icon(AppInfo{"editor.desktop", "Editor", path, std::nullopt}), "accessories-text-editor");
  EXPECT_EQ(
      locator.icon(AppInfo{"gone.desktop", "Gone", (folder.path() / "gone.desktop").string(), std::nullopt}),
      "");
}

}  // namespace
}  // namespace orrery::platform
