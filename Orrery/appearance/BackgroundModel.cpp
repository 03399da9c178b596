#include "Orrery/appearance/BackgroundModel.h"

#include <QGuiApplication>
#include <QHash>
#include <QQmlEngine>
#include <QQuickImageProvider>
#include <QQuickItem>
#include <QQuickView>
#include <QQuickWindow>
#include <QScreen>
#include <QSurfaceFormat>

#include <algorithm>
#include <cmath>
#include <map>
#include <mutex>
#include <string>

#include "Orrery/base/Logging.h"
#include "OrreryCore/appearance/HexColor.h"

namespace orrery::app {
namespace {

// Glass: a cool dark tint; over the live desktop it lets a good part
// through, alone (no compositor, no picture yet) it is opaque.
constexpr QColor kGlassTint(24, 28, 36, 150);
constexpr QColor kGlassOpaque(28, 32, 40);
// The veil keeps the picture's mean brightness (0…1, of the encoded
// values) under these, so light labels stay readable; glass without a
// compositor is the same picture under a darker veil.
constexpr double kPictureBrightness = 0.5;
constexpr double kPictureMinimumVeil = 0.15;
constexpr double kGlassBrightness = 0.32;
constexpr double kGlassMinimumVeil = 0.4;

double veilFor(double brightness, double target, double minimum) {
  if (brightness <= target) return minimum;
  return std::clamp(1.0 - target / brightness, minimum, 1.0);
}

// The mean brightness of an opaque picture, from a grid of samples.
double brightnessOf(const QImage& image) {
  if (image.isNull()) return 0;
  const QImage rgb =
      image.format() == QImage::Format_RGB32 || image.format() == QImage::Format_ARGB32_Premultiplied
          ? image
          : image.convertToFormat(QImage::Format_RGB32);
  const int step = std::max(1, std::min(rgb.width(), rgb.height()) / 64);
  double sum = 0;
  long count = 0;
  for (int y = step / 2; y < rgb.height(); y += step) {
    const auto* line = reinterpret_cast<const QRgb*>(rgb.constScanLine(y));
    for (int x = step / 2; x < rgb.width(); x += step) {
      const QRgb pixel = line[x];
      sum += 0.2126 * qRed(pixel) + 0.7152 * qGreen(pixel) + 0.0722 * qBlue(pixel);
      ++count;
    }
  }
  return count == 0 ? 0 : sum / static_cast<double>(count) / 255.0;
}

}  // namespace

// The images the view is shown, by display ID, shared with the provider.
struct BackgroundModel::Published {
  std::mutex mutex;
  std::map<std::uint32_t, QImage> images;

