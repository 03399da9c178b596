// SwipeTracker: turns wheel and touchpad scrolling into page turns.
//
// A touchpad gesture (events with a scroll phase) turns at most one page,
// once its horizontal movement passes 50 pixels, however long it goes on;
// the momentum that follows a flick never turns a page. A mouse wheel (no
// phase) turns one page per click, but clicks that come within 0.3 s of the
// last turn are swallowed, so a free-spinning wheel does not race through
// the pages.
//
// Fed plain values (WheelInput) so that tests need no window system;
// fromWheelEvent() reads them off a QWheelEvent.
//
// Thread rules: a value used on the main thread.
#pragma once

#include <chrono>
#include <optional>

class QWheelEvent;

namespace orrery::app {

struct WheelInput {
  enum class Phase { none, began, updated, ended, momentum };

  Phase phase = Phase::none;
  // Movement in pixels (touchpads) or wheel steps scaled to pixels (15 a
  // click); negative for a wheel turned down or fingers moving left or up.
  double dx = 0;
  double dy = 0;
  std::chrono::milliseconds timestamp{0};
};

WheelInput fromWheelEvent(const QWheelEvent& event);

class SwipeTracker {
 public:
  static constexpr double swipeThreshold = 50.0;
  static constexpr std::chrono::milliseconds wheelPause{300};

  // -1 (previous page), +1 (next page) or nothing.
  std::optional<int> pageDelta(const WheelInput& input);

 private:
  double accumulated_ = 0;
  bool firedInGesture_ = false;
  std::optional<std::chrono::milliseconds> lastWheelPage_;
};

}  // namespace orrery::app
