// X11KeyGrabs: global key combinations as passive key grabs on the root
// window of a private X connection.
//
// A HotKey's key code names a key by its label (X11KeyTable); the grab goes
// on every keycode the current keyboard map gives that label's keysym, with
// the shortcut's modifiers and each lock-key variant (Caps Lock, Num Lock),
// so the shortcut works whatever locks are on. Every request is checked;
// if any fails, the ones that succeeded are undone, and BadAccess (another
// client holds the combination) is told apart from the rest. When the
// keyboard map changes, the held combinations are grabbed again on their
// new keycodes.
//
// Thread rules: main thread only.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "Orrery/triggers/KeyGrabService.h"

namespace orrery::platform {

class X11EventConnection;

class X11KeyGrabs final : public app::KeyGrabService {
 public:
  explicit X11KeyGrabs(std::shared_ptr<X11EventConnection> connection);
  ~X11KeyGrabs() override;

  Result grab(const HotKey& key) override;
  void release(GrabId id) override;

  // The X error code BadAccess.
  static constexpr std::int32_t badAccess = 10;

 private:
  struct Held {
    HotKey key;
    std::uint16_t modifiers = 0;
    std::vector<std::uint8_t> keycodes;
    bool down = false;                        // pressed and not yet released: repeats are not new presses
    std::optional<std::uint32_t> releasedAt;  // server time of the last release
  };
  // Grabs `keycodes` with `modifiers` and every lock variant; all or none.
  Result grabAll(const std::vector<std::uint8_t>& keycodes, std::uint16_t modifiers);
  void ungrabAll(const std::vector<std::uint8_t>& keycodes, std::uint16_t modifiers);
  std::vector<std::uint8_t> keycodesOf(const HotKey& key) const;
  void regrab();

  std::shared_ptr<X11EventConnection> connection_;
  std::map<GrabId, Held> held_;
  GrabId nextId_ = 1;
};

}  // namespace orrery::platform
