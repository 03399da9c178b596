// X11WindowSystem: the overlay's window system on X11, spoken through the
// window manager's EWMH protocol on Qt's own xcb connection, so that every
// request is ordered with Qt's (the overlay's states land before Qt maps it).
//
// - activeWindow() reads the root window's _NET_ACTIVE_WINDOW.
// - activate() sends _NET_ACTIVE_WINDOW as a pager would (source 2), with the
//   server's current time: window managers let pagers and launchers move
//   the focus, where a request from an application may be refused as focus
//   stealing. That holds for the overlay itself too: Qt's requestActivate()
//   asks as an application with the time of Qt's last X event, which
//   openbox refuses once another window has had input since.
// - prepareOverlay() does what QtWindowSystem does and adds what Qt cannot
//   say: skip task bar, skip pager and (on KWin) skip switcher, above and
//   full screen; a normal window type; and a request that compositors keep
//   compositing it (see the source for why).
// - setBlurBehind() sets or deletes _KDE_NET_WM_BLUR_BEHIND_REGION, empty
//   for the whole window, which KWin reads; other window managers ignore it.
//
// Learning the server time takes an event, and Qt reads every event on its
// connection; so a second, private connection serves only for that, opened
// at the first activate().
//
// Thread rules: main thread only (Qt's connection is shared with Qt's GUI).
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "Orrery/overlay/WindowSystem.h"
#include "Orrery/platform/qt/QtWindowSystem.h"

struct xcb_connection_t;

namespace orrery::platform {

class X11WindowSystem final : public app::WindowSystem {
 public:
  // The window system of the running Qt application when it is on the xcb
  // platform; nothing on any other.
  static std::unique_ptr<X11WindowSystem> fromApplication();

  // `connection` stays Qt's; `displayName` names the same server (for the
  // private time connection and the screen number), empty for $DISPLAY.
  X11WindowSystem(xcb_connection_t* connection, std::string displayName);
  ~X11WindowSystem() override;
  X11WindowSystem(const X11WindowSystem&) = delete;
  X11WindowSystem& operator=(const X11WindowSystem&) = delete;

  std::optional<WindowId> activeWindow() override;
  void activate(WindowId window) override;
  void activate(QWindow& ours) override;
  void prepareOverlay(QWindow& overlay) override;
  void setBlurBehind(QWindow& overlay, bool blur) override;

 private:
  enum Atom : std::size_t {
    netActiveWindow,
    netWmState,
    netWmStateAbove,
    netWmStateFullscreen,
    netWmStateSkipTaskbar,
    netWmStateSkipPager,
    kdeNetWmStateSkipSwitcher,
    netWmWindowType,
    netWmWindowTypeNormal,
    kdeNetWmWindowTypeOverride,
    netWmBypassCompositor,
    kdeNetWmBlurBehindRegion,
    wmState,
    atomCount,
  };
  class TimeSource;

  std::uint32_t serverTime();
  void waitUntilWithdrawn(std::uint32_t window);

  xcb_connection_t* connection_;
  std::string displayName_;
  std::uint32_t root_ = 0;
  std::array<std::uint32_t, atomCount> atoms_{};
  std::unique_ptr<TimeSource> time_;
  QtWindowSystem qt_;
};

}  // namespace orrery::platform
