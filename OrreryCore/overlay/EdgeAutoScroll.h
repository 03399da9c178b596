// EdgeAutoScroll: how fast the scrolling grid moves while an icon is dragged
// near its top or bottom edge.
//
// A band of up to edgeHeight points at each edge of the visible area is
// sensitive. The speed grows linearly from 0 at the band's inner border to
// maxSpeed at the edge and stays at maxSpeed beyond it, so pushing past the
// edge scrolls at full speed. In a visible area lower than two bands, each
// band takes half the height; where they meet, the top one wins.
//
// The caller multiplies the velocity by the time since its last tick and
// passes the new offset through ScrollGrid::clampedOffset.
//
// Thread rules: pure functions.
#pragma once

namespace orrery::EdgeAutoScroll {

inline constexpr double edgeHeight = 60.0;  // points
inline constexpr double maxSpeed = 1400.0;  // points per second

// Points per second for a pointer at height y over the visible band
// [minY, maxY] (grid coordinates, y downwards): negative scrolls up towards
// offset 0, positive scrolls down, 0 leaves the grid still.
double velocity(double y, double minY, double maxY);

}  // namespace orrery::EdgeAutoScroll
