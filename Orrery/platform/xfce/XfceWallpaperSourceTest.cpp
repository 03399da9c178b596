// Xfce's desktop picture, read from xfconf's channel file of the desktop.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "Orrery/platform/xfce/XfceWallpaperSource.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::platform {
namespace {

using orrery::testing::TemporaryDirectory;

class XfceWallpaperSourceTest : public ::testing::Test {
 protected:
  QString write(const std::string& text) {
    const auto path = folder.path() / "xfce4-desktop.xml";
    std::ofstream(path) << text;
    return QString::fromStdString(path.string());
  }
  TemporaryDirectory folder{"orrery-xfce"};
};

TEST_F(XfceWallpaperSourceTest, TheFirstWorkspaceOfTheFirstMonitorWins) {
  const QString channel = write(R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-desktop" version="1.0">
  <property name="desktop-icons" type="empty">
    <property name="last-image" type="string" value="/not/a/backdrop.png"/>
  </property>
  <property name="backdrop" type="empty">
    <property name="screen0" type="empty">
      <property name="monitorVirtual-1" type="empty">
        <property name="workspace1" type="empty">
          <property name="color-style" type="int" value="0"/>
          <property name="last-image" type="string" value="/usr/share/backgrounds/xfce/second.svg"/>
        </property>
        <property name="workspace0" type="empty">
          <property name="image-style" type="int" value="5"/>
          <property name="last-image" type="string" value="/usr/share/backgrounds/xfce/xfce-verticals.png"/>
        </property>
      </property>
      <property name="monitorHDMI-1" type="empty">
        <property name="workspace0" type="empty">
          <property name="last-image" type="string" value="/home/u/Pictures/hdmi.jpg"/>
        </property>
      </property>
    </property>
  </property>
</channel>
)");
  EXPECT_EQ(XfceWallpaperSource::pictureIn(channel),
            QStringLiteral("/usr/share/backgrounds/xfce/xfce-verticals.png"));
}

TEST_F(XfceWallpaperSourceTest, OlderImagePathsAnyWorkspaceAndBrokenFiles) {
  // Xfce 4.10 kept "image-path"; a single workspace other than the first is
  // still a picture.
  EXPECT_EQ(XfceWallpaperSource::pictureIn(write(R"(<channel name="xfce4-desktop" version="1.0">
  <property name="backdrop" type="empty"><property name="screen0" type="empty">
    <property name="monitor0" type="empty">
      <property name="image-path" type="string" value="/usr/share/xfce4/backdrops/old.jpg"/>
    </property></property></property></channel>)")),
            QStringLiteral("/usr/share/xfce4/backdrops/old.jpg"));
  EXPECT_EQ(XfceWallpaperSource::pictureIn(write(R"(<channel name="xfce4-desktop" version="1.0">
  <property name="backdrop" type="empty"><property name="screen0" type="empty">
    <property name="monitor0" type="empty"><property name="workspace3" type="empty">
      <property name="last-image" type="string" value="/pictures/three.webp"/>
    </property></property></property></property></channel>)")),
            QStringLiteral("/pictures/three.webp"));
  // Relative paths and an empty value name nothing; a truncated file
  // gives what was read before the break, a file with none gives nothing.
  EXPECT_EQ(XfceWallpaperSource::pictureIn(write(R"(<channel><property name="backdrop" type="empty">
    <property name="last-image" type="string" value="pictures/rel.png"/>
    <property name="last-image" type="string" value=""/></property></channel>)")),
            std::nullopt);
  EXPECT_EQ(XfceWallpaperSource::pictureIn(write(R"(<channel><property name="backdrop" type="empty">
    <property name="last-image" type="string" value="/pictures/kept.png"/><property name=)")),
            QStringLiteral("/pictures/kept.png"));
  EXPECT_EQ(XfceWallpaperSource::pictureIn(write("<channel><property name=")), std::nullopt);
}

}  // namespace
}  // namespace orrery::platform
