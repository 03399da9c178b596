#include "Orrery/platform/x11/X11EventConnection.h"

#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>
#include <xcb/xinput.h>
#include <QGuiApplication>
#include <QSocketNotifier>

#include "Orrery/platform/x11/Freed.h"

// Last: Xlib's macros (None, Bool, Status...) would clash with Qt's headers.
#include <X11/Xlib.h>

namespace orrery::platform {

std::shared_ptr<X11EventConnection> X11EventConnection::open(const std::string& displayName) {
  int screenNumber = 0;
  xcb_connection_t* connection =
      xcb_connect(displayName.empty() ? nullptr : displayName.c_str(), &screenNumber);
  if (xcb_connection_has_error(connection) != 0) {
    xcb_disconnect(connection);
    return nullptr;
  }
  return std::shared_ptr<X11EventConnection>(new X11EventConnection(connection, screenNumber));
}

std::shared_ptr<X11EventConnection> X11EventConnection::forApplication() {
  auto* x11 = qGuiApp == nullptr ? nullptr : qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x11 == nullptr) return nullptr;
  // Qt may have been told another server than $DISPLAY (-display).
  std::string displayName;
  if (Display* display = x11->display()) displayName = XDisplayString(display);
  return open(displayName);
}

X11EventConnection::X11EventConnection(xcb_connection_t* connection, int screenNumber)
    : connection_(connection) {
  xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection_));
  for (int index = 0; screens.rem > 0; xcb_screen_next(&screens), ++index) {
    if (root_ == 0) root_ = screens.data->root;
    if (index == screenNumber) {
      root_ = screens.data->root;
      break;
    }
  }
  // XInput 2.2 at least: raw events reach the root window whatever the
  // grabs (2.0 withheld them during grabs).
  const xcb_query_extension_reply_t* xinput = xcb_get_extension_data(connection_, &xcb_input_id);
  if (xinput != nullptr && xinput->present != 0) {
    const Freed version(xcb_input_xi_query_version_reply(
        connection_, xcb_input_xi_query_version(connection_, 2, 2), nullptr));
    if (version &&
        (version->major_version > 2 || (version->major_version == 2 && version->minor_version >= 2))) {
      xinputOpcode_ = xinput->major_opcode;
    }
  }
  keySymbols_ = xcb_key_symbols_alloc(connection_);
  notifier_ = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection_), QSocketNotifier::Read);
  connect(notifier_.get(), &QSocketNotifier::activated, this, [this] { readEvents(true); });
}

X11EventConnection::~X11EventConnection() {
  notifier_.reset();
  if (keySymbols_ != nullptr) xcb_key_symbols_free(keySymbols_);
  xcb_disconnect(connection_);
}

void X11EventConnection::drainLater() {
  if (drainQueued_) return;
  drainQueued_ = true;
  QMetaObject::invokeMethod(
      this,
      [this] {
        drainQueued_ = false;
        readEvents(false);
      },
      Qt::QueuedConnection);
}

void X11EventConnection::readEvents(bool fromSocket) {
  while (true) {
    const Freed event(fromSocket ? xcb_poll_for_event(connection_) : xcb_poll_for_queued_event(connection_));
    if (!event) break;
    dispatch(*event.value);
  }
  if (xcb_connection_has_error(connection_) != 0) notifier_->setEnabled(false);
}

void X11EventConnection::dispatch(const xcb_generic_event_t& event) {
  switch (event.response_type & 0x7f) {
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE:
      if (keyHandler_) keyHandler_(event);
      break;
    case XCB_MAPPING_NOTIFY:
      if (xcb_refresh_keyboard_mapping(keySymbols_, reinterpret_cast<xcb_mapping_notify_event_t*>(
                                                        const_cast<xcb_generic_event_t*>(&event))) != 0 &&
          mapHandler_) {
        mapHandler_();
      }
      break;
    case XCB_GE_GENERIC:
      if (xinputOpcode_ != 0 &&
          reinterpret_cast<const xcb_ge_generic_event_t&>(event).extension == xinputOpcode_ &&
          xinputHandler_) {
        xinputHandler_(event);
      }
      break;
    default:
      break;
  }
}

}  // namespace orrery::platform
