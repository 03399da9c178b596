// KeyboardLayout: what the current keyboard layout says about keys, for the
// shortcut recorder and for showing a shortcut.
//
// Key codes are those HotKey stores (see OrreryCore/triggers/KeyCombo.h).
// character() is what the layout types for the key without modifiers (the
// recorder's display upper-cases it); keyCode() turns the window system's
// code of a pressed key (a QKeyEvent's native scan code) into a key code.
//
// Thread rules: main thread only.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orrery::app {

class KeyboardLayout {
 public:
  virtual ~KeyboardLayout() = default;
  virtual std::optional<std::string> character(std::uint32_t keyCode) = 0;
  virtual std::optional<std::uint32_t> keyCode(std::uint32_t nativeScanCode) = 0;

 protected:
  KeyboardLayout() = default;
  KeyboardLayout(const KeyboardLayout&) = default;
  KeyboardLayout& operator=(const KeyboardLayout&) = default;
};

}  // namespace orrery::app
