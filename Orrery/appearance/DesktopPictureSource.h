// DesktopPictureSource: where the desktop's picture comes from, as the
// overlay's blurred background needs it.
//
// A DesktopPicture names the picture (a file path, or a name for a picture
// the desktop keeps elsewhere, such as the X root window's pixmap) and
// knows how to read it. The name is what a WallpaperKey holds: a new name
// is a new render, and so is a new version: a file replaced under the same
// path (a desktop that always writes "wallpaper.jpg") is read again. The
// owner asks for the current picture whenever the overlay is shown, so such
// a replacement is seen even where nothing announces it. Reading runs on a worker thread and may fail with a
// reason for the log (a missing file, a format no image plugin reads).
//
// Implementations live in Orrery/platform (GNOME's settings, KDE Plasma's
// and Xfce's configuration files, the X root pixmap) and are made by
// platform::makeDesktopPictureSource(). They watch where the picture is
// kept and call the change callback when it may have changed; the owner
// then asks current() again.
//
// Thread rules: sources live on the main thread and call back there; a
// picture's load function is a self-contained value that any thread may
// call, once or many times.
#pragma once

#include <QImage>
#include <QSize>
#include <QString>

#include <chrono>
#include <expected>
#include <functional>
#include <optional>

namespace orrery::app {

struct DesktopPicture {
  // Reads the picture, at least `atLeast` in both directions where the
  // format can decode smaller than it is stored; else at full size.
  using Load = std::function<std::expected<QImage, QString>(QSize atLeast)>;

  QString name;
  Load load;
  // When the desktop will show another picture by itself (a slideshow
  // moving on); the owner asks again then.
  std::optional<std::chrono::seconds> changesIn = std::nullopt;
  // Changes whenever the picture under `name` may have: a file's
  // modification time and size; empty where the name already does.
  QString version = {};
};

class DesktopPictureSource {
 public:
  virtual ~DesktopPictureSource() = default;

  // The picture the desktop shows now; nothing when it names none.
  virtual std::optional<DesktopPicture> current() = 0;

  // `onChanged` is called whenever the picture may have changed.
  void setOnChanged(std::function<void()> onChanged) { onChanged_ = std::move(onChanged); }

 protected:
  DesktopPictureSource() = default;
  DesktopPictureSource(const DesktopPictureSource&) = default;
  DesktopPictureSource& operator=(const DesktopPictureSource&) = default;

  void announceChange() const {
    if (onChanged_) onChanged_();
  }

 private:
  std::function<void()> onChanged_;
};

}  // namespace orrery::app
