// GNOME's desktop picture: the colour scheme's choice, XML slideshows, and
// the settings themselves through GSettings' memory backend (the schema of
// gsettings-desktop-schemas, nothing of the user's).
#include <gio/gio.h>

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <string>

#include "Orrery/platform/gnome/GnomeWallpaperSource.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::platform {
namespace {

using namespace std::chrono_literals;
using Frame = GnomeWallpaperSource::SlideshowFrame;
using orrery::testing::TemporaryDirectory;

QDateTime at(int day, int hour, int minute, int second = 0) {
  return QDateTime(QDate(2024, 3, day), QTime(hour, minute, second));
}

class GnomeSlideshowTest : public ::testing::Test {
 protected:
  QString write(const std::string& text, const char* name = "slideshow.xml") {
    std::ofstream(folder.path() / name) << text;
    return QString::fromStdString((folder.path() / name).string());
  }
  TemporaryDirectory folder{"orrery-gnome"};
};

TEST_F(GnomeSlideshowTest, ThePictureOfTheMomentAndHowLongItStays) {
  // A day cycle as GNOME's timed backgrounds have it: an hour of morning,
  // a five-minute transition, the rest of the day.
  const QString show = write(R"(<background>
  <starttime><year>2024</year><month>03</month><day>01</day><hour>6</hour><minute>00</minute><second>00</second></starttime>
  <static><duration>3600.0</duration><file>/backgrounds/morning.jpg</file></static>
  <transition type="overlay"><duration>300.0</duration><from>/backgrounds/morning.jpg</from><to>/backgrounds/day.jpg</to></transition>
  <static><duration>82500.0</duration><file>/backgrounds/day.jpg</file></static>
</background>)");
  EXPECT_EQ(GnomeWallpaperSource::slideshowFrame(show, at(1, 6, 10)),
            (Frame{"/backgrounds/morning.jpg", 3000s}));
  // Inside the transition: the picture it leads to, until it ends.
  EXPECT_EQ(GnomeWallpaperSource::slideshowFrame(show, at(1, 7, 1)), (Frame{"/backgrounds/day.jpg", 240s}));
  EXPECT_EQ(GnomeWallpaperSource::slideshowFrame(show, at(1, 12, 0)),
            (Frame{"/backgrounds/day.jpg", 64800s}));
  // The cycle repeats every day, weeks later too.
  EXPECT_EQ(GnomeWallpaperSource::slideshowFrame(show, at(20, 6, 0, 1)),
            (Frame{"/backgrounds/morning.jpg", 3599s}));
  // Before the start: the first picture.
  EXPECT_EQ(GnomeWallpaperSource::slideshowFrame(show, QDateTime(QDate(2023, 1, 1), QTime(0, 0)))->file,
            QStringLiteral("/backgrounds/morning.jpg"));
}

TEST_F(GnomeSlideshowTest, SizedFilesGiveTheLargestAndNonSlideshowsNothing) {
  const QString sized = write(R"(<background>
  <static><duration>1e9</duration><file>
    <size width="1024" height="768">/backgrounds/small.jpg</size>
    <size width="3840" height="2160">/backgrounds/large.jpg</size>
    <size width="1920" height="1080">/backgrounds/medium.jpg</size>
  </file></static>
</background>)");
  EXPECT_EQ(GnomeWallpaperSource::slideshowFrame(sized, at(1, 0, 0))->file,
            QStringLiteral("/backgrounds/large.jpg"));
  EXPECT_EQ(GnomeWallpaperSource::slideshowFrame(write("<wallpapers><wallpaper/></wallpapers>", "other.xml"),
                                                 at(1, 0, 0)),
            std::nullopt);
  EXPECT_EQ(
      GnomeWallpaperSource::slideshowFrame(write("<background><static><duration>5", "cut.xml"), at(1, 0, 0)),
      std::nullopt);
}

TEST(GnomeWallpaperSourceTest, TheDarkPictureOnlyWhenDarkIsPreferredAndOneIsSet) {
  const QString light = QStringLiteral("file:///light.png");
  const QString dark = QStringLiteral("file:///dark.png");
  EXPECT_EQ(GnomeWallpaperSource::chosenUri(light, dark, true), dark);
  EXPECT_EQ(GnomeWallpaperSource::chosenUri(light, dark, false), light);
  EXPECT_EQ(GnomeWallpaperSource::chosenUri(light, QString(), true), light);
}

TEST(GnomeWallpaperSourceTest, FollowsTheSettingsAndTheirChanges) {
  // GSETTINGS_BACKEND=memory (set for this test program): nothing persists.
  auto source = GnomeWallpaperSource::fromSettings([] { return at(1, 12, 0, 30); });
  ASSERT_TRUE(source) << "org.gnome.desktop.background is not installed (gsettings-desktop-schemas)";
  int announced = 0;
  source->setOnChanged([&] { ++announced; });

  GSettings* background = g_settings_new("org.gnome.desktop.background");
  GSettings* interface = g_settings_new("org.gnome.desktop.interface");
  g_settings_set_string(background, "picture-options", "zoom");
  g_settings_set_string(background, "picture-uri", "file:///pictures/My%20Light.png");
  g_settings_set_string(background, "picture-uri-dark", "file:///pictures/dark.jxl");
  g_settings_set_string(interface, "color-scheme", "default");
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
  EXPECT_GT(announced, 0);
  ASSERT_TRUE(source->current());
  EXPECT_EQ(source->current()->name, QStringLiteral("/pictures/My Light.png"));

  announced = 0;
  g_settings_set_string(interface, "color-scheme", "prefer-dark");
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
  EXPECT_GT(announced, 0);
  EXPECT_EQ(source->current()->name, QStringLiteral("/pictures/dark.jxl"));

  g_settings_set_string(background, "picture-options", "none");
  EXPECT_EQ(source->current(), std::nullopt);

  // A slideshow's picture says when the next one comes.
  g_settings_set_string(background, "picture-options", "zoom");
  TemporaryDirectory folder("orrery-gnome");
  const auto show = folder.path() / "show.xml";
  std::ofstream(show) << "<background><starttime><year>2024</year><month>3</month><day>1</day><hour>12</hour>"
                         "<minute>0</minute><second>0</second></starttime>"
                         "<static><duration>60</duration><file>/a.jpg</file></static>"
                         "<static><duration>60</duration><file>/b.jpg</file></static></background>";
  const std::string uri = "file://" + show.string();
  g_settings_set_string(background, "picture-uri-dark", uri.c_str());
  const auto slide = source->current();
  ASSERT_TRUE(slide);
  EXPECT_EQ(slide->name, QStringLiteral("/a.jpg"));
  EXPECT_EQ(slide->changesIn, std::chrono::seconds(30));

  g_object_unref(interface);
  g_object_unref(background);
}

}  // namespace
}  // namespace orrery::platform
