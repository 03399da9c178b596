// EscapeFallback: Esc for the whole desktop, only while the overlay needs it.
//
// The overlay hears Esc through its own window. When it is up but another
// window has the keyboard (another application is active, or the user is in
// one of our other windows without having chosen to be), Esc would go there
// and the overlay could not be dismissed from the keyboard. For those moments
// the controller switches this fallback on: Esc without modifiers is caught
// desktop-wide and handed to the overlay. It is switched off again as soon
// as the overlay's window has the keyboard back, because a global Esc must
// never be taken from other applications longer than necessary.
//
// Implementations live in Orrery/platform (an X11 key grab on the root
// window); where the window system allows nothing of the kind the factory
// gives none and the overlay relies on its own window.
//
// Thread rules: main thread only; the handler runs on the main thread.
#pragma once

#include <functional>

namespace orrery::app {

class EscapeFallback {
 public:
  using Handler = std::function<void()>;

  virtual ~EscapeFallback() = default;

  // Called for every Esc caught while the fallback is active.
  virtual void setHandler(Handler handler) = 0;

  // Catches Esc (no modifiers) desktop-wide while `active`. Asking for the
  // state it already has does nothing. A grab the window system refuses is
  // logged and leaves the fallback inactive.
  virtual void setActive(bool active) = 0;
  virtual bool isActive() const = 0;

 protected:
  EscapeFallback() = default;
  EscapeFallback(const EscapeFallback&) = default;
  EscapeFallback& operator=(const EscapeFallback&) = default;
};

}  // namespace orrery::app
