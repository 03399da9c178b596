#include "Orrery/overlay/SwipeTracker.h"

#include <QWheelEvent>

#include <cmath>

namespace orrery::app {

WheelInput fromWheelEvent(const QWheelEvent& event) {
  WheelInput input;
  switch (event.phase()) {
    case Qt::NoScrollPhase:
      input.phase = WheelInput::Phase::none;
      break;
    case Qt::ScrollBegin:
      input.phase = WheelInput::Phase::began;
      break;
    case Qt::ScrollUpdate:
      input.phase = WheelInput::Phase::updated;
      break;
    case Qt::ScrollEnd:
      input.phase = WheelInput::Phase::ended;
      break;
    case Qt::ScrollMomentum:
      input.phase = WheelInput::Phase::momentum;
      break;
  }
  // Touchpads report pixels; wheels report eighths of a degree, 120 per
  // click, taken as 15 pixels. Signs as Qt gives them: negative for a wheel
  // turned down, or fingers moving left or up (the way the content moves).
  const QPoint pixels = event.pixelDelta();
  const QPointF delta = pixels.isNull() ? QPointF(event.angleDelta()) / 8.0 : QPointF(pixels);
  input.dx = delta.x();
  input.dy = delta.y();
  input.timestamp = std::chrono::milliseconds(event.timestamp());
  return input;
}

std::optional<int> SwipeTracker::pageDelta(const WheelInput& input) {
  using Phase = WheelInput::Phase;
  if (input.phase == Phase::momentum) return std::nullopt;

  if (input.phase != Phase::none) {
    if (input.phase == Phase::began) {
      accumulated_ = 0;
      firedInGesture_ = false;
    }
    accumulated_ += input.dx;
    if (firedInGesture_ || std::abs(accumulated_) <= swipeThreshold) return std::nullopt;
    firedInGesture_ = true;
    // Fingers moving left pull the next page in from the right.
    return accumulated_ < 0 ? 1 : -1;
  }

  const double delta = std::abs(input.dy) < std::abs(input.dx) ? input.dx : input.dy;
  if (delta == 0) return std::nullopt;
  if (lastWheelPage_ && input.timestamp - *lastWheelPage_ <= wheelPause) return std::nullopt;
  lastWheelPage_ = input.timestamp;
  return delta < 0 ? 1 : -1;
}

}  // namespace orrery::app
