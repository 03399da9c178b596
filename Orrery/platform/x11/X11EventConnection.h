// X11EventConnection: a private connection to the X server for the
// triggers: the pointer's raw motion, key grabs and their key presses.
//
// Private rather than Qt's so that the events it asks for (raw motion on
// the root window, presses of grabbed keys) reach only this code and Qt's
// event handling never has to know about them. Its socket is watched by a
// QSocketNotifier: nothing runs until the server sends something, so an
// idle connection costs no wake-ups. Replies read by other code on this
// connection may pull events into xcb's queue without the socket becoming
// readable again; drainLater() makes sure they are still handled.
//
// Thread rules: main thread only.
#pragma once

#include <xcb/xcb.h>
#include <QObject>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

struct _XCBKeySymbols;
class QSocketNotifier;

namespace orrery::platform {

class X11EventConnection final : public QObject {
  Q_OBJECT

 public:
  using Handler = std::function<void(const xcb_generic_event_t& event)>;

  // A connection to `displayName` (empty: $DISPLAY); nothing when the
  // server cannot be reached.
  static std::shared_ptr<X11EventConnection> open(const std::string& displayName);
  // A connection to the server of the running Qt application (xcb
  // platform); nothing on any other.
  static std::shared_ptr<X11EventConnection> forApplication();
  ~X11EventConnection() override;

  xcb_connection_t* connection() const { return connection_; }
  std::uint32_t root() const { return root_; }
  // The XInput extension's major opcode, 0 when the server has no XInput 2.2.
  std::uint8_t xinputOpcode() const { return xinputOpcode_; }
  // The server's keyboard map (keycode <-> keysym), kept up to date.
  _XCBKeySymbols* keySymbols() const { return keySymbols_; }

  // Key presses and releases, and XInput events; one handler each.
  void setKeyHandler(Handler handler) { keyHandler_ = std::move(handler); }
  void setXInputHandler(Handler handler) { xinputHandler_ = std::move(handler); }
  // Called after the keyboard map changed (grabs must be made again).
  void setKeyboardMapHandler(std::function<void()> handler) { mapHandler_ = std::move(handler); }

  // Handles, on the next turn of the event loop, the events that replies
  // pulled into xcb's queue. Call after waiting for a reply.
  void drainLater();

 private:
  X11EventConnection(xcb_connection_t* connection, int screenNumber);
  void readEvents(bool fromSocket);
  void dispatch(const xcb_generic_event_t& event);

  xcb_connection_t* connection_;
  std::uint32_t root_ = 0;
  std::uint8_t xinputOpcode_ = 0;
  _XCBKeySymbols* keySymbols_ = nullptr;
  std::unique_ptr<QSocketNotifier> notifier_;
  Handler keyHandler_;
  Handler xinputHandler_;
  std::function<void()> mapHandler_;
  bool drainQueued_ = false;
};

}  // namespace orrery::platform
