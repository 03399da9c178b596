// Corner and CornerModifier: which screen corner opens the overlay, and which
// key must be held for it to count.
//
// Both are part of the settings record and are stored and synced as their
// case names ("topLeft", "command", …). The cases are listed in the order the
// settings window offers them; `allCorners` and `allCornerModifiers` keep that
// order for iteration.
//
// Thread rules: plain values and pure functions.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace orrery {

enum class Corner : std::uint8_t { none, topLeft, topRight, bottomLeft, bottomRight };

enum class CornerModifier : std::uint8_t { none, command, option, control, shift };

inline constexpr std::array<Corner, 5> allCorners = {Corner::none, Corner::topLeft, Corner::topRight,
                                                     Corner::bottomLeft, Corner::bottomRight};

inline constexpr std::array<CornerModifier, 5> allCornerModifiers = {
    CornerModifier::none, CornerModifier::command, CornerModifier::option, CornerModifier::control,
    CornerModifier::shift};

constexpr std::string_view caseName(Corner corner) {
  switch (corner) {
    case Corner::none:
      return "none";
    case Corner::topLeft:
      return "topLeft";
    case Corner::topRight:
      return "topRight";
    case Corner::bottomLeft:
      return "bottomLeft";
    case Corner::bottomRight:
      return "bottomRight";
  }
  return "none";
}

constexpr std::string_view caseName(CornerModifier modifier) {
  switch (modifier) {
    case CornerModifier::none:
      return "none";
    case CornerModifier::command:
      return "command";
    case CornerModifier::option:
      return "option";
    case CornerModifier::control:
      return "control";
    case CornerModifier::shift:
      return "shift";
  }
  return "none";
}

// Nothing for a text that names no case (matching is exact, case-sensitive).
constexpr std::optional<Corner> cornerFromCaseName(std::string_view name) {
  for (const Corner corner : allCorners)
    if (caseName(corner) == name) return corner;
  return std::nullopt;
}

constexpr std::optional<CornerModifier> cornerModifierFromCaseName(std::string_view name) {
  for (const CornerModifier modifier : allCornerModifiers)
    if (caseName(modifier) == name) return modifier;
  return std::nullopt;
}

}  // namespace orrery
