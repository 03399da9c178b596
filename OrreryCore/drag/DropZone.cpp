#include "OrreryCore/drag/DropZone.h"

namespace orrery {

DropZone classifyDropZone(Point point, const Rect& tileFrame) {
  const Rect centre = tileFrame.insetBy(tileFrame.width() / 3, tileFrame.height() / 3);
  if (centre.contains(point)) return DropZone::merge;
  return point.x < tileFrame.midX() ? DropZone::before : DropZone::after;
}

}  // namespace orrery
