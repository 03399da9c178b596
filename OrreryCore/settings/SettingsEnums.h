// BackgroundStyle and LayoutMode, the two enumerations of the settings
// record that are not about triggers (Corner and CornerModifier live in
// TriggerEnums.h; this header brings all four together).
//
// Stored and synced as their case names ("blurredWallpaper", "scroll", …);
// the `all…` arrays keep the order in which the settings window offers them.
// A name that matches no case gives nothing: the decoders decide whether
// that fails the record or falls back to a default.
//
// Thread rules: plain values and pure functions.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "OrreryCore/settings/TriggerEnums.h"

namespace orrery {

// How the overlay's background is drawn (see appearance/).
enum class BackgroundStyle : std::uint8_t { blurredWallpaper, glass, solid };

// Pages the user flips between, or one tall grid that scrolls.
enum class LayoutMode : std::uint8_t { paged, scroll };

inline constexpr std::array<BackgroundStyle, 3> allBackgroundStyles = {
    BackgroundStyle::blurredWallpaper, BackgroundStyle::glass, BackgroundStyle::solid};

inline constexpr std::array<LayoutMode, 2> allLayoutModes = {LayoutMode::paged, LayoutMode::scroll};

constexpr std::string_view caseName(BackgroundStyle style) {
  switch (style) {
    case BackgroundStyle::blurredWallpaper:
      return "blurredWallpaper";
    case BackgroundStyle::glass:
      return "glass";
    case BackgroundStyle::solid:
      return "solid";
  }
  return "blurredWallpaper";
}

constexpr std::string_view caseName(LayoutMode mode) {
  switch (mode) {
    case LayoutMode::paged:
      return "paged";
    case LayoutMode::scroll:
      return "scroll";
  }
  return "paged";
}

// Nothing for a text that names no case (matching is exact, case-sensitive).
constexpr std::optional<BackgroundStyle> backgroundStyleFromCaseName(std::string_view name) {
  for (const BackgroundStyle style : allBackgroundStyles)
    if (caseName(style) == name) return style;
  return std::nullopt;
}

constexpr std::optional<LayoutMode> layoutModeFromCaseName(std::string_view name) {
  for (const LayoutMode mode : allLayoutModes)
    if (caseName(mode) == name) return mode;
  return std::nullopt;
}

}  // namespace orrery
