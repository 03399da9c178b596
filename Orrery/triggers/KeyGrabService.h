// KeyGrabService: the desktop's way of handing one key combination to this
// program wherever the keyboard focus is. On X11 a passive key grab on the
// root window; GlobalHotKey and the Esc fallback sit on top of it.
//
// grab() is all or nothing: a combination is either held completely (with
// every lock-key variant) or not at all, and a failure says whether another
// client already holds it. Presses of a held combination are reported with
// its grab id through the pressed callback.
//
// Implementations live in Orrery/platform (platform::makeKeyGrabService());
// there is none where no client may grab keys (Wayland).
//
// Thread rules: main thread only; the pressed callback runs there.
#pragma once

#include <cstdint>
#include <functional>

#include "OrreryCore/settings/HotKey.h"

namespace orrery::app {

class KeyGrabService {
 public:
  using GrabId = std::uint64_t;

  enum class Outcome : std::uint8_t {
    grabbed,
    taken,   // another client holds the combination
    failed,  // anything else: no such key in the keyboard map, a broken connection, …
  };
  struct Result {
    Outcome outcome = Outcome::failed;
    GrabId id = 0;            // valid when grabbed
    std::int32_t status = 0;  // the window system's error code when not grabbed
  };

  virtual ~KeyGrabService() = default;

  virtual Result grab(const HotKey& key) = 0;
  // Gives up a grab made by grab(); unknown ids are ignored.
  virtual void release(GrabId id) = 0;

  void setOnPressed(std::function<void(GrabId)> onPressed) { onPressed_ = std::move(onPressed); }
  // Where the desktop decides later (a portal), a grab that grab() reported
  // as held may be refused afterwards; it is then no longer held.
  void setOnRefused(std::function<void(GrabId)> onRefused) { onRefused_ = std::move(onRefused); }

 protected:
  KeyGrabService() = default;
  KeyGrabService(const KeyGrabService&) = default;
  KeyGrabService& operator=(const KeyGrabService&) = default;

  void pressed(GrabId id) const {
    if (onPressed_) onPressed_(id);
  }
  void refused(GrabId id) const {
    if (onRefused_) onRefused_(id);
  }

 private:
  std::function<void(GrabId)> onPressed_;
  std::function<void(GrabId)> onRefused_;
};

}  // namespace orrery::app
