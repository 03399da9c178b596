// The modifier bits of a keyboard or mouse event as the trigger rules see
// them: the macOS event-flag layout (Shift bit 17, Control 18, Option 19,
// Command 20), whatever the platform.
//
// Hot-corner modifiers and the shortcut recorder both speak this layout, so
// one adapter per platform translates its native state into it once (see
// X11KeyTable.h for X11) and everything above stays the same. Other bits
// (Caps Lock, Function, device-dependent bits) may be present and are ignored.
//
// Thread rules: constants only.
#pragma once

#include <cstdint>

namespace orrery::EventFlags {

inline constexpr std::uint64_t shift = std::uint64_t{1} << 17;
inline constexpr std::uint64_t control = std::uint64_t{1} << 18;
inline constexpr std::uint64_t option = std::uint64_t{1} << 19;
inline constexpr std::uint64_t command = std::uint64_t{1} << 20;

}  // namespace orrery::EventFlags
