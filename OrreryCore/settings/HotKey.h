// HotKey: the keyboard shortcut that toggles the overlay, in its stored and
// synced form.
//
// The key is a macOS virtual key code and the modifiers a Carbon hot-key
// mask (Command 0x100, Shift 0x200, Option 0x800, Control 0x1000) on every
// platform, so one record means the same shortcut on every machine of the
// user; each platform's adapter translates (see triggers/ for the X11 table).
// JSON: {"carbonModifiers": N, "keyCode": N}, both required unsigned 32-bit.
//
// Thread rules: a plain value.
#pragma once

#include <cstdint>
#include <optional>

#include <nlohmann/json_fwd.hpp>

namespace orrery {

struct HotKey {
  std::uint32_t keyCode = 0;
  std::uint32_t carbonModifiers = 0;

  static constexpr std::uint32_t kCommand = 0x100;
  static constexpr std::uint32_t kShift = 0x200;
  static constexpr std::uint32_t kOption = 0x800;
  static constexpr std::uint32_t kControl = 0x1000;

  nlohmann::json toJson() const;
  // Nothing unless both keys hold unsigned 32-bit integers.
  static std::optional<HotKey> fromJson(const nlohmann::json& json);

  friend bool operator==(const HotKey&, const HotKey&) = default;
};

}  // namespace orrery
