#include "Orrery/triggers/HotCornerMonitor.h"

namespace orrery::app {

HotCornerMonitor::HotCornerMonitor(Clock& clock, GlobalPointer& pointer, std::function<void()> onTrigger)
    : clock_(clock),
      pointer_(pointer),
      onTrigger_(std::move(onTrigger)),
      pointSource_([&pointer] { return pointer.position(); }),
      screensSource_([&pointer] { return pointer.screens(); }),
      modifierSource_([&pointer] { return pointer.modifierFlags(); }),
      buttonsSource_([&pointer] { return pointer.buttons(); }) {}

HotCornerMonitor::~HotCornerMonitor() {
  if (listening_) pointer_.watchMotion({});
}

HotCornerDetector HotCornerMonitor::freshDetector() const {
  return HotCornerDetector(detector_.corner, HotCornerDetector::defaultTolerance,
                           HotCornerDetector::defaultDwell, detector_.modifier);
}

void HotCornerMonitor::apply(Corner corner, CornerModifier modifier) {
  detector_ = HotCornerDetector(corner, HotCornerDetector::defaultTolerance, HotCornerDetector::defaultDwell,
                                modifier);
  blockedUntilLeave_ = false;
  timer_.cancel();
  timer_ = {};
  const bool listen = corner != Corner::none;
  if (listen == listening_) return;
  listening_ = listen;
  if (listen)
    pointer_.watchMotion([this] { pointerMoved(); });
  else
    pointer_.watchMotion({});
}

void HotCornerMonitor::pointerMoved() {
  const Point point = pointSource_();
  const std::vector<Rect> screens = screensSource_();
  const bool near = detector_.isNear(point, screens, detector_.tolerance + HotCornerDetector::nearMargin);
  if (!near) blockedUntilLeave_ = false;

  if (near && buttonsSource_() != 0) {
    blockedUntilLeave_ = true;
    detector_ = freshDetector();
  } else if (!blockedUntilLeave_) {
    const bool modifierHeld = isModifierHeld(detector_.modifier, modifierSource_());
    const double now = std::chrono::duration<double>(clock_.monotonicNow().time_since_epoch()).count();
    if (detector_.update(point, screens, modifierHeld, now) && onTrigger_) onTrigger_();
  }

  if (near) {
    if (!timer_.isSet()) startTimer();
  } else {
    timer_.cancel();
    timer_ = {};
  }
}

void HotCornerMonitor::startTimer() {
  // One-shot timers, re-armed from each tick while the pointer stays near:
  // the clock has no repeating timer, and a tick that finds the pointer
  // gone simply does not arm the next.
  timer_ = clock_.runAfter(pollInterval, [this] {
    timer_ = {};
    pointerMoved();
  });
}

}  // namespace orrery::app
