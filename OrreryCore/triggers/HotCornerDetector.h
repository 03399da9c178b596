// HotCornerDetector: decides when resting the pointer in a screen corner
// opens the overlay.
//
// It is fed pointer positions, the frames of all displays, whether the chosen
// modifier is held and a monotonic "now" in seconds, and answers true exactly
// once per visit, when the pointer has stayed `dwell` seconds in the corner.
// Coordinates are global screen space with the origin at the bottom left and
// y growing upwards (see base/Geometry.h), so a frame's top-left corner is
// (minX, maxY); adapters convert from their toolkit first.
//
// Only corners that are real count: where two displays meet, the pointer
// slides across the shared edge instead of stopping, so such a corner would
// fire on every pass.
//
// Thread rules: a plain value; the monitor owns one on the main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "OrreryCore/base/Geometry.h"
#include "OrreryCore/settings/TriggerEnums.h"

namespace orrery {

struct HotCornerDetector {
  // What the monitor always uses.
  static constexpr double defaultTolerance = 2.0;  // points, on each axis
  static constexpr double defaultDwell = 0.15;     // seconds
  // The monitor also watches this far beyond the tolerance, to poll while
  // the pointer rests and to block a drag that arrives at the corner.
  static constexpr double nearMargin = 20.0;

  Corner corner = Corner::none;
  CornerModifier modifier = CornerModifier::none;
  double tolerance = defaultTolerance;
  double dwell = defaultDwell;
  std::optional<double> entryTime;  // when the current visit began
  bool fired = false;               // whether the current visit already fired

  HotCornerDetector() = default;
  HotCornerDetector(Corner watched, double toleranceInPoints, double dwellSeconds,
                    CornerModifier required = CornerModifier::none)
      : corner(watched), modifier(required), tolerance(toleranceInPoints), dwell(dwellSeconds) {}

  // The corner's point of a display frame; nothing for Corner::none.
  static std::optional<Point> cornerPoint(Corner corner, const Rect& frame);

  // Whether `corner` of screens[index] is a real corner: no other display
  // touches it diagonally, horizontally or vertically (bounds inclusive).
  static bool isRealCorner(Corner corner, std::span<const Rect> screens, std::size_t index);

  // Whether the point lies within `tolerance` of the watched corner of some
  // display, on both axes, and that corner is real.
  bool isInCorner(Point point, std::span<const Rect> screens) const;

  // Whether the point lies within `margin` of the watched corner of some
  // display on both axes; real or not, so the monitor also blocks drags
  // towards a shared corner.
  bool isNear(Point point, std::span<const Rect> screens, double margin) const;

  // One observation. True exactly when the corner fires; afterwards the
  // pointer must leave the corner (or the modifier be released) before it
  // can fire again. `now` is monotonic seconds (system uptime).
  bool update(Point point, std::span<const Rect> screens, bool modifierHeld, double now);

  friend bool operator==(const HotCornerDetector&, const HotCornerDetector&) = default;
};

// The event flag (EventFlags.h) that a corner modifier stands for; 0 for none.
std::uint64_t eventFlag(CornerModifier modifier);

// Whether the modifier is held in the given event flags; false for none,
// which asks for no key at all.
bool isModifierHeld(CornerModifier modifier, std::uint64_t eventFlags);

}  // namespace orrery
