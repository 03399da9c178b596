#include "OrreryCore/overlay/EdgeAutoScroll.h"

#include <algorithm>

namespace orrery::EdgeAutoScroll {

double velocity(double y, double minY, double maxY) {
  const double span = maxY - minY;
  if (span < 0) return 0;
  const double zone = std::min(span * 0.5, edgeHeight);
  if (!(zone > 0)) return 0;
  if (y - minY < zone) return -maxSpeed * std::min(1.0, (zone - (y - minY)) / zone);
  if (maxY - y < zone) return maxSpeed * std::min(1.0, (zone - (maxY - y)) / zone);
  return 0;
}

}  // namespace orrery::EdgeAutoScroll
