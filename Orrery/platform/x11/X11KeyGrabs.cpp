#include "Orrery/platform/x11/X11KeyGrabs.h"

#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>

#include "Orrery/platform/x11/Freed.h"
#include "Orrery/platform/x11/X11EventConnection.h"
#include "OrreryCore/triggers/X11KeyTable.h"

namespace orrery::platform {

namespace {
constexpr std::uint16_t kLocks = X11KeyTable::Mask::lock | X11KeyTable::Mask::mod2;
constexpr std::uint16_t kModifierBits = 0xFF;
}  // namespace

X11KeyGrabs::X11KeyGrabs(std::shared_ptr<X11EventConnection> connection)
    : connection_(std::move(connection)) {
  connection_->setKeyHandler([this](const xcb_generic_event_t& event) {
    const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(event);
    const bool press = (event.response_type & 0x7f) == XCB_KEY_PRESS;
    const std::uint16_t modifiers = key.state & kModifierBits & ~kLocks;
    for (auto& [id, held] : held_) {
      bool matches = false;
      for (const std::uint8_t keycode : held.keycodes) matches = matches || keycode == key.detail;
      if (!matches) continue;
      if (!press) {
        held.down = false;
        held.releasedAt = key.time;
        continue;
      }
      // Auto-repeat sends presses while the key is held, each after a
      // release of the same time stamp, which a real release never has.
      const bool repeat = held.down || (held.releasedAt && *held.releasedAt == key.time);
      if (modifiers != held.modifiers || repeat) continue;
      held.down = true;
      pressed(id);
      return;
    }
  });
  connection_->setKeyboardMapHandler([this] { regrab(); });
}

X11KeyGrabs::~X11KeyGrabs() {
  for (const auto& [id, held] : held_) ungrabAll(held.keycodes, held.modifiers);
  xcb_flush(connection_->connection());
  connection_->setKeyHandler({});
  connection_->setKeyboardMapHandler({});
}

std::vector<std::uint8_t> X11KeyGrabs::keycodesOf(const HotKey& key) const {
  std::vector<std::uint8_t> keycodes;
  const auto keysym = X11KeyTable::keysymForKeyCode(key.keyCode);
  if (!keysym) return keycodes;
  const Freed found(xcb_key_symbols_get_keycode(connection_->keySymbols(), *keysym));
  if (!found) return keycodes;
  for (const xcb_keycode_t* code = found.value; *code != XCB_NO_SYMBOL; ++code) keycodes.push_back(*code);
  return keycodes;
}

app::KeyGrabService::Result X11KeyGrabs::grabAll(const std::vector<std::uint8_t>& keycodes,
                                                 std::uint16_t modifiers) {
  xcb_connection_t* connection = connection_->connection();
  struct Request {
    std::uint8_t keycode;
    std::uint16_t modifiers;
    xcb_void_cookie_t cookie;
  };
  std::vector<Request> requests;
  for (const std::uint8_t keycode : keycodes) {
    for (const std::uint32_t variant : X11KeyTable::lockVariants) {
      const auto mask = static_cast<std::uint16_t>(modifiers | variant);
      requests.push_back({keycode, mask,
                          xcb_grab_key_checked(connection, 1, connection_->root(), mask, keycode,
                                               XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)});
    }
  }
  Result result{Outcome::grabbed, 0, 0};
  std::vector<const Request*> granted;
  for (const Request& request : requests) {
    const Freed error(xcb_request_check(connection, request.cookie));
    if (!error) {
      granted.push_back(&request);
      continue;
    }
    if (result.outcome == Outcome::grabbed) {
      result.outcome = error->error_code == badAccess ? Outcome::taken : Outcome::failed;
      result.status = error->error_code;
    }
  }
  if (result.outcome != Outcome::grabbed) {
    for (const Request* request : granted)
      xcb_ungrab_key(connection, request->keycode, connection_->root(), request->modifiers);
    xcb_flush(connection);
  }
  if (xcb_connection_has_error(connection) != 0) result = {Outcome::failed, 0, -1};
  connection_->drainLater();
  return result;
}

void X11KeyGrabs::ungrabAll(const std::vector<std::uint8_t>& keycodes, std::uint16_t modifiers) {
  for (const std::uint8_t keycode : keycodes)
    for (const std::uint32_t variant : X11KeyTable::lockVariants)
      xcb_ungrab_key(connection_->connection(), keycode, connection_->root(),
                     static_cast<std::uint16_t>(modifiers | variant));
}

app::KeyGrabService::Result X11KeyGrabs::grab(const HotKey& key) {
  const auto modifiers = static_cast<std::uint16_t>(X11KeyTable::x11Modifiers(key.carbonModifiers));
  std::vector<std::uint8_t> keycodes = keycodesOf(key);
  // A key the table does not know, or that this keyboard map lacks.
  if (keycodes.empty()) return {Outcome::failed, 0, 0};
  Result result = grabAll(keycodes, modifiers);
  if (result.outcome != Outcome::grabbed) return result;
  result.id = nextId_++;
  held_[result.id] = Held{key, modifiers, std::move(keycodes), false, std::nullopt};
  return result;
}

void X11KeyGrabs::release(GrabId id) {
  const auto found = held_.find(id);
  if (found == held_.end()) return;
  ungrabAll(found->second.keycodes, found->second.modifiers);
  xcb_flush(connection_->connection());
  held_.erase(found);
}

void X11KeyGrabs::regrab() {
  for (auto& [id, held] : held_) {
    std::vector<std::uint8_t> keycodes = keycodesOf(held.key);
    if (keycodes == held.keycodes) continue;
    ungrabAll(held.keycodes, held.modifiers);
    held.keycodes = grabAll(keycodes, held.modifiers).outcome == Outcome::grabbed
                        ? std::move(keycodes)
                        : std::vector<std::uint8_t>{};
  }
  xcb_flush(connection_->connection());
}

}  // namespace orrery::platform
