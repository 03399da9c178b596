// X11GlobalPointer: the pointer of an X server for the hot corner.
//
// Motion comes as XInput 2 raw motion selected on the root window, and only
// while someone watches; the position, modifiers and buttons are asked with
// QueryPointer when the hot corner wants them, so a pointer that rests costs
// nothing. The displays are Qt's screens in device pixels, the space
// QueryPointer answers in, turned into the core's bottom-left space with the
// primary screen's bottom edge as y = 0.
//
// Thread rules: main thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "Orrery/triggers/GlobalPointer.h"

namespace orrery::platform {

class X11EventConnection;

class X11GlobalPointer final : public app::GlobalPointer {
 public:
  // Nothing when the server lacks XInput 2.2.
  static std::unique_ptr<X11GlobalPointer> make(std::shared_ptr<X11EventConnection> connection);
  ~X11GlobalPointer() override;

  void watchMotion(std::function<void()> onMoved) override;
  Point position() override;
  std::vector<Rect> screens() override;
  std::uint64_t modifierFlags() override;
  std::uint32_t buttons() override;

  // Top-left device pixels (y down) of a screen frame or point -> the
  // core's space, given the primary screen's bottom edge.
  static Rect toCoreSpace(int x, int y, int width, int height, int primaryBottom);
  static Point toCoreSpace(int x, int y, int primaryBottom);

 private:
  struct Query {
    int x = 0;
    int y = 0;
    std::uint16_t mask = 0;
  };
  explicit X11GlobalPointer(std::shared_ptr<X11EventConnection> connection);
  std::optional<Query> query();
  void select(bool motion);
  int primaryBottom() const;

  std::shared_ptr<X11EventConnection> connection_;
  std::function<void()> onMoved_;
};

}  // namespace orrery::platform
