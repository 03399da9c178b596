#include "Orrery/platform/x11/X11WindowSystem.h"

#include <xcb/xcb.h>
#include <QGuiApplication>
#include <QWindow>

#include <chrono>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <thread>

#include "Orrery/platform/x11/Freed.h"

// Last: Xlib's macros (None, Bool, Status...) would clash with Qt's headers.
#include <X11/Xlib.h>

namespace orrery::platform {
namespace {

constexpr std::string_view kAtomNames[] = {
    "_NET_ACTIVE_WINDOW",
    "_NET_WM_STATE",
    "_NET_WM_STATE_ABOVE",
    "_NET_WM_STATE_FULLSCREEN",
    "_NET_WM_STATE_SKIP_TASKBAR",
    "_NET_WM_STATE_SKIP_PAGER",
    "_KDE_NET_WM_STATE_SKIP_SWITCHER",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_NORMAL",
    "_KDE_NET_WM_WINDOW_TYPE_OVERRIDE",
    "_NET_WM_BYPASS_COMPOSITOR",
    "_KDE_NET_WM_BLUR_BEHIND_REGION",
    "WM_STATE",
};

// Source indication of _NET_ACTIVE_WINDOW and _NET_WM_STATE requests.
constexpr std::uint32_t kFromApplication = 1;
constexpr std::uint32_t kFromPager = 2;
constexpr std::uint32_t kStateAdd = 1;
// _NET_WM_BYPASS_COMPOSITOR: 2 asks the compositor not to unredirect.
constexpr std::uint32_t kKeepComposited = 2;

xcb_window_t rootOf(xcb_connection_t* connection, int screenNumber) {
  xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
  xcb_window_t first = XCB_NONE;
  for (int index = 0; screens.rem > 0; xcb_screen_next(&screens), ++index) {
    if (first == XCB_NONE) first = screens.data->root;
    if (index == screenNumber) return screens.data->root;
  }
  return first;
}

void sendToRoot(xcb_connection_t* connection, xcb_window_t root, const xcb_client_message_event_t& event) {
  xcb_send_event(connection, 0, root,
                 XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                 reinterpret_cast<const char*>(&event));
}

xcb_client_message_event_t clientMessage(xcb_window_t window, xcb_atom_t type) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = window;
  event.type = type;
  return event;
}

}  // namespace

// The server's time is only told in events: a zero-length append to a
// property of a private window makes the server send a PropertyNotify with
// its current time, without changing anything.
class X11WindowSystem::TimeSource {
 public:
  static std::unique_ptr<TimeSource> open(const std::string& displayName) {
    int screenNumber = 0;
    xcb_connection_t* connection =
        xcb_connect(displayName.empty() ? nullptr : displayName.c_str(), &screenNumber);
    if (xcb_connection_has_error(connection) != 0) {
      xcb_disconnect(connection);
      return nullptr;
    }
    return std::unique_ptr<TimeSource>(new TimeSource(connection, rootOf(connection, screenNumber)));
  }
  ~TimeSource() { xcb_disconnect(connection_); }
  TimeSource(const TimeSource&) = delete;
  TimeSource& operator=(const TimeSource&) = delete;

  std::optional<std::uint32_t> now() {
    xcb_change_property(connection_, XCB_PROP_MODE_APPEND, window_, atom_, XCB_ATOM_STRING, 8, 0, nullptr);
    xcb_flush(connection_);
    // Only this window's property changes were asked for; a broken
    // connection ends the wait with nothing.
    while (true) {
      Freed<xcb_generic_event_t> event(xcb_wait_for_event(connection_));
      if (!event) return std::nullopt;
      if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY) continue;
      const auto* change = reinterpret_cast<const xcb_property_notify_event_t*>(event.value);
      if (change->window == window_ && change->atom == atom_) return change->time;
    }
  }

 private:
  TimeSource(xcb_connection_t* connection, xcb_window_t root) : connection_(connection) {
    constexpr std::string_view name = "_ORRERY_SERVER_TIME";
    const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
    window_ = xcb_generate_id(connection_);
    const std::uint32_t eventMask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &eventMask);
    Freed<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookie, nullptr));
    atom_ = reply ? reply->atom : xcb_atom_t{XCB_ATOM_WM_NAME};
  }

  xcb_connection_t* connection_;
  xcb_window_t window_ = XCB_NONE;
  xcb_atom_t atom_ = XCB_NONE;
};

