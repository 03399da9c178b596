#include <QColor>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QQuickImageProvider>
#include <QQuickImageResponse>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "Orrery/appearance/AppIconProvider.h"
#include "Orrery/appearance/IconCache.h"
#include "Orrery/appearance/IconStore.h"
#include "Orrery/appearance/IconTheme.h"
#include "Orrery/platform/xdg/XdgIconLocator.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::app {
namespace {

using namespace std::chrono_literals;

const QColor red(255, 0, 0);
const QColor green(0, 255, 0);
const QColor blue(0, 0, 255);
const QColor yellow(255, 255, 0);
const QColor grey(128, 128, 128);

// Left half red, right half blue, on a 48-unit canvas: rendered at any
// size the two halves meet in a sharp edge down the middle.
constexpr const char* kHalvesSvg =
    R"(<svg xmlns="http://www.w3.org/2000/svg" width="48" height="48" viewBox="0 0 48 48">)"
    R"(<rect x="0" y="0" width="24" height="48" fill="#ff0000"/>)"
    R"(<rect x="24" y="0" width="24" height="48" fill="#0000ff"/></svg>)";

QColor pixel(const QImage& image, int x, int y) { return QColor::fromRgba(image.pixel(x, y)); }

// A temporary machine: a user theme "Tiles" inheriting hicolor, a pixmaps
// folder and desktop entries, read through the real desktop-entry locator.
class IconCacheTest : public ::testing::Test {
 protected:
  IconCacheTest() {
    writeText("icons/hicolor/index.theme",
              "[Icon Theme]\nName=Hicolor\nDirectories=32x32/apps,64x64/apps,48x48/apps,scalable/apps\n\n"
              "[32x32/apps]\nSize=32\nType=Threshold\n\n[64x64/apps]\nSize=64\n\n[48x48/apps]\nSize=48\n\n"
              "[scalable/apps]\nSize=48\nMinSize=16\nMaxSize=512\nType=Scalable\n");
    writeText(
        "icons/Tiles/index.theme",
        "[Icon Theme]\nName=Tiles\nInherits=hicolor\nDirectories=48x48/apps\n\n[48x48/apps]\nSize=48\n");
    writeImage("icons/hicolor/32x32/apps/paint.png", 32, yellow);
    writeImage("icons/hicolor/64x64/apps/paint.png", 64, red);
    writeImage("icons/hicolor/64x64/apps/application-x-executable.png", 64, grey);
    writeImage("icons/hicolor/48x48/apps/vector.png", 48, green);
    writeText("icons/hicolor/scalable/apps/vector.svg", kHalvesSvg);
    // The user's theme draws its own "shadowed"; hicolor's exact size must
    // not win over it.
    writeImage("icons/hicolor/64x64/apps/shadowed.png", 64, red);
    writeImage("icons/Tiles/48x48/apps/shadowed.png", 48, blue);
    writeImage("pixmaps/legacy.png", 40, green);
    writeImage("custom/own.png", 128, blue);
  }

  std::string path(const std::string& relative) const { return (root.path() / relative).string(); }

  void writeText(const std::string& relative, const std::string& text) const {
    std::filesystem::create_directories(std::filesystem::path(path(relative)).parent_path());
    std::ofstream(path(relative)) << text;
  }

  void writeImage(const std::string& relative, int size, const QColor& colour) const {
    std::filesystem::create_directories(std::filesystem::path(path(relative)).parent_path());
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(colour);
    ASSERT_TRUE(image.save(QString::fromStdString(path(relative)), "PNG"));
  }

  // An app whose desktop entry has `iconLine` ("Icon=…", or nothing).
  AppInfo app(const std::string& id, const std::string& iconLine,
              std::optional<Date> modified = Date(1s)) const {
    const std::string url = path("applications/" + id + ".desktop");
    writeText("applications/" + id + ".desktop",
              "[Desktop Entry]\nType=Application\nName=" + id + "\n" + iconLine);
    return AppInfo{id + ".desktop", id, url, modified};
  }

  IconThemeFolders folders() const {
    return {{QString::fromStdString(path("icons"))}, {QString::fromStdString(path("pixmaps"))}};
  }

  std::shared_ptr<IconStore> makeStore(const QString& theme = QStringLiteral("Tiles")) const {
    return std::make_shared<IconStore>(locator, theme, folders());
  }

