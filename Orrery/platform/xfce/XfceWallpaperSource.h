// XfceWallpaperSource: the desktop picture of Xfce, read from xfconf's
// channel file of the desktop ("xfce4/xfconf/xfce-perchannel-xml/
// xfce4-desktop.xml" in the XDG config folder) and watched there.
//
// xfdesktop keeps one picture per screen, monitor and workspace, as
// /backdrop/screen0/<monitor>/workspace<N>/last-image (older versions:
// .../image-path). The first workspace of the first monitor listed wins,
// else any picture the channel names. xfconfd writes the file a moment
// after a change and replaces it whole, which the watch follows.
//
// Thread rules: main thread (it watches the file).
#pragma once

#include <QString>

#include <optional>

#include "Orrery/appearance/DesktopPictureSource.h"
#include "Orrery/platform/qt/WatchedFile.h"

namespace orrery::platform {

class XfceWallpaperSource final : public app::DesktopPictureSource {
 public:
  explicit XfceWallpaperSource(QString channelFile);

  std::optional<app::DesktopPicture> current() override;

  // The picture file the channel file names; nothing when it names none.
  static std::optional<QString> pictureIn(const QString& channelFile);

 private:
  WatchedFile file_;
};

}  // namespace orrery::platform
