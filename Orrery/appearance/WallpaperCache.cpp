#include "Orrery/appearance/WallpaperCache.h"

#include <QElapsedTimer>
#include <QThread>

#include "Orrery/appearance/WallpaperBlur.h"
#include "Orrery/base/Logging.h"

namespace orrery::app {

WallpaperCache::Result WallpaperCache::blurredRender(const WallpaperKey& key, const DesktopPicture& picture) {
  const QSize pixels(static_cast<int>(key.pixelWidth), static_cast<int>(key.pixelHeight));
  if (!picture.load) return std::unexpected(QStringLiteral("kein Leser für %1").arg(picture.name));
  const auto read = picture.load(WallpaperBlur::workSize(pixels));
  if (!read) return std::unexpected(read.error());
  QImage blurred = WallpaperBlur::render(*read, pixels);
  if (blurred.isNull()) return std::unexpected(picture.name + QStringLiteral(": leeres Bild"));
  return blurred;
}

WallpaperCache::WallpaperCache(Renderer renderer, QObject* parent)
    : QObject(parent), renderer_(std::move(renderer)) {
  // One render at a time at low priority: the overlay's drawing and the
  // icon loads come first, and a second display's render can wait.
  pool_.setMaxThreadCount(1);
  pool_.setThreadPriority(QThread::LowPriority);
}

WallpaperCache::~WallpaperCache() { pool_.waitForDone(); }

void WallpaperCache::refresh(const std::map<std::uint32_t, Wanted>& displays) {
  std::map<std::uint32_t, WallpaperKey> keys;
  for (const auto& [displayID, wanted] : displays) keys.emplace(displayID, wanted.key);
  for (const WallpaperKey& key : bookkeeping_.refresh(std::move(keys))) {
    const DesktopPicture picture = displays.at(key.displayID).picture;
    pool_.start([this, key, picture, renderer = renderer_] {
      QElapsedTimer timer;
      timer.start();
      Result result = renderer(key, picture);
      if (result) {
        // The display's size: what the render is for and is drawn at.
        qCInfo(appearanceLog, "Schreibtischbild weichgezeichnet: erfolgreich in %.*f ms (%ld×%ld)", 1,
               static_cast<double>(timer.nsecsElapsed()) / 1e6, static_cast<long>(key.pixelWidth),
               static_cast<long>(key.pixelHeight));
      }
      // Back on the main thread; dropped if the cache is gone by then.
      QMetaObject::invokeMethod(
          this, [this, key, result = std::move(result)]() mutable { finish(key, std::move(result)); },
          Qt::QueuedConnection);
    });
  }
}

void WallpaperCache::finish(const WallpaperKey& key, Result result) {
  std::optional<QImage> image;
  QString reason;
  if (result && !result->isNull())
    image = std::move(*result);
  else
    reason = result ? QStringLiteral("leeres Bild") : result.error();
  const auto finished = bookkeeping_.finish(key, std::move(image));
  if (finished.logFailure)
    qCWarning(appearanceLog, "Schreibtischbild nicht lesbar (%s); Glas als Ersatz", qUtf8Printable(reason));
  if (finished.published) emit pictureReady(key.displayID);
  const auto shown = bookkeeping_.current.find(key.displayID);
  if (!result && shown != bookkeeping_.current.end() && shown->second == key)
    emit renderFailed(key.displayID);
}

QImage WallpaperCache::image(std::uint32_t displayID) const {
  const QImage* image = bookkeeping_.image(displayID);
  return image != nullptr ? *image : QImage();
}

bool WallpaperCache::hasFailed(std::uint32_t displayID) const {
  const auto key = bookkeeping_.current.find(displayID);
  return key != bookkeeping_.current.end() && bookkeeping_.failed.contains(key->second);
}

}  // namespace orrery::app
