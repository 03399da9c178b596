// GnomeWallpaperSource: the desktop picture of GNOME (and of the desktops
// that share its settings), read through GSettings and watched there.
//
// org.gnome.desktop.background keeps "picture-uri" and, since GNOME 42,
// "picture-uri-dark", which is shown while org.gnome.desktop.interface
// "color-scheme" is "prefer-dark". "picture-options" "none" means no
// picture. The URI may name an XML slideshow: a start time and a cycle of
// static pictures and transitions, each with a duration; the picture of
// the moment is taken (a transition counts as the picture it leads to),
// with the time until the slideshow moves on.
//
// GSettings signals arrive through GLib's main context, which Qt's event
// loop runs on Linux.
//
// Thread rules: main thread.
#pragma once

#include <QDateTime>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "Orrery/appearance/DesktopPictureSource.h"

using GSettings = struct _GSettings;

namespace orrery::platform {

class GnomeWallpaperSource final : public app::DesktopPictureSource {
 public:
  // The picture of a slideshow at one moment, and how long it stays.
  struct SlideshowFrame {
    QString file;
    std::chrono::seconds remaining{0};
    friend bool operator==(const SlideshowFrame&, const SlideshowFrame&) = default;
  };

  using Now = std::function<QDateTime()>;

  // Nothing when GNOME's background schema is not installed. `now` is the
  // wall time slideshows are read at.
  static std::unique_ptr<GnomeWallpaperSource> fromSettings(Now now);
  ~GnomeWallpaperSource() override;

  std::optional<app::DesktopPicture> current() override;

  // The URI shown for the colour scheme: the dark one when dark is
  // preferred and it is set, else the light one.
  static QString chosenUri(const QString& lightUri, const QString& darkUri, bool prefersDark);
  // The picture of the slideshow `xmlFile` at `now`; nothing when the file
  // is not a slideshow or names no picture.
  static std::optional<SlideshowFrame> slideshowFrame(const QString& xmlFile, const QDateTime& now);

 private:
  GnomeWallpaperSource(Now now, GSettings* background, GSettings* interface, bool hasDarkPicture);
  static void onChanged(GSettings* settings, const char* key, void* self);

  Now now_;
  GSettings* background_;
  GSettings* interface_;  // null without a colour scheme key
  bool hasDarkPicture_;
};

}  // namespace orrery::platform
