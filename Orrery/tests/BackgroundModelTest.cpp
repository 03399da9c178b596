// The overlay's background through the app side: the bookkeeping of renders
// (WallpaperCache) driven by BackgroundModel with a renderer the test
// releases by hand, and what the view is told to draw.
#include <QFileInfo>
#include <QQuickImageProvider>
#include <QQuickView>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Orrery/appearance/BackgroundModel.h"
#include "Orrery/platform/qt/PictureFiles.h"
#include "Orrery/tests/LogCapture.h"
#include "Orrery/tests/ManualClock.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::app {
namespace {

using Result = WallpaperCache::Result;

// A renderer that records each call and blocks it until the test releases
// that key with a result.
class GatedRenderer {
 public:
  WallpaperCache::Renderer renderer() {
    return [this](const WallpaperKey& key, const DesktopPicture&) {
      std::unique_lock lock(mutex_);
      calls_.push_back(key);
      changed_.notify_all();
      changed_.wait(lock, [&] { return open_ || results_.contains(name(key)); });
      const auto result = results_.find(name(key));
      return result != results_.end() ? result->second : Result(std::unexpected(QStringLiteral("ended")));
    };
  }
  void release(const WallpaperKey& key, Result result) {
    std::lock_guard lock(mutex_);
    results_.insert_or_assign(name(key), std::move(result));
    changed_.notify_all();
  }
  std::vector<WallpaperKey> calls() const {
    std::lock_guard lock(mutex_);
    return calls_;
  }
  // Lets every render, waiting or still to come, end (as a failure), so
  // the cache's pool can finish.
  void releaseAll() {
    std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }

 private:
  static std::string name(const WallpaperKey& key) {
    return key.url + "@" + std::to_string(key.displayID) + ":" + std::to_string(key.pixelWidth) + "x" +
           std::to_string(key.pixelHeight) + "#" + key.version;
  }
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<WallpaperKey> calls_;
  std::map<std::string, Result> results_;
  bool open_ = false;
};

class FakePictures final : public DesktopPictureSource {
 public:
  std::optional<DesktopPicture> current() override {
    if (name.isEmpty()) return std::nullopt;
    // A real file's picture, with the version the desktop readers give it.
    if (name.startsWith(u'/') && QFileInfo::exists(name)) return platform::pictureFile(name);
    return DesktopPicture{name, [](QSize) -> std::expected<QImage, QString> { return QImage(); }, changesIn};
  }
  std::optional<std::chrono::seconds> changesIn;
  void set(const QString& picture) {
    name = picture;
    announceChange();
  }
  QString name;
};

QImage filled(QSize size, QColor color) {
  QImage image(size, QImage::Format_RGB32);
  image.fill(color);
  return image;
}

Settings withBackground(BackgroundStyle style, std::string hex = "#1E1E1E") {
  Settings settings;
  settings.background = style;
  settings.solidColorHex = std::move(hex);
  return settings;
}

class BackgroundModelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    pictures.name = QStringLiteral("/pictures/dunes.jpg");
    model = std::make_unique<BackgroundModel>(pictures, clock, gate.renderer());
  }
  void TearDown() override {
    gate.releaseAll();
    model.reset();
  }

  static WallpaperKey key(const char* url, std::int64_t width = 1280, std::int64_t height = 800,
                          std::uint32_t display = 7) {
    return WallpaperKey{display, url, width, height};
  }
  // Waits (processing events) until the renderer has been called `count` times.
  bool waitForCalls(std::size_t count) {
    return QTest::qWaitFor([&] { return gate.calls().size() >= count; }, 5000);
  }
  bool waitUntilDone(const WallpaperKey& done) {
    return QTest::qWaitFor([&] { return !model->cache().bookkeeping().inFlight.contains(done); }, 5000);
  }

  GatedRenderer gate;
  testing::ManualClock clock;
  FakePictures pictures;
  std::unique_ptr<BackgroundModel> model;
};

