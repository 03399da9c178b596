// KDE Plasma's desktop picture, read from applet configurations as Plasma
// writes them, and the watch on that file.
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "Orrery/platform/kde/PlasmaWallpaperSource.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::platform {
namespace {

namespace fs = std::filesystem;
using orrery::testing::TemporaryDirectory;

class PlasmaWallpaperSourceTest : public ::testing::Test {
 protected:
  QString write(const std::string& text,
                const std::string& name = "plasma-org.kde.plasma.desktop-appletsrc") {
    std::ofstream(folder.path() / name) << text;
    return QString::fromStdString((folder.path() / name).string());
  }
  std::string picture(const std::string& name) {
    const fs::path path = folder.path() / name;
    fs::create_directories(path.parent_path());
    std::ofstream(path) << "not read here";
    return path.string();
  }

  TemporaryDirectory folder{"orrery-plasma"};
};

TEST_F(PlasmaWallpaperSourceTest, TheDesktopOfTheFirstScreenWinsOverPanelsAndOtherScreens) {
  const std::string left = picture("left screen.jpg");
  const std::string right = picture("right.png");
  const QString config = write(
      "[ActionPlugins][0]\nRightButton;NoModifier=org.kde.contextmenu\n\n"
      "[Containments][1]\nactivityId=\nformfactor=2\nlastScreen=0\nlocation=4\nplugin=org.kde.panel\n"
      "wallpaperplugin=org.kde.image\n\n"
      "[Containments][2]\nactivityId=4f1c\nformfactor=0\nlastScreen=1\nplugin=org.kde.plasma.folder\n"
      "wallpaperplugin=org.kde.image\n\n"
      "[Containments][2][Wallpaper][org.kde.image][General]\nImage=file://" +
      right +
      "\n\n"
      "[Containments][7]\nactivityId=4f1c\nformfactor=0\nlastScreen=0\nplugin=org.kde.plasma.folder\n"
      "wallpaperplugin=org.kde.image\n\n"
      "[Containments][7][Wallpaper][org.kde.image][General]\nImage=file://" +
      left + "\nSlidePaths=/usr/share/wallpapers/\n");
  EXPECT_EQ(PlasmaWallpaperSource::pictureIn(config, {1920, 1080}), QString::fromStdString(left));

  // Plain paths are taken as they are; a desktop showing a plain colour has none.
  const QString plain = write(
      "[Containments][3]\nlastScreen=0\nwallpaperplugin=org.kde.image\n"
      "[Containments][3][Wallpaper][org.kde.image][General]\nImage=" +
      right + "\n");
  EXPECT_EQ(PlasmaWallpaperSource::pictureIn(plain, {1920, 1080}), QString::fromStdString(right));
  const QString colour = write(
      "[Containments][3]\nlastScreen=0\nwallpaperplugin=org.kde.color\n"
      "[Containments][3][Wallpaper][org.kde.image][General]\nImage=" +
      right + "\n");
  EXPECT_EQ(PlasmaWallpaperSource::pictureIn(colour, {1920, 1080}), std::nullopt);
  EXPECT_EQ(PlasmaWallpaperSource::pictureIn(write("[Containments][3]\nlastScreen=0\n"), {1920, 1080}),
            std::nullopt);
  EXPECT_EQ(PlasmaWallpaperSource::pictureIn(QString::fromStdString((folder.path() / "none").string()), {}),
            std::nullopt);
}

TEST_F(PlasmaWallpaperSourceTest, AWallpaperPackageGivesTheSmallestPictureThatCoversTheScreen) {
  for (const char* size : {"1280x800.jpg", "1920x1080.jpg", "3840x2160.png", "5120x2880.jpg"})
    picture(std::string("Next/contents/images/") + size);
  picture("Next/contents/images/README");
  const std::string package = (folder.path() / "Next").string();
  const QString config = write(
      "[Containments][1]\nlastScreen=0\nwallpaperplugin=org.kde.image\n"
      "[Containments][1][Wallpaper][org.kde.image][General]\nImage=file://" +
      package + "/\n");
  const QString images = QString::fromStdString(package) + QStringLiteral("/contents/images/");
  EXPECT_EQ(PlasmaWallpaperSource::pictureIn(config, {1920, 1080}), images + QStringLiteral("1920x1080.jpg"));
  EXPECT_EQ(PlasmaWallpaperSource::pictureIn(config, {2560, 1440}), images + QStringLiteral("3840x2160.png"));
  EXPECT_EQ(PlasmaWallpaperSource::pictureIn(config, {7680, 4320}), images + QStringLiteral("5120x2880.jpg"));
}

TEST_F(PlasmaWallpaperSourceTest, ReplacingTheFileAsKConfigDoesIsAnnounced) {
  static int argc = 1;
  static char name[] = "orrery_platform_wallpaper_tests";
  static char* argv[] = {name, nullptr};
  if (QCoreApplication::instance() == nullptr) new QCoreApplication(argc, argv);

  const std::string first = picture("first.jpg");
  const std::string second = picture("second.jpg");
  const auto configText = [](const std::string& image) {
    return "[Containments][1]\nlastScreen=0\nwallpaperplugin=org.kde.image\n"
           "[Containments][1][Wallpaper][org.kde.image][General]\nImage=" +
           image + "\n";
  };
  const QString config = write(configText(first));
  PlasmaWallpaperSource source(config);
  int announced = 0;
  source.setOnChanged([&] { ++announced; });
  ASSERT_TRUE(source.current());
  EXPECT_EQ(source.current()->name, QString::fromStdString(first));

  // KConfig writes a temporary file and renames it over the old one.
  write(configText(second), "plasma-org.kde.plasma.desktop-appletsrc.lock");
  fs::rename(folder.path() / "plasma-org.kde.plasma.desktop-appletsrc.lock",
             folder.path() / "plasma-org.kde.plasma.desktop-appletsrc");
  const QDeadlineTimer deadline(5000);
  while (announced == 0 && !deadline.hasExpired())
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
  EXPECT_GT(announced, 0);
  EXPECT_EQ(source.current()->name, QString::fromStdString(second));
}

}  // namespace
}  // namespace orrery::platform
