#include "Orrery/platform/x11/X11GlobalPointer.h"

#include <xcb/xcb.h>
#include <xcb/xinput.h>
#include <QGuiApplication>
#include <QScreen>

#include <cmath>

#include "Orrery/platform/x11/Freed.h"
#include "Orrery/platform/x11/X11EventConnection.h"
#include "OrreryCore/triggers/X11KeyTable.h"

namespace orrery::platform {

namespace {

// A screen's frame in device pixels. Qt keeps a screen's origin in device
// pixels and scales only its size by the device pixel ratio.
QRect nativeFrame(const QScreen& screen) {
  const QRect frame = screen.geometry();
  const double ratio = screen.devicePixelRatio();
  return {frame.topLeft(), QSize(static_cast<int>(std::lround(frame.width() * ratio)),
                                 static_cast<int>(std::lround(frame.height() * ratio)))};
}

}  // namespace

std::unique_ptr<X11GlobalPointer> X11GlobalPointer::make(std::shared_ptr<X11EventConnection> connection) {
  if (!connection || connection->xinputOpcode() == 0) return nullptr;
  return std::unique_ptr<X11GlobalPointer>(new X11GlobalPointer(std::move(connection)));
}

X11GlobalPointer::X11GlobalPointer(std::shared_ptr<X11EventConnection> connection)
    : connection_(std::move(connection)) {
  connection_->setXInputHandler([this](const xcb_generic_event_t& event) {
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    // Every raw motion of a batch asks the same question; the callback
    // reads the pointer once per batch of the event loop anyway, so the
    // latest position wins.
    if (generic.event_type == XCB_INPUT_RAW_MOTION && onMoved_) onMoved_();
  });
}

X11GlobalPointer::~X11GlobalPointer() {
  if (onMoved_) select(false);
  connection_->setXInputHandler({});
}

void X11GlobalPointer::select(bool motion) {
  struct {
    xcb_input_event_mask_t head;
    std::uint32_t mask;
  } selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
              motion ? std::uint32_t{XCB_INPUT_XI_EVENT_MASK_RAW_MOTION} : 0U};
  xcb_input_xi_select_events(connection_->connection(), connection_->root(), 1, &selection.head);
  xcb_flush(connection_->connection());
}

void X11GlobalPointer::watchMotion(std::function<void()> onMoved) {
  const bool was = static_cast<bool>(onMoved_);
  onMoved_ = std::move(onMoved);
  const bool now = static_cast<bool>(onMoved_);
  if (was != now) select(now);
}

std::optional<X11GlobalPointer::Query> X11GlobalPointer::query() {
  xcb_connection_t* connection = connection_->connection();
  const Freed reply(
      xcb_query_pointer_reply(connection, xcb_query_pointer(connection, connection_->root()), nullptr));
  connection_->drainLater();
  if (!reply) return std::nullopt;
  return Query{reply->root_x, reply->root_y, reply->mask};
}

int X11GlobalPointer::primaryBottom() const {
  const QScreen* primary = QGuiApplication::primaryScreen();
  if (primary == nullptr) return 0;
  const QRect frame = nativeFrame(*primary);
  return frame.y() + frame.height();
}

Rect X11GlobalPointer::toCoreSpace(int x, int y, int width, int height, int primaryBottom) {
  return Rect{{static_cast<double>(x), static_cast<double>(primaryBottom - (y + height))},
              {static_cast<double>(width), static_cast<double>(height)}};
}

Point X11GlobalPointer::toCoreSpace(int x, int y, int primaryBottom) {
  return Point{static_cast<double>(x), static_cast<double>(primaryBottom - y)};
}

Point X11GlobalPointer::position() {
  const auto found = query();
  if (!found) return Point{-1e9, -1e9};  // far from every corner
  return toCoreSpace(found->x, found->y, primaryBottom());
}

std::vector<Rect> X11GlobalPointer::screens() {
  std::vector<Rect> frames;
  const int bottom = primaryBottom();
  for (const QScreen* screen : QGuiApplication::screens()) {
    const QRect frame = nativeFrame(*screen);
    frames.push_back(toCoreSpace(frame.x(), frame.y(), frame.width(), frame.height(), bottom));
  }
  return frames;
}

std::uint64_t X11GlobalPointer::modifierFlags() {
  const auto found = query();
  return found ? X11KeyTable::eventFlags(found->mask) : 0;
}

std::uint32_t X11GlobalPointer::buttons() {
  const auto found = query();
  // Button1Mask … Button5Mask are bits 8 to 12 of the state.
  return found ? (static_cast<std::uint32_t>(found->mask) >> 8) & 0x1FU : 0;
}

}  // namespace orrery::platform
