// WallpaperCache: the blurred desktop pictures of the displays, rendered in
// the background, one render per display, picture and size.
//
// refresh() is told what every display needs now (its WallpaperKey and how
// to read its picture). The core's WallpaperBookkeeping decides what to
// start: a key that has an image, is being rendered, or failed before is
// not started again; images no display needs any more are dropped. Each
// render runs on the cache's own pool and reports back to the main thread,
// where the bookkeeping records it. A render that finishes after its
// display moved on (another picture, another size) is stored but not
// published: only a render that is still current emits pictureReady().
// A failed key is logged once ("Schreibtischbild nicht lesbar") and
// announced with renderFailed(); the background then shows glass.
//
// The renderer is a seam: the program reads the picture and blurs it
// (WallpaperBlur); tests hand in one they control.
//
// Thread rules: the cache lives on the main thread, where refresh(),
// image() and the signals are used; image() hands out implicitly shared
// copies. The renderer runs on worker threads.
#pragma once

#include <QImage>
#include <QObject>
#include <QString>
#include <QThreadPool>

#include <cstdint>
#include <expected>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

#include "Orrery/appearance/DesktopPictureSource.h"
#include "OrreryCore/appearance/WallpaperBookkeeping.h"
#include "OrreryCore/appearance/WallpaperKey.h"

namespace orrery::app {

class WallpaperCache final : public QObject {
  Q_OBJECT

 public:
  using Result = std::expected<QImage, QString>;
  // Reads `picture` and renders it for `key`; called on a worker thread.
  using Renderer = std::function<Result(const WallpaperKey& key, const DesktopPicture& picture)>;

  // What one display needs.
  struct Wanted {
    WallpaperKey key;
    DesktopPicture picture;
  };

  // Reads the picture at the working size and blurs it (WallpaperBlur).
  static Result blurredRender(const WallpaperKey& key, const DesktopPicture& picture);

  explicit WallpaperCache(Renderer renderer = &WallpaperCache::blurredRender, QObject* parent = nullptr);
  // Waits for running renders (their results are dropped).
  ~WallpaperCache() override;

  // What the displays need now, by display ID; starts the renders that are
  // missing. A display not named needs nothing.
  void refresh(const std::map<std::uint32_t, Wanted>& displays);

  // The finished image for the display's current key; null when there is
  // none (yet, or because it failed).
  QImage image(std::uint32_t displayID) const;
  // Whether the display's current key failed.
  bool hasFailed(std::uint32_t displayID) const;
  // The bookkeeping, for tests and diagnostics.
  const WallpaperBookkeeping<QImage>& bookkeeping() const { return bookkeeping_; }

  // Waits until no render runs (tests, shutdown).
  void waitForRenders() { pool_.waitForDone(); }

 signals:
  // The display's current image is ready (or replaced).
  void pictureReady(std::uint32_t displayID);
  // The display's current key failed; it will not be tried again.
  void renderFailed(std::uint32_t displayID);

 private:
  void finish(const WallpaperKey& key, Result result);

  Renderer renderer_;
  WallpaperBookkeeping<QImage> bookkeeping_;
  QThreadPool pool_;
};

}  // namespace orrery::app