TEST_F(BackgroundModelTest, ShowsGlassUntilTheRenderArrivesThenThePictureUnderAVeil) {
  testing::LogCapture log;
  model->setDisplays({{7, {1280, 800}}}, 7);
  ASSERT_TRUE(waitForCalls(1));
  EXPECT_EQ(gate.calls().front(), key("/pictures/dunes.jpg"));
  // Nothing to wait for: the fill is there, the picture is not.
  EXPECT_TRUE(model->picture().isEmpty());
  EXPECT_EQ(model->fill().alpha(), 255);
  EXPECT_TRUE(model->isDark());

  QSignalSpy changed(model.get(), &BackgroundModel::changed);
  gate.release(key("/pictures/dunes.jpg"), filled({1280, 800}, Qt::white));
  ASSERT_TRUE(changed.wait(5000));
  ASSERT_FALSE(model->picture().isEmpty());
  // A white picture gets a strong veil, so the light labels stay readable.
  EXPECT_GT(model->veil(), 0.4);
  EXPECT_TRUE(model->isDark());
  const auto lines = log.lines();
  EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
    return line.starts_with(
               "ch.lumenfold.orrery.appearance: Schreibtischbild weichgezeichnet: erfolgreich in ") &&
           line.ends_with(" ms (1280×800)");
  }));

  // The view reads the picture through the provider at that URL.
  std::unique_ptr<QQuickImageProvider> provider(model->makeImageProvider());
  QSize size;
  const QString id = model->picture().toString().section(QStringLiteral("image://wallpaper/"), 1);
  const QImage served = provider->requestImage(id, &size, {});
  EXPECT_EQ(size, QSize(1280, 800));
  EXPECT_EQ(served.pixelColor(10, 10), QColor(Qt::white));
}

TEST_F(BackgroundModelTest, ALateRenderForAChangedPictureIsKeptButNotShown) {
  model->setDisplays({{7, {1280, 800}}}, 7);
  ASSERT_TRUE(waitForCalls(1));
  pictures.set(QStringLiteral("/pictures/forest.png"));

  QSignalSpy ready(&model->cache(), &WallpaperCache::pictureReady);
  gate.release(key("/pictures/dunes.jpg"), filled({1280, 800}, Qt::red));
  ASSERT_TRUE(waitUntilDone(key("/pictures/dunes.jpg")));
  EXPECT_TRUE(ready.isEmpty());
  EXPECT_TRUE(model->cache().bookkeeping().images.contains(key("/pictures/dunes.jpg")));
  EXPECT_TRUE(model->picture().isEmpty());

  // The render of the new picture is what shows.
  ASSERT_TRUE(waitForCalls(2));
  EXPECT_EQ(gate.calls().at(1), key("/pictures/forest.png"));
  gate.release(key("/pictures/forest.png"), filled({1280, 800}, Qt::darkGreen));
  ASSERT_TRUE(ready.wait(5000));
  EXPECT_EQ(model->cache().image(7).pixelColor(0, 0), QColor(Qt::darkGreen));
  EXPECT_FALSE(model->picture().isEmpty());
}

