#include "Orrery/platform/x11/X11KeyboardLayout.h"

#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>
#include <xkbcommon/xkbcommon.h>

#include <array>

#include "Orrery/platform/x11/Freed.h"
#include "Orrery/platform/x11/X11EventConnection.h"
#include "OrreryCore/triggers/X11KeyTable.h"

namespace orrery::platform {

std::optional<std::string> X11KeyboardLayout::character(std::uint32_t keyCode) {
  const auto keysym = X11KeyTable::keysymForKeyCode(keyCode);
  if (!keysym) return std::nullopt;
  const Freed found(xcb_key_symbols_get_keycode(connection_->keySymbols(), *keysym));
  const bool onKeyboard = found && *found.value != XCB_NO_SYMBOL;
  if (!onKeyboard) return std::nullopt;
  std::array<char, 16> text{};
  const int length = xkb_keysym_to_utf8(*keysym, text.data(), text.size());
  // 0: no text for this keysym; the terminating zero is counted.
  if (length <= 1) return std::nullopt;
  return std::string(text.data(), static_cast<std::size_t>(length - 1));
}

std::optional<std::uint32_t> X11KeyboardLayout::keyCode(std::uint32_t nativeScanCode) {
  if (nativeScanCode > 255) return std::nullopt;
  const xcb_keysym_t keysym =
      xcb_key_symbols_get_keysym(connection_->keySymbols(), static_cast<xcb_keycode_t>(nativeScanCode), 0);
  if (keysym == XCB_NO_SYMBOL) return std::nullopt;
  return X11KeyTable::keyCodeForKeysym(keysym);
}

}  // namespace orrery::platform