  orrery::testing::TemporaryDirectory root;
  std::shared_ptr<const IconLocator> locator = std::make_shared<platform::XdgIconLocator>();
};

TEST_F(IconCacheTest, ThemeIconsAreDecodedAtTheRequestedSize) {
  auto store = makeStore();
  const AppInfo paint = app("paint", "Icon=paint\n");

  // Exactly the size of a bitmap: that bitmap.
  QImage image = store->image(paint, 64);
  EXPECT_EQ(image.size(), QSize(64, 64));
  EXPECT_EQ(pixel(image, 32, 32), red);
  image = store->image(paint, 32);
  EXPECT_EQ(image.size(), QSize(32, 32));
  EXPECT_EQ(pixel(image, 16, 16), yellow);
  // Between sizes: the larger bitmap scaled down, never the smaller one
  // scaled up.
  image = store->image(paint, 48);
  EXPECT_EQ(image.size(), QSize(48, 48));
  EXPECT_EQ(pixel(image, 24, 24), red);

  // The user's theme comes before hicolor, whatever sizes hicolor has.
  image = store->image(app("shadowed", "Icon=shadowed\n"), 64);
  EXPECT_EQ(image.size(), QSize(64, 64));
  EXPECT_EQ(pixel(image, 32, 32), blue);

  // An icon named by its absolute path is read from there.
  image = store->image(app("own", "Icon=" + path("custom/own.png") + "\n"), 96);
  EXPECT_EQ(image.size(), QSize(96, 96));
  EXPECT_EQ(pixel(image, 48, 48), blue);

  // Names no theme has are looked for in the pixmaps folder, also when the
  // entry wrote the file name.
  for (const std::string line : {"Icon=legacy\n", "Icon=legacy.png\n"}) {
    image = store->image(app("legacy", line, Date(std::chrono::seconds(line.size()))), 64);
    EXPECT_EQ(image.size(), QSize(64, 64)) << line;
    EXPECT_EQ(pixel(image, 32, 32), green) << line;
  }
}

TEST_F(IconCacheTest, ScalableIconsAreRenderedSharpAtEverySize) {
  auto store = makeStore();
  const AppInfo vector = app("vector", "Icon=vector\n");

  // At twice the nominal size the SVG is rendered, not the 48 px bitmap
  // scaled: the halves meet without a blended column.
  const QImage twice = store->image(vector, 96 * 2);
  ASSERT_EQ(twice.size(), QSize(192, 192));
  EXPECT_EQ(pixel(twice, 95, 100), red);
  EXPECT_EQ(pixel(twice, 96, 100), blue);
  EXPECT_EQ(pixel(twice, 0, 0), red);
  EXPECT_EQ(pixel(twice, 191, 191), blue);

  // A bitmap drawn for exactly the size asked for is preferred.
  EXPECT_EQ(pixel(store->image(vector, 48), 24, 24), green);
}

TEST_F(IconCacheTest, AppsWithoutAUsableIconGetTheGenericOne) {
  auto store = makeStore();
  writeText("custom/broken.png", "not an image");
  const std::vector<AppInfo> apps{app("noicon", ""), app("unknown", "Icon=no-such-icon\n"),
                                  app("broken", "Icon=" + path("custom/broken.png") + "\n"),
                                  app("missing", "Icon=" + path("custom/missing.png") + "\n")};
  for (const AppInfo& each : apps) {
    const QImage image = store->image(each, 48);
    EXPECT_EQ(image.size(), QSize(48, 48)) << each.id;
    EXPECT_EQ(pixel(image, 24, 24), grey) << each.id;
  }
  // Without any theme the generic icon is drawn: still a tile, not a hole.
  auto bare = std::make_shared<IconStore>(locator, QStringLiteral("Tiles"), IconThemeFolders{});
  const QImage drawn = bare->image(apps[1], 64);
  EXPECT_EQ(drawn.size(), QSize(64, 64));
  EXPECT_EQ(pixel(drawn, 0, 0).alpha(), 0);
  EXPECT_EQ(pixel(drawn, 32, 32).alpha(), 255);
  // An app that is gone (a URL nothing is at) too.
  EXPECT_FALSE(bare->image(AppInfo{"gone", "Gone", path("applications/gone.desktop"), {}}, 16).isNull());
}

TEST_F(IconCacheTest, AnUpdatedAppGetsItsNewIcon) {
  auto store = makeStore();
  AppInfo paint = app("paint", "Icon=paint\n", Date(10s));
  EXPECT_EQ(pixel(store->image(paint, 64), 1, 1), red);

  // The entry now names another icon. Under the same date the cache still
  // answers, and reads nothing.
  const AppInfo sameDate = app("paint", "Icon=shadowed\n", Date(10s));
  const auto reads = store->diskReads();
  EXPECT_EQ(pixel(store->image(sameDate, 64), 1, 1), red);
  EXPECT_EQ(store->diskReads(), reads);

  // A new date is a new version of the app.
  paint.modified = Date(20s);
  EXPECT_FALSE(store->contains(paint, 64));
  EXPECT_EQ(pixel(store->image(paint, 64), 1, 1), blue);
  EXPECT_TRUE(store->contains(paint, 64));
}

TEST_F(IconCacheTest, AppsNamingTheSameIconShareOneImageUntilTheFileChanges) {
  auto store = makeStore();
  const QImage first = store->image(app("paint", "Icon=paint\n"), 64);
  const auto reads = store->diskReads();
  const QImage second = store->image(app("paint-tools", "Icon=paint\n"), 64);
  EXPECT_EQ(store->diskReads(), reads + 1);  // its own entry, but no second decode
  EXPECT_EQ(first.cacheKey(), second.cacheKey());

  // A package update replaces the theme's file in place.
  writeImage("icons/hicolor/64x64/apps/paint.png", 64, blue);
  const std::filesystem::path file = path("icons/hicolor/64x64/apps/paint.png");
  std::filesystem::last_write_time(file, std::filesystem::last_write_time(file) + 10s);
  EXPECT_EQ(pixel(store->image(app("paint-more", "Icon=paint\n"), 64), 1, 1), blue);
}

TEST_F(IconCacheTest, PreloadFillsTheCacheAheadOfRequests) {
  IconCache cache(locator, QStringLiteral("Tiles"), folders());
  const std::vector<AppInfo> apps{app("paint", "Icon=paint\n"), app("vector", "Icon=vector\n"),
                                  app("noicon", "")};
  QSignalSpy sizeChanged(&cache, &IconCache::preloadedIconSizeChanged);
  QSignalSpy finished(&cache, &IconCache::preloadFinished);
  cache.preload(apps, 64);
  EXPECT_EQ(cache.preloadedIconSize(), 64);
  ASSERT_EQ(sizeChanged.size(), 1);
  ASSERT_TRUE(finished.wait(10000));
  EXPECT_EQ(finished.takeFirst().at(0).toInt(), 64);
  for (const AppInfo& each : apps) EXPECT_TRUE(cache.store().contains(each, 64)) << each.id;

  // The delegates' requests, through the provider a QML engine would use,
  // are answered from memory.
  const auto reads = cache.store().diskReads();
  std::unique_ptr<QQuickImageProvider> provider(cache.makeImageProvider());
  auto* asynchronous = dynamic_cast<QQuickAsyncImageProvider*>(provider.get());
  ASSERT_NE(asynchronous, nullptr);
  for (const AppInfo& each : apps) {
    const QUrl source = cache.source(QString::fromStdString(each.id), 32);
    std::unique_ptr<QQuickImageResponse> response(asynchronous->requestImageResponse(
        source.toString(QUrl::RemoveScheme | QUrl::RemoveAuthority).mid(1), QSize(64, 64)));
    QSignalSpy done(response.get(), &QQuickImageResponse::finished);
    ASSERT_TRUE(done.wait(10000)) << each.id;
    // (The texture factory needs a scene graph, which these tests run without.)
    auto* answer = dynamic_cast<AppIconResponse*>(response.get());
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer->image().size(), QSize(64, 64)) << each.id;
  }
  EXPECT_EQ(cache.store().diskReads(), reads);