TEST_F(BackgroundModelTest, AFailedPictureIsLoggedOnceAndNotTriedAgainUntilItChanges) {
  testing::LogCapture log;
  model->setDisplays({{7, {1280, 800}}}, 7);
  ASSERT_TRUE(waitForCalls(1));
  QSignalSpy failed(&model->cache(), &WallpaperCache::renderFailed);
  gate.release(key("/pictures/dunes.jpg"),
               std::unexpected(QStringLiteral("/pictures/dunes.jpg: Unsupported")));
  ASSERT_TRUE(failed.wait(5000));
  EXPECT_TRUE(
      log.contains("ch.lumenfold.orrery.appearance: Schreibtischbild nicht lesbar "
                   "(/pictures/dunes.jpg: Unsupported); Glas als Ersatz"));

  // The desktop says the picture changed, but it is the same one; a second
  // display comes and the overlay moves there and back: never again.
  pictures.set(QStringLiteral("/pictures/dunes.jpg"));
  model->setDisplays({{7, {1280, 800}}, {8, {1024, 768}}}, 8);
  model->setDisplays({{7, {1280, 800}}, {8, {1024, 768}}}, 7);
  ASSERT_TRUE(waitForCalls(2));
  QTest::qWait(50);
  ASSERT_EQ(gate.calls().size(), 2u);
  EXPECT_EQ(gate.calls().at(1), key("/pictures/dunes.jpg", 1024, 768, 8));
  EXPECT_TRUE(model->picture().isEmpty());
  EXPECT_EQ(model->fill().alpha(), 255);  // glass stands in, never black

  // A new picture is a new key.
  pictures.set(QStringLiteral("/pictures/forest.png"));
  gate.release(key("/pictures/dunes.jpg", 1024, 768, 8), filled({1024, 768}, Qt::gray));
  ASSERT_TRUE(waitForCalls(3));
  const auto lines = log.lines();
  EXPECT_EQ(
      std::count_if(lines.begin(), lines.end(),
                    [](const std::string& line) { return line.find("nicht lesbar") != std::string::npos; }),
      1);
}

TEST_F(BackgroundModelTest, ANewScreenSizeStartsANewRender) {
  model->setDisplays({{7, {1280, 800}}}, 7);
  ASSERT_TRUE(waitForCalls(1));
  gate.release(key("/pictures/dunes.jpg"), filled({1280, 800}, Qt::blue));
  ASSERT_TRUE(QTest::qWaitFor([&] { return !model->picture().isEmpty(); }, 5000));

  model->setDisplays({{7, {2560, 1600}}}, 7);
  ASSERT_TRUE(waitForCalls(2));
  EXPECT_EQ(gate.calls().at(1), key("/pictures/dunes.jpg", 2560, 1600));
  // The old size's picture is no longer the display's.
  EXPECT_TRUE(model->picture().isEmpty());
  EXPECT_FALSE(model->cache().bookkeeping().images.contains(key("/pictures/dunes.jpg")));
}

TEST_F(BackgroundModelTest, SolidColourDecidesTheLabelsAndStartsNoRender) {
  model->setSettings(withBackground(BackgroundStyle::solid, "#F0F0F0"));
  model->setDisplays({{7, {1280, 800}}}, 7);
  EXPECT_EQ(model->fill(), QColor(0xF0, 0xF0, 0xF0));
  EXPECT_FALSE(model->isDark());
  EXPECT_TRUE(model->picture().isEmpty());

  model->setSettings(withBackground(BackgroundStyle::solid, "#1e1E1e"));
  EXPECT_EQ(model->fill(), QColor(0x1E, 0x1E, 0x1E));
  EXPECT_TRUE(model->isDark());
  // A malformed colour is the default colour, not black or white.
  model->setSettings(withBackground(BackgroundStyle::solid, "#GGGGGG"));
  EXPECT_EQ(model->fill(), QColor(0x1E, 0x1E, 0x1E));
  QTest::qWait(20);
  EXPECT_TRUE(gate.calls().empty());
}

TEST_F(BackgroundModelTest, GlassShowsTheDesktopWhereAComposerRunsElseADarkerBlur) {
  model->setSettings(withBackground(BackgroundStyle::glass));
  model->setComposited(true);
  model->setDisplays({{7, {1280, 800}}}, 7);
  EXPECT_LT(model->fill().alpha(), 255);
  EXPECT_TRUE(model->picture().isEmpty());
  QTest::qWait(20);
  EXPECT_TRUE(gate.calls().empty());

  // The compositor went away: the window cannot see through any more.
  model->setComposited(false);
  EXPECT_EQ(model->fill().alpha(), 255);
  ASSERT_TRUE(waitForCalls(1));
  gate.release(key("/pictures/dunes.jpg"), filled({1280, 800}, QColor(40, 40, 40)));
  ASSERT_TRUE(QTest::qWaitFor([&] { return !model->picture().isEmpty(); }, 5000));
  EXPECT_GE(model->veil(), 0.4);
  EXPECT_TRUE(model->isDark());
}

