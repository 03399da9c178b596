// WindowSystem: what the overlay needs from the desktop's window system
// beyond what Qt offers everywhere: to learn which window has the keyboard
// before the overlay opens, to hand the keyboard back to it when the overlay
// closes, to mark the overlay window so that the window manager keeps it
// above everything, full screen, and out of task bars and pagers, and to
// have the compositor blur the desktop behind it where it can.
//
// Implementations live in Orrery/platform and are made by
// platform::makeWindowSystem(): the X11 one talks EWMH to the window manager;
// where no one can do more (Wayland, offscreen) the compositor and Qt do the
// work and the focus calls answer "unknown" and do nothing.
//
// Thread rules: main thread only, like the windows it handles.
#pragma once

#include <cstdint>
#include <optional>

class QWindow;

namespace orrery::app {

class WindowSystem {
 public:
  // A window of any client, as the window system names it (an X11 window
  // id). Only ever handed back to the same WindowSystem.
  using WindowId = std::uint64_t;

  virtual ~WindowSystem() = default;

  // The window that holds the keyboard now; nothing when no window does or
  // the window system does not tell other clients.
  virtual std::optional<WindowId> activeWindow() = 0;

  // Asks the window manager to give the keyboard to `window` (usually the
  // one activeWindow() named before the overlay opened), raising it as a
  // task bar would. Asynchronous: the window manager decides and acts later.
  // A window that has gone in the meantime is ignored.
  virtual void activate(WindowId window) = 0;

  // Gives the keyboard to one of the program's own windows right after its
  // show(). Window managers guard against new windows taking the keyboard
  // unless they come from a fresh user action, and a launcher opened over
  // D-Bus or a hot corner has none to show; so the overlay asks the way a
  // pager would, where the window system lets it.
  virtual void activate(QWindow& ours) = 0;

  // Makes `overlay` a frameless full-screen window above all others, kept
  // out of task bars, pagers and window switchers. Call it after the
  // window's flags are final and before every show(): window managers drop
  // a window's states when it is hidden. The WindowSystem must outlive
  // `overlay`: it may act again when the window is next mapped.
  virtual void prepareOverlay(QWindow& overlay) = 0;

  // Asks the compositor to blur what lies behind `overlay` where the window
  // is translucent (the glass look), or to stop. Only some compositors can
  // (KWin); elsewhere the glass stays a plain tint and this does nothing.
  virtual void setBlurBehind(QWindow& overlay, bool blur) = 0;

 protected:
  WindowSystem() = default;
  WindowSystem(const WindowSystem&) = default;
  WindowSystem& operator=(const WindowSystem&) = default;
};

}  // namespace orrery::app
