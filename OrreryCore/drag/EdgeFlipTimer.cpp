#include "OrreryCore/drag/EdgeFlipTimer.h"

namespace orrery {

std::optional<int> EdgeFlipTimer::update(double x, double minX, double maxX, double now) {
  std::optional<int> at;
  if (x <= minX + edgeWidth) {
    at = -1;  // left first, so a span narrower than both bands flips back
  } else if (x >= maxX - edgeWidth) {
    at = 1;
  }
  if (!at) {
    edge.reset();
    fired = false;
    return std::nullopt;
  }
  if (edge != at) {
    edge = at;
    since = now;
    fired = false;
    return std::nullopt;
  }
  // Compare against the deadline rather than the elapsed time: now - since
  // loses the last bits (10.6 - 10 is just under 0.6 in doubles), so a tick
  // that lands exactly on the deadline would miss it.
  if (fired || now < since + dwell) return std::nullopt;
  fired = true;
  return at;
}

}  // namespace orrery