TEST_F(BackgroundModelTest, ASlideshowIsAskedAgainWhenItMovesOn) {
  pictures.changesIn = std::chrono::seconds(90);
  model->setDisplays({{7, {1280, 800}}}, 7);
  ASSERT_TRUE(waitForCalls(1));
  gate.release(key("/pictures/dunes.jpg"), filled({1280, 800}, Qt::blue));
  // The desktop's slideshow moves on without telling anyone.
  pictures.name = QStringLiteral("/pictures/slide-2.jpg");
  clock.advance(std::chrono::seconds(60));
  QTest::qWait(20);
  EXPECT_EQ(gate.calls().size(), 1u);
  clock.advance(std::chrono::seconds(31));
  ASSERT_TRUE(waitForCalls(2));
  EXPECT_EQ(gate.calls().at(1), key("/pictures/slide-2.jpg"));
}

TEST_F(BackgroundModelTest, AttachedToAWindowOverACompositorGlassStartsNoRender) {
  model->setSettings(withBackground(BackgroundStyle::glass));
  QQuickView view;
  int probes = 0;
  model->attach(view, [&] {
    ++probes;
    return true;
  });
  view.show();
  EXPECT_GE(probes, 2);  // when attached, and again when shown
  EXPECT_EQ(view.requestedFormat().alphaBufferSize(), 8);
  EXPECT_LT(model->fill().alpha(), 255);
  QTest::qWait(20);
  EXPECT_TRUE(gate.calls().empty());
}

TEST_F(BackgroundModelTest, NoPictureAtAllIsGlass) {
  testing::LogCapture log;
  pictures.name.clear();
  model->setDisplays({{7, {1280, 800}}}, 7);
  EXPECT_TRUE(model->picture().isEmpty());
  EXPECT_EQ(model->fill().alpha(), 255);
  EXPECT_TRUE(
      log.contains("ch.lumenfold.orrery.appearance: Schreibtischbild nicht lesbar "
                   "(kein Schreibtischbild eingestellt); Glas als Ersatz"));
  QTest::qWait(20);
  EXPECT_TRUE(gate.calls().empty());
}

// Some desktops write every new picture to the same file. Nothing announces
// that, so the picture is asked for again at each show, and the file's
// version tells a replaced picture from the one already rendered.
TEST_F(BackgroundModelTest, APictureReplacedInPlaceIsRenderedAgainAtTheNextShow) {
  const orrery::testing::TemporaryDirectory folder("orrery-background");
  const QString path = QString::fromStdString((folder.path() / "wallpaper.png").string());
  ASSERT_TRUE(filled({64, 40}, Qt::blue).save(path));
  pictures.name = path;
  model->setSettings(withBackground(BackgroundStyle::blurredWallpaper));
  QQuickView view;
  model->attach(view, [] { return false; });
  view.show();
  ASSERT_TRUE(waitForCalls(1));
  const WallpaperKey first = gate.calls().at(0);
  EXPECT_EQ(first.url, path.toStdString());
  EXPECT_FALSE(first.version.empty());
  gate.release(first, filled({64, 40}, Qt::blue));
  ASSERT_TRUE(waitUntilDone(first));

  // Shown again with the same file: nothing to do.
  view.hide();
  view.show();
  QTest::qWait(20);
  EXPECT_EQ(gate.calls().size(), 1u);

  view.hide();
  ASSERT_TRUE(filled({96, 60}, Qt::red).save(path));
  view.show();
  ASSERT_TRUE(waitForCalls(2));
  const WallpaperKey second = gate.calls().at(1);
  EXPECT_EQ(second.url, first.url);
  EXPECT_NE(second.version, first.version);
}

}  // namespace
}  // namespace orrery::app
