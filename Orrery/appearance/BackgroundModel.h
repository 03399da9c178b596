// BackgroundModel: what the overlay draws behind its grid, for the view
// (Background.qml) and for the colour of the labels.
//
// The setting `background` chooses one of three looks:
// - blurredWallpaper: the desktop picture of the overlay's display, blurred
//   (WallpaperCache renders it in the background). Until the render is
//   ready, and for good when the picture cannot be read, glass shows
//   instead; the view cross-fades to the picture when it arrives, so the
//   first frame never waits for a blur.
// - glass: where a compositor runs, a translucent tint over the live
//   desktop (the window has an alpha channel); without one the window
//   would show black, so glass is then the blurred picture under a darker
//   veil.
// - solid: the colour of `solidColorHex` (HexColor::resolved, so a bad text
//   gives the default colour).
// A black veil over the picture keeps light labels readable on a light
// picture. isDark tells the view whether labels, page dots and the search
// field must be light (on every picture and on glass) or dark (on a light
// solid colour).
//
// The displays, the compositor and the settings are told from outside:
// attach() follows the overlay window's screen, Qt's screens and the
// compositor (checked at every show, as it may come and go); tests call
// setDisplays() and setComposited() themselves. The pictures are served to
// QML by an image provider (makeImageProvider()) at `picture`, a URL that
// changes whenever the image does.
//
// Thread rules: main thread only; the image provider it makes is safe on
// Qt Quick's loader threads.
#pragma once

#include <QColor>
#include <QImage>
#include <QObject>
#include <QPointer>
#include <QSize>
#include <QString>
#include <QUrl>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "Orrery/appearance/DesktopPictureSource.h"
#include "Orrery/appearance/WallpaperCache.h"
#include "Orrery/base/Clock.h"
#include "OrreryCore/settings/Settings.h"

class QQuickImageProvider;
class QQuickView;
class QQuickWindow;
class QScreen;

namespace orrery::app {

class BackgroundModel final : public QObject {
  Q_OBJECT
  Q_PROPERTY(QColor fill READ fill NOTIFY changed)
  Q_PROPERTY(QUrl picture READ picture NOTIFY changed)
  Q_PROPERTY(double veil READ veil NOTIFY changed)
  Q_PROPERTY(bool isDark READ isDark NOTIFY changed)

 public:
  // The host of the picture URLs, the name the provider is registered under.
  static constexpr const char* providerName = "wallpaper";

  struct Display {
    std::uint32_t id = 0;
    QSize pixels;
    friend bool operator==(const Display&, const Display&) = default;
  };

  // `source` and `clock` must outlive the model; the clock times the
  // return of a slideshow's next picture. `renderer` renders on the
  // cache's worker (tests pass one they control).
  BackgroundModel(DesktopPictureSource& source, Clock& clock,
                  WallpaperCache::Renderer renderer = &WallpaperCache::blurredRender,
                  QObject* parent = nullptr);
  ~BackgroundModel() override;

  // A provider for a QML engine, which takes ownership.
  QQuickImageProvider* makeImageProvider() const;

  // Becomes the background of the overlay's `view`: registers the image
  // provider, hands itself to the root item's `background` property,
  // follows the window's screen and the application's screens, and checks
  // `composited` whenever the window is shown. Gives the window an alpha
  // channel, so glass can show the desktop; call before it is first shown.
  void attach(QQuickView& view, std::function<bool()> composited);

  void setSettings(const Settings& settings);
  // Every display by ID with its size in pixels, and the one the overlay is on.
  void setDisplays(std::vector<Display> displays, std::uint32_t current);
  // Whether a compositor draws translucent windows over the desktop.
  void setComposited(bool composited);

  QColor fill() const { return fill_; }
  // Glass over a compositor: the desktop shows through, and a compositor
  // that can blur it behind the window should.
  bool blursBehind() const { return style_ == BackgroundStyle::glass && composited_; }
  QUrl picture() const { return picture_; }
  double veil() const { return veil_; }
  bool isDark() const { return isDark_; }

  const WallpaperCache& cache() const { return cache_; }
  // The ID of a screen as the displays above name it.
  static std::uint32_t displayID(const QScreen& screen);

 signals:
  void changed();

 private:
  struct Published;

  bool wantsPicture() const;
  void refreshRenders();
  void update();
  void followScreens();

  DesktopPictureSource& source_;
  Clock& clock_;
  ScheduledAction nextPicture_;  // a slideshow's next picture
  WallpaperCache cache_;
  std::shared_ptr<Published> published_;
  BackgroundStyle style_ = BackgroundStyle::blurredWallpaper;
  QString solidHex_;
  std::vector<Display> displays_;
  std::uint32_t current_ = 0;
  bool composited_ = false;
  bool noPictureLogged_ = false;
  std::uint64_t serial_ = 0;
  double pictureBrightness_ = 0;
  QPointer<QQuickWindow> window_;

  QColor fill_;
  QUrl picture_;
  double veil_ = 0;
  bool isDark_ = true;
};

}  // namespace orrery::app
