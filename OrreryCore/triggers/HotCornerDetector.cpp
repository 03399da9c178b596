#include "OrreryCore/triggers/HotCornerDetector.h"

#include <cmath>

#include "OrreryCore/triggers/EventFlags.h"

namespace orrery {

namespace {

// Frames share their edges: a display directly to the right starts at the
// very x where this one ends, so the probes must count the edges as inside.
bool containsInclusive(const Rect& frame, Point p) {
  return p.x >= frame.minX() && p.x <= frame.maxX() && p.y >= frame.minY() && p.y <= frame.maxY();
}

bool isLeft(Corner corner) { return corner == Corner::topLeft || corner == Corner::bottomLeft; }
bool isTop(Corner corner) { return corner == Corner::topLeft || corner == Corner::topRight; }

bool within(Point point, Point target, double distance) {
  return std::abs(point.x - target.x) <= distance && std::abs(point.y - target.y) <= distance;
}

}  // namespace

std::optional<Point> HotCornerDetector::cornerPoint(Corner corner, const Rect& frame) {
  if (corner == Corner::none) return std::nullopt;
  return Point{isLeft(corner) ? frame.minX() : frame.maxX(), isTop(corner) ? frame.maxY() : frame.minY()};
}

bool HotCornerDetector::isRealCorner(Corner corner, std::span<const Rect> screens, std::size_t index) {
  if (index >= screens.size()) return false;
  const auto point = cornerPoint(corner, screens[index]);
  if (!point) return false;
  // One point beyond the corner on one axis and one point inside on the
  // other: a display found there continues the edge the pointer runs along.
  const double dx = isLeft(corner) ? -1.0 : 1.0;
  const double dy = isTop(corner) ? 1.0 : -1.0;
  const Point beyondHorizontally{point->x + dx, point->y - dy};
  const Point beyondVertically{point->x - dx, point->y + dy};
  for (std::size_t other = 0; other < screens.size(); ++other) {
    if (other == index) continue;
    if (containsInclusive(screens[other], beyondHorizontally) ||
        containsInclusive(screens[other], beyondVertically))
      return false;
  }
  return true;
}

bool HotCornerDetector::isInCorner(Point point, std::span<const Rect> screens) const {
  for (std::size_t i = 0; i < screens.size(); ++i) {
    const auto target = cornerPoint(corner, screens[i]);
    if (target && within(point, *target, tolerance) && isRealCorner(corner, screens, i)) return true;
  }
  return false;
}

bool HotCornerDetector::isNear(Point point, std::span<const Rect> screens, double margin) const {
  for (const Rect& frame : screens) {
    const auto target = cornerPoint(corner, frame);
    if (target && within(point, *target, margin)) return true;
  }
  return false;
}

bool HotCornerDetector::update(Point point, std::span<const Rect> screens, bool modifierHeld, double now) {
  const bool armed = corner != Corner::none && (modifier == CornerModifier::none || modifierHeld);
  if (!armed || !isInCorner(point, screens)) {
    entryTime.reset();
    fired = false;
    return false;
  }
  if (!entryTime) {
    entryTime = now;
    fired = false;
    if (dwell > 0) return false;
    fired = true;
    return true;
  }
  if (now - *entryTime < dwell || fired) return false;
  fired = true;
  return true;
}

std::uint64_t eventFlag(CornerModifier modifier) {
  switch (modifier) {
    case CornerModifier::none:
      return 0;
    case CornerModifier::command:
      return EventFlags::command;
    case CornerModifier::option:
      return EventFlags::option;
    case CornerModifier::control:
      return EventFlags::control;
    case CornerModifier::shift:
      return EventFlags::shift;
  }
  return 0;
}

bool isModifierHeld(CornerModifier modifier, std::uint64_t eventFlags) {
  const std::uint64_t flag = eventFlag(modifier);
  return flag != 0 && (eventFlags & flag) != 0;
}

}  // namespace orrery