  // A new icon size replaces the old images rather than adding to them.
  cache.preload(apps, 96);
  EXPECT_EQ(sizeChanged.size(), 2);
  EXPECT_FALSE(cache.store().contains(apps[0], 64));
  ASSERT_TRUE(finished.wait(10000));
  EXPECT_TRUE(cache.store().contains(apps[0], 96));
}

// The URL a delegate binds to brings the app back to the provider byte
// for byte, however odd its path, the way Qt Quick hands the id over.
TEST_F(IconCacheTest, ImageSourcesCarryTheAppToTheProvider) {
  const std::vector<std::string> paths{"/usr/share/applications/org.example.Files.desktop",
                                       "/opt/My Apps/100% Pure?.desktop",
                                       "/home/z\xc3\xbcrich/#1&v=2.desktop", "/tmp/latin1-\xe9.desktop", ""};
  for (const std::string& url : paths) {
    for (const std::optional<Date> modified :
         {std::optional<Date>(), std::optional<Date>(Date(1'234'567'891ns))}) {
      const AppInfo app{"id", "Name", url, modified};
      const QUrl source = IconCache::imageSource(app, 72);
      ASSERT_TRUE(source.isValid()) << url;
      EXPECT_EQ(source.scheme(), "image");
      EXPECT_EQ(source.host(), IconCache::providerName);
      const QString id = source.toString(QUrl::RemoveScheme | QUrl::RemoveAuthority).mid(1);

      AppIconProvider::Request request = AppIconProvider::parse(id, QSize());
      EXPECT_EQ(request.app.url, url) << id.toStdString();
      EXPECT_EQ(request.app.modified, modified) << id.toStdString();
      EXPECT_EQ(request.pixelSize, 72);
      // The Image's sourceSize (times the pixel ratio) decides when given.
      EXPECT_EQ(AppIconProvider::parse(id, QSize(144, 144)).pixelSize, 144);
    }
  }
  IconCache cache(locator, QStringLiteral("Tiles"), folders());
  EXPECT_EQ(cache.source(QStringLiteral("unknown.desktop"), 48), IconCache::imageSource(AppInfo{}, 48));
}

}  // namespace
}  // namespace orrery::app
