// X11KeyboardLayout: key names and pressed keys through the X server's
// keyboard map.
//
// A pressed key's keycode becomes its unshifted keysym and then, through
// X11KeyTable, the stored key code. A key code's character is its keysym's
// text (libxkbcommon), provided the current map has that keysym at all.
//
// Thread rules: main thread only.
#pragma once

#include <memory>

#include "Orrery/triggers/KeyboardLayout.h"

namespace orrery::platform {

class X11EventConnection;

class X11KeyboardLayout final : public app::KeyboardLayout {
 public:
  explicit X11KeyboardLayout(std::shared_ptr<X11EventConnection> connection)
      : connection_(std::move(connection)) {}

  std::optional<std::string> character(std::uint32_t keyCode) override;
  std::optional<std::uint32_t> keyCode(std::uint32_t nativeScanCode) override;

 private:
  std::shared_ptr<X11EventConnection> connection_;
};

}  // namespace orrery::platform
