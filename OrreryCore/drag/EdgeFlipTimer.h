// EdgeFlipTimer: flips the page when a dragged item is held at the left or
// right edge of the overlay.
//
// The page flips once the pointer has stayed in an edge band for `dwell`
// seconds, and only once per stay: to flip again the pointer leaves the band
// and comes back (or the caller starts a new timer after a flip). Time is a
// parameter, in seconds of whatever monotonic clock the caller ticks with.
//
// Thread rules: a plain value, fed from the drag controller's pointer moves
// and ticks.
#pragma once

#include <optional>

namespace orrery {

struct EdgeFlipTimer {
  static constexpr double edgeWidth = 40;  // points, measured inwards from each edge
  static constexpr double dwell = 0.6;     // seconds

  std::optional<int> edge;  // -1 left, +1 right, nothing when away from both edges
  double since = 0;         // when the pointer entered the current edge band
  bool fired = false;       // this stay at the edge has flipped the page already

  // The pointer is at x within the horizontal span [minX, maxX] at time
  // `now`. Returns -1 (previous page) or +1 (next page) when the page should
  // flip now, else nothing.
  std::optional<int> update(double x, double minX, double maxX, double now);

  friend bool operator==(const EdgeFlipTimer&, const EdgeFlipTimer&) = default;
};

}  // namespace orrery
