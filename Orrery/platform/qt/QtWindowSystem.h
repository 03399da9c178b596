// QtWindowSystem: the window system as far as Qt alone reaches, for
// platforms where the program cannot talk to the window manager itself:
// Wayland (no client may see or focus another client's windows), the
// offscreen platform of tests, and any other Qt platform without an adapter.
//
// What it does, and nothing more:
// - activeWindow() always answers nothing and activate(WindowId) does
//   nothing: under Wayland the compositor gives the keyboard back to the
//   window below when the overlay hides; no client can name or focus
//   another's window.
// - activate(QWindow&) is Qt's requestActivate(): the compositor decides
//   (under Wayland, xdg-activation without a token may be refused).
// - prepareOverlay() makes the window frameless, asks to stay on top (Qt
//   passes that on where the platform knows it; xdg-shell does not) and
//   sets the full-screen state, so that show() asks the compositor for full
//   screen on the window's screen, where compositors cover their panels.
//   Task bars are not told to skip it: xdg-shell has no way to say so.
// - setBlurBehind() does nothing: the Wayland protocols for it are
//   compositor-specific and Qt speaks none of them.
//
// Thread rules: main thread only.
#pragma once

#include "Orrery/overlay/WindowSystem.h"

namespace orrery::platform {

class QtWindowSystem final : public app::WindowSystem {
 public:
  std::optional<WindowId> activeWindow() override;
  void activate(WindowId window) override;
  void activate(QWindow& ours) override;
  void prepareOverlay(QWindow& overlay) override;
  void setBlurBehind(QWindow& overlay, bool blur) override;
};

}  // namespace orrery::platform