  void set(std::uint32_t displayID, QImage image) {
    std::lock_guard lock(mutex);
    if (image.isNull())
      images.erase(displayID);
    else
      images.insert_or_assign(displayID, std::move(image));
  }
  QImage get(std::uint32_t displayID) {
    std::lock_guard lock(mutex);
    const auto found = images.find(displayID);
    return found == images.end() ? QImage() : found->second;
  }
};

namespace {

// image://wallpaper/<display ID>/<serial>: the serial only makes a new
// image a new URL.
class WallpaperProvider final : public QQuickImageProvider {
 public:
  using Lookup = std::function<QImage(std::uint32_t)>;
  explicit WallpaperProvider(Lookup lookup)
      : QQuickImageProvider(QQuickImageProvider::Image), lookup_(std::move(lookup)) {}

  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override {
    bool ok = false;
    const std::uint32_t displayID = id.section(u'/', 0, 0).toUInt(&ok);
    QImage image = ok ? lookup_(displayID) : QImage();
    if (!image.isNull() && requestedSize.isValid() && !requestedSize.isEmpty() &&
        requestedSize != image.size())
      image = image.scaled(requestedSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (size != nullptr) *size = image.size();
    return image;
  }

 private:
  Lookup lookup_;
};

}  // namespace

BackgroundModel::BackgroundModel(DesktopPictureSource& source, Clock& clock,
                                 WallpaperCache::Renderer renderer, QObject* parent)
    : QObject(parent),
      source_(source),
      clock_(clock),
      cache_(std::move(renderer)),
      published_(std::make_shared<Published>()),
      solidHex_(QString::fromLatin1(HexColor::fallbackHex.data(),
                                    static_cast<qsizetype>(HexColor::fallbackHex.size()))) {
  source_.setOnChanged([this] {
    refreshRenders();
    update();
  });
  connect(&cache_, &WallpaperCache::pictureReady, this, [this](std::uint32_t displayID) {
    if (displayID == current_) update();
  });
  update();
}

BackgroundModel::~BackgroundModel() { source_.setOnChanged({}); }

QQuickImageProvider* BackgroundModel::makeImageProvider() const {
  return new WallpaperProvider(
      [published = published_](std::uint32_t displayID) { return published->get(displayID); });
}

std::uint32_t BackgroundModel::displayID(const QScreen& screen) {
  return static_cast<std::uint32_t>(qHash(screen.name(), 0));
}

void BackgroundModel::attach(QQuickView& view, std::function<bool()> composited) {
  view.engine()->addImageProvider(QLatin1String(providerName), makeImageProvider());
  if (QQuickItem* root = view.rootObject())
    root->setProperty("background", QVariant::fromValue<QObject*>(this));
  QQuickWindow& window = view;
  window_ = &window;
  // Premultiplied alpha: without a compositor the alpha channel is simply
  // not used, and every look but composited glass is opaque anyway.
  QSurfaceFormat format = window.format();
  format.setAlphaBufferSize(8);
  window.setFormat(format);
  window.setColor(Qt::transparent);

  // Known before the screens are, so glass over a compositor starts no render.
  if (composited) setComposited(composited());
  connect(&window, &QWindow::visibleChanged, this, [this, composited = std::move(composited)](bool visible) {
    if (!visible) return;
    if (composited) setComposited(composited());
    followScreens();
    // The picture may have been replaced in place while hidden, unannounced.
    if (wantsPicture()) {
      refreshRenders();
      update();
    }
  });
  connect(&window, &QWindow::screenChanged, this, &BackgroundModel::followScreens);
  const auto watchScreen = [this](QScreen* screen) {
    connect(screen, &QScreen::geometryChanged, this, &BackgroundModel::followScreens);
    connect(screen, &QScreen::physicalDotsPerInchChanged, this, &BackgroundModel::followScreens);
  };
  for (QScreen* screen : QGuiApplication::screens()) watchScreen(screen);
  connect(qGuiApp, &QGuiApplication::screenAdded, this, [this, watchScreen](QScreen* screen) {
    watchScreen(screen);
    followScreens();
  });
  connect(qGuiApp, &QGuiApplication::screenRemoved, this, &BackgroundModel::followScreens,
          Qt::QueuedConnection);
  followScreens();
}

void BackgroundModel::followScreens() {
  std::vector<Display> displays;
  for (const QScreen* screen : QGuiApplication::screens()) {
    const QSize pixels = (QSizeF(screen->geometry().size()) * screen->devicePixelRatio()).toSize();
    displays.push_back({displayID(*screen), pixels});
  }
  const QScreen* shown = window_ != nullptr && window_->screen() != nullptr
                             ? window_->screen()
                             : QGuiApplication::primaryScreen();
  setDisplays(std::move(displays), shown != nullptr ? displayID(*shown) : 0);
}

void BackgroundModel::setSettings(const Settings& settings) {
  const QString hex = QString::fromStdString(settings.solidColorHex);
  if (settings.background == style_ && hex == solidHex_) return;
  style_ = settings.background;
  solidHex_ = hex;
  refreshRenders();
  update();
}

void BackgroundModel::setDisplays(std::vector<Display> displays, std::uint32_t current) {
  if (displays == displays_ && current == current_) return;
  displays_ = std::move(displays);
  current_ = current;
  refreshRenders();
  update();
}

void BackgroundModel::setComposited(bool composited) {
  if (composited == composited_) return;
  composited_ = composited;
  refreshRenders();
  update();
}

bool BackgroundModel::wantsPicture() const {
  return style_ == BackgroundStyle::blurredWallpaper || (style_ == BackgroundStyle::glass && !composited_);
}

void BackgroundModel::refreshRenders() {
  std::map<std::uint32_t, WallpaperCache::Wanted> wanted;
  nextPicture_.cancel();
  if (wantsPicture() && !displays_.empty()) {
    if (std::optional<DesktopPicture> picture = source_.current()) {
      noPictureLogged_ = false;
      if (picture->changesIn) {
        nextPicture_ = clock_.runAfter(*picture->changesIn + std::chrono::seconds(1), [this] {
          refreshRenders();
          update();
        });
      }
      for (const Display& display : displays_) {
        if (display.pixels.isEmpty()) continue;
        WallpaperKey key{display.id, picture->name.toStdString(), display.pixels.width(),
                         display.pixels.height(), picture->version.toStdString()};
        wanted.emplace(display.id, WallpaperCache::Wanted{std::move(key), *picture});
      }
    } else if (!noPictureLogged_) {
      noPictureLogged_ = true;
      qCWarning(appearanceLog, "Schreibtischbild nicht lesbar (%s); Glas als Ersatz",
                "kein Schreibtischbild eingestellt");
    }
  }
  cache_.refresh(wanted);
}

void BackgroundModel::update() {
  QColor fill;
  QUrl picture;
  double veil = 0;
  bool isDark = true;
  if (style_ == BackgroundStyle::solid) {
    const HexColor color = HexColor::resolved(solidHex_.toStdString());
    fill = QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                            static_cast<float>(color.blue));
    isDark = color.isDark();
    published_->set(current_, {});
  } else {
    fill = composited_ ? kGlassTint : kGlassOpaque;
    const QImage image = wantsPicture() ? cache_.image(current_) : QImage();
    if (image.cacheKey() != published_->get(current_).cacheKey() || image.isNull()) {
      if (!image.isNull()) {
        ++serial_;
        pictureBrightness_ = brightnessOf(image);
      }
      published_->set(current_, image);
    }
    if (!image.isNull()) {
      picture = QUrl(
          QStringLiteral("image://%1/%2/%3").arg(QLatin1String(providerName)).arg(current_).arg(serial_));
      veil = style_ == BackgroundStyle::glass
                 ? veilFor(pictureBrightness_, kGlassBrightness, kGlassMinimumVeil)
                 : veilFor(pictureBrightness_, kPictureBrightness, kPictureMinimumVeil);
    }
  }
  if (fill == fill_ && picture == picture_ && veil == veil_ && isDark == isDark_) return;
  fill_ = fill;
  picture_ = picture;
  veil_ = veil;
  isDark_ = isDark;
  emit changed();
}

}  // namespace orrery::app
