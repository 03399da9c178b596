// X11RootPixmapSource: the desktop picture that tools like feh, nitrogen,
// xsetroot's successors and most window-manager setups leave on the X
// server: a pixmap named by the root window's _XROOTPMAP_ID (or the older
// ESETROOT_PMAP_ID), which pseudo-transparent programs read too.
//
// The pixmap's ID is the picture's name, so setting a new picture (feh
// makes a new pixmap each time) is a new render. A private connection
// watches the root window's properties and announces every change; the
// load function reads the pixmap's pixels on a connection of its own, so
// it can run on any thread. Only 24- and 32-bit TrueColor pixmaps in
// 32 bits per pixel are read (every server of the last twenty years); a
// pixmap freed in the meantime makes that render fail.
//
// compositorRunning() tells whether a compositing manager owns the
// screen's _NET_WM_CM_S<n> selection, i.e. whether translucent windows
// show what lies beneath.
//
// Thread rules: main thread; the pictures' load functions, any thread.
#pragma once

#include <QSocketNotifier>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Orrery/appearance/DesktopPictureSource.h"

struct xcb_connection_t;

namespace orrery::platform {

class X11RootPixmapSource final : public app::DesktopPictureSource {
 public:
  // A source on `displayName` (empty: $DISPLAY); nothing when the server
  // cannot be reached.
  static std::unique_ptr<X11RootPixmapSource> open(const std::string& displayName);
  ~X11RootPixmapSource() override;

  std::optional<app::DesktopPicture> current() override;

  // Whether a compositing manager runs on screen `screenNumber` of the
  // server `connection` talks to (two round trips; Qt's own connection
  // serves on the main thread).
  static bool compositorRunning(xcb_connection_t* connection, int screenNumber);

 private:
  X11RootPixmapSource(xcb_connection_t* connection, std::string displayName, int screenNumber);
  void readEvents();

  xcb_connection_t* connection_;
  std::string displayName_;
  std::uint32_t root_ = 0;
  std::uint32_t rootPixmapAtom_ = 0;
  std::uint32_t setRootAtom_ = 0;
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace orrery::platform
