// GlobalPointer: the pointer as the whole desktop sees it, for the hot
// corner: where it is, which modifier keys and buttons are held, the frames
// of the displays, and a signal whenever it moves anywhere.
//
// Positions and frames are in the core's global screen space: origin at the
// bottom left of the primary display, y growing upwards (see
// OrreryCore/base/Geometry.h); adapters convert from their window system.
// Modifiers use the event-flag layout of OrreryCore/triggers/EventFlags.h;
// buttons are one bit per pressed button (bit 0 the primary button).
//
// Implementations live in Orrery/platform and are made by
// platform::makeGlobalPointer(); where no client may follow the pointer
// across the desktop (Wayland) there is none.
//
// Thread rules: main thread only; the motion callback runs there.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "OrreryCore/base/Geometry.h"

namespace orrery::app {

class GlobalPointer {
 public:
  virtual ~GlobalPointer() = default;

  // Starts calling `onMoved` after pointer motion anywhere on the desktop
  // (several moves may be reported as one); an empty function stops
  // listening altogether, so that an unused hot corner costs nothing.
  virtual void watchMotion(std::function<void()> onMoved) = 0;

  virtual Point position() = 0;
  virtual std::vector<Rect> screens() = 0;
  virtual std::uint64_t modifierFlags() = 0;
  virtual std::uint32_t buttons() = 0;

 protected:
  GlobalPointer() = default;
  GlobalPointer(const GlobalPointer&) = default;
  GlobalPointer& operator=(const GlobalPointer&) = default;
};

}  // namespace orrery::app