std::unique_ptr<X11WindowSystem> X11WindowSystem::fromApplication() {
  auto* x11 = qGuiApp == nullptr ? nullptr : qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x11 == nullptr || x11->connection() == nullptr) return nullptr;
  // Qt may have been told another server than $DISPLAY (-display); its
  // Xlib display knows which.
  std::string displayName;
  if (Display* display = x11->display()) displayName = XDisplayString(display);
  return std::make_unique<X11WindowSystem>(x11->connection(), std::move(displayName));
}

X11WindowSystem::X11WindowSystem(xcb_connection_t* connection, std::string displayName)
    : connection_(connection), displayName_(std::move(displayName)) {
  int screenNumber = 0;
  char* host = nullptr;
  int displayNumber = 0;
  if (xcb_parse_display(displayName_.empty() ? nullptr : displayName_.c_str(), &host, &displayNumber,
                        &screenNumber) != 0) {
    std::free(host);
  }
  root_ = rootOf(connection_, screenNumber);

  std::array<xcb_intern_atom_cookie_t, atomCount> cookies{};
  for (std::size_t index = 0; index < atomCount; ++index) {
    const std::string_view name = kAtomNames[index];
    cookies[index] = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
  }
  for (std::size_t index = 0; index < atomCount; ++index) {
    Freed<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookies[index], nullptr));
    atoms_[index] = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
  }
}

X11WindowSystem::~X11WindowSystem() = default;

std::optional<app::WindowSystem::WindowId> X11WindowSystem::activeWindow() {
  const auto cookie = xcb_get_property(connection_, 0, root_, atoms_[netActiveWindow], XCB_ATOM_WINDOW, 0, 1);
  Freed<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_, cookie, nullptr));
  if (!reply || reply->type != XCB_ATOM_WINDOW || reply->format != 32 ||
      xcb_get_property_value_length(reply.value) < 4) {
    return std::nullopt;
  }
  const xcb_window_t window = *static_cast<const xcb_window_t*>(xcb_get_property_value(reply.value));
  if (window == XCB_NONE) return std::nullopt;
  return window;
}

void X11WindowSystem::activate(WindowId window) {
  if (window == XCB_NONE || window > std::numeric_limits<xcb_window_t>::max()) return;
  auto event = clientMessage(static_cast<xcb_window_t>(window), atoms_[netActiveWindow]);
  event.data.data32[0] = kFromPager;
  // A real time rather than CurrentTime: window managers order focus
  // requests by it, and some refuse or complain about a pager's request
  // without one.
  event.data.data32[1] = serverTime();
  event.data.data32[2] = XCB_NONE;
  sendToRoot(connection_, root_, event);
  xcb_flush(connection_);
}

void X11WindowSystem::activate(QWindow& ours) { activate(static_cast<WindowId>(ours.winId())); }

