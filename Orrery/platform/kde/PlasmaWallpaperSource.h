// PlasmaWallpaperSource: the desktop picture of KDE Plasma, read from the
// shell's applet configuration ("plasma-org.kde.plasma.desktop-appletsrc"
// in the XDG config folder) and watched there.
//
// Each desktop is a containment group "[Containments][N]" with the screen
// it was last on (lastScreen) and its wallpaper plugin; the image plugin
// keeps its picture in "[Containments][N][Wallpaper][org.kde.image]
// [General]" under Image=, as a file URL or a path. The picture may also
// be a wallpaper package, a folder whose contents/images/ holds one file
// per size ("1920x1080.jpg"): the smallest that covers the screen is taken,
// else the largest. The desktop of the lowest screen number wins; Plasma
// sets one picture per screen, the overlay shows one.
//
// Thread rules: main thread (it watches the file).
#pragma once

#include <QSize>
#include <QString>

#include <optional>

#include "Orrery/appearance/DesktopPictureSource.h"
#include "Orrery/platform/qt/WatchedFile.h"

namespace orrery::platform {

class PlasmaWallpaperSource final : public app::DesktopPictureSource {
 public:
  // `configFile` is the applet configuration's path; `screenPixels` the
  // size a wallpaper package's picture is chosen for.
  explicit PlasmaWallpaperSource(QString configFile, QSize screenPixels = {1920, 1080});

  std::optional<app::DesktopPicture> current() override;

  // The picture file `configFile` names; nothing when it names none.
  static std::optional<QString> pictureIn(const QString& configFile, QSize screenPixels);

 private:
  QSize screenPixels_;
  WatchedFile file_;
};

}  // namespace orrery::platform
