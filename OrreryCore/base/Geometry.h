// Point, Size and Rect: plain geometry in points, as doubles.
//
// The core uses two coordinate spaces and says in each signature which one:
// grid space (origin at the top left of the grid area, y downwards) for the
// overlay and drag rules, and global screen space (origin at the bottom left
// of the primary display, y upwards) for hot corners. Adapters convert from
// the toolkit's space before calling the core.
//
// Thread rules: plain values.
#pragma once

#include <algorithm>

namespace orrery {

struct Point {
  double x = 0;
  double y = 0;
  friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
  double width = 0;
  double height = 0;
  friend bool operator==(const Size&, const Size&) = default;
};

struct Rect {
  Point origin;
  Size size;

  double minX() const { return origin.x; }
  double minY() const { return origin.y; }
  double maxX() const { return origin.x + size.width; }
  double maxY() const { return origin.y + size.height; }
  double midX() const { return origin.x + size.width / 2; }
  double midY() const { return origin.y + size.height / 2; }
  double width() const { return size.width; }
  double height() const { return size.height; }

  // Half-open like the usual toolkit rule: the max edges are outside.
  bool contains(Point p) const { return p.x >= minX() && p.x < maxX() && p.y >= minY() && p.y < maxY(); }
  // The rectangle shrunk by dx, dy on each side (grown when negative).
  Rect insetBy(double dx, double dy) const {
    return Rect{{origin.x + dx, origin.y + dy},
                {std::max(0.0, size.width - 2 * dx), std::max(0.0, size.height - 2 * dy)}};
  }

  friend bool operator==(const Rect&, const Rect&) = default;
};

}  // namespace orrery