void X11WindowSystem::prepareOverlay(QWindow& overlay) {
  qt_.prepareOverlay(overlay);
  const auto window = static_cast<xcb_window_t>(overlay.winId());

  // Above and full screen are Qt's too; they are set here as well so that
  // the window manager sees every state in the one property it reads when
  // it maps the window. Skip switcher only means something to KWin.
  const std::array<xcb_atom_t, 5> states = {
      atoms_[netWmStateAbove],     atoms_[netWmStateFullscreen],      atoms_[netWmStateSkipTaskbar],
      atoms_[netWmStateSkipPager], atoms_[kdeNetWmStateSkipSwitcher],
  };
  // A managed window's states belong to the window manager: ask it.
  const auto askForStates = [this, window, states] {
    for (const xcb_atom_t state : states) {
      auto event = clientMessage(window, atoms_[netWmState]);
      event.data.data32[0] = kStateAdd;
      event.data.data32[1] = state;
      event.data.data32[3] = kFromApplication;
      sendToRoot(connection_, root_, event);
    }
    xcb_flush(connection_);
  };
  if (overlay.isVisible()) {
    askForStates();
  } else {
    waitUntilWithdrawn(window);
    // Qt adds its own states to these when it maps the window.
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atoms_[netWmState], XCB_ATOM_ATOM, 32,
                        static_cast<std::uint32_t>(states.size()), states.data());
    // A window manager that has not yet dealt with the window's last unmap
    // deletes that property when it does (a withdrawn window has no
    // states), after we wrote it: so ask again once the window is mapped.
    // The requests follow Qt's map on the same connection, so the window
    // manager reads them after it has taken the window back.
    auto once = std::make_shared<QMetaObject::Connection>();
    *once =
        QObject::connect(&overlay, &QWindow::visibleChanged, &overlay, [once, askForStates](bool visible) {
          if (!visible) return;
          QObject::disconnect(*once);
          askForStates();
        });
  }

  // A normal window: the launcher must take the keyboard for its search,
  // and full screen already lifts a focused window over docks and panels.
  // Dock, splash or notification types would cost the focus or bring
  // placement rules on some window managers. KDE's override type, as Qt
  // writes it for frameless windows, keeps KWin from drawing a border.
  const std::array<xcb_atom_t, 2> types = {atoms_[kdeNetWmWindowTypeOverride], atoms_[netWmWindowTypeNormal]};
  xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atoms_[netWmWindowType], XCB_ATOM_ATOM, 32,
                      static_cast<std::uint32_t>(types.size()), types.data());

  // Compositors unredirect full-screen windows to spare a copy (games want
  // that). The overlay is translucent over the desktop: unredirected it
  // would lose what shows through and flicker as the compositor switches
  // on every show and hide. So ask to stay composited.
  xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atoms_[netWmBypassCompositor],
                      XCB_ATOM_CARDINAL, 32, 1, &kKeepComposited);
  xcb_flush(connection_);
}

void X11WindowSystem::setBlurBehind(QWindow& overlay, bool blur) {
  const auto window = static_cast<xcb_window_t>(overlay.winId());
  if (blur) {
    // No rectangles: the whole window. KWin follows changes of the property
    // while the window is shown.
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atoms_[kdeNetWmBlurBehindRegion],
                        XCB_ATOM_CARDINAL, 32, 0, nullptr);
  } else {
    xcb_delete_property(connection_, window, atoms_[kdeNetWmBlurBehindRegion]);
  }
  xcb_flush(connection_);
}

void X11WindowSystem::waitUntilWithdrawn(std::uint32_t window) {
  // A window that was hidden a moment ago may still be managed: the window
  // manager takes it back only when it gets to the unmap. Mapped again
  // before that, it can end up mapped but unmanaged, and the states written
  // now are erased by the late clean-up. The rules for clients say to wait
  // until the window manager has withdrawn it (WM_STATE gone or Withdrawn);
  // usually it has, during the fade-out. A window manager that never answers
  // costs at most a quarter of a second.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(250);
  for (;;) {
    const auto cookie = xcb_get_property(connection_, 0, window, atoms_[wmState], atoms_[wmState], 0, 1);
    Freed<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_, cookie, nullptr));
    const bool withdrawn = !reply || xcb_get_property_value_length(reply.value) < 4 ||
                           *static_cast<const std::uint32_t*>(xcb_get_property_value(reply.value)) == 0;
    if (withdrawn || std::chrono::steady_clock::now() >= deadline) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

std::uint32_t X11WindowSystem::serverTime() {
  if (!time_) time_ = TimeSource::open(displayName_);
  if (time_) {
    if (const auto now = time_->now()) return *now;
    time_.reset();
  }
  return XCB_CURRENT_TIME;
}

}  // namespace orrery::platform
