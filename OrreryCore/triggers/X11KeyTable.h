// X11KeyTable: how the X11 adapter turns keysyms and X11 modifier state into
// the macOS virtual key codes and Carbon modifier mask that HotKey stores on
// every platform, and back.
//
// The mapping is by meaning, not by physical position: keysym "z" is the
// Z key of a US ANSI keyboard (code 0x06) whatever the layout puts where, so
// the recorder stores the key the user pressed by its label, and the grab
// finds that label's key in the current layout. Modifier keys (Shift_L,
// Super_L, …) are deliberately absent: pressed alone they are not a
// shortcut, and the recorder ignores keys the table does not know.
//
// Besides one keysym per key code, a few aliases map to a key code: the
// other keysyms of the same physical key (upper-case letters, Shift+Tab, the
// keypad's navigation level). Going back always gives the main keysym, which
// the same key produces too, so a grab through it lands on that key.
//
// Modifiers use the usual X server assignment: Mod1 is Alt (Option), Mod4 is
// Super (Command); Lock (Caps Lock) and Mod2 (Num Lock) are not part of a
// shortcut, which is why the grab is repeated with lockVariants.
//
// No X11 header is included: the keysym and mask values are the protocol's
// fixed numbers, written out here.
//
// Thread rules: constant tables and pure functions.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace orrery::X11KeyTable {

// Bits of the X11 key and button event state.
namespace Mask {
inline constexpr std::uint32_t shift = 1U << 0;
inline constexpr std::uint32_t lock = 1U << 1;
inline constexpr std::uint32_t control = 1U << 2;
inline constexpr std::uint32_t mod1 = 1U << 3;  // Alt
inline constexpr std::uint32_t mod2 = 1U << 4;  // Num Lock
inline constexpr std::uint32_t mod3 = 1U << 5;
inline constexpr std::uint32_t mod4 = 1U << 6;  // Super
inline constexpr std::uint32_t mod5 = 1U << 7;
}  // namespace Mask

// The extra modifier masks a grab must also be made with, so the shortcut
// works with Caps Lock or Num Lock on.
inline constexpr std::array<std::uint32_t, 4> lockVariants = {0, Mask::lock, Mask::mod2,
                                                              Mask::lock | Mask::mod2};

struct Entry {
  std::uint32_t keysym;
  std::uint32_t keyCode;  // macOS virtual key code
  friend bool operator==(const Entry&, const Entry&) = default;
};

// One entry per key code: the keysym used to grab that key.
std::span<const Entry> entries();
// Further keysyms of keys in entries(), mapping one way only.
std::span<const Entry> aliases();

// The key code of a keysym (main or alias); nothing for keys the table
// does not know.
std::optional<std::uint32_t> keyCodeForKeysym(std::uint32_t keysym);
// The main keysym of a key code; nothing for codes the table does not know.
std::optional<std::uint32_t> keysymForKeyCode(std::uint32_t keyCode);

// X11 state -> Carbon mask (HotKey::kCommand, …); other bits are dropped.
std::uint32_t carbonModifiers(std::uint32_t x11State);
// Carbon mask -> X11 modifier mask for a grab; other bits are dropped.
std::uint32_t x11Modifiers(std::uint32_t carbonMask);
// X11 state -> event flags (EventFlags.h), for the recorder and hot corners.
std::uint64_t eventFlags(std::uint32_t x11State);

}  // namespace orrery::X11KeyTable
