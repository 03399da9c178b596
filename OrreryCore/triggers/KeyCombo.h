// KeyCombo: the rules of the global shortcut that do not need the system —
// which key presses the shortcut recorder accepts, how event modifier flags
// become the hot-key mask that HotKey stores, and how a shortcut is shown.
//
// Key codes are macOS virtual key codes on every platform (the stored and
// synced form of HotKey); the X11 adapter maps keysyms to them with
// X11KeyTable.h before asking anything here. Names that depend on the
// keyboard layout come from the caller as a function, so the rules stay pure
// and tests can play any layout.
//
// Thread rules: pure functions. keyName() and display() return localized
// texts, so they may be called wherever text::localized() may.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "OrreryCore/settings/HotKey.h"

namespace orrery::KeyCombo {

// What the shortcut recorder does with one key press.
class RecorderInput {
 public:
  struct Accept {
    HotKey key;
    friend bool operator==(const Accept&, const Accept&) = default;
  };
  struct Cancel {
    friend bool operator==(const Cancel&, const Cancel&) = default;
  };
  struct Ignore {
    friend bool operator==(const Ignore&, const Ignore&) = default;
  };

  static RecorderInput accept(HotKey key) { return RecorderInput(Accept{key}); }
  static RecorderInput cancel() { return RecorderInput(Cancel{}); }
  static RecorderInput ignore() { return RecorderInput(Ignore{}); }

  bool isAccept() const { return std::holds_alternative<Accept>(value_); }
  bool isCancel() const { return std::holds_alternative<Cancel>(value_); }
  bool isIgnore() const { return std::holds_alternative<Ignore>(value_); }
  // The recorded shortcut when accepted.
  std::optional<HotKey> acceptedKey() const {
    if (const auto* accepted = std::get_if<Accept>(&value_)) return accepted->key;
    return std::nullopt;
  }

  friend bool operator==(const RecorderInput&, const RecorderInput&) = default;

 private:
  explicit RecorderInput(std::variant<Accept, Cancel, Ignore> value) : value_(value) {}
  std::variant<Accept, Cancel, Ignore> value_;
};

// Key code -> the character the current keyboard layout gives the key
// without modifiers, or nothing. An empty function names no key.
using LayoutName = std::function<std::optional<std::string>(std::uint32_t keyCode)>;

inline constexpr std::uint32_t escapeKeyCode = 53;

// The hot-key mask (HotKey::kCommand, …) for the event flags (EventFlags.h);
// bits other than the four modifiers are dropped.
std::uint32_t carbonModifiers(std::uint64_t cocoaFlags);

// Escape cancels whatever is held. A key without Command, Option or Control
// (bare, or with Shift alone) is ignored: it would take away a character
// the user types everywhere. Anything else is accepted with its modifiers.
RecorderInput interpret(std::uint16_t keyCode, std::uint64_t cocoaFlags);

// "⌃⌥⇧⌘" as far as set, in that order, followed by keyName(): the way
// macOS shows shortcuts.
std::string display(const HotKey& key, const LayoutName& layoutName = {});

// "Ctrl+Alt+Shift+Super+" as far as set, in that order, followed by the
// key's name in words ("Page Down" where display() shows "⇟"): the way
// Linux desktops show shortcuts. Every word is localized ("Strg+Entf").
std::string displayInWords(const HotKey& key, const LayoutName& layoutName = {});

// The special-key table's name; else the layout's character in upper case;
// else the fallback character table's entry (US ANSI keyboard); else
// "Key <code>".
std::string keyName(std::uint32_t keyCode, const LayoutName& layoutName = {});

// True when the key is not in the special-key table, i.e. its name comes
// from the keyboard layout.
bool isCharacterKey(std::uint32_t keyCode);

// The key codes of the special-key table, for settings lists and tests.
std::span<const std::uint32_t> specialKeyCodes();

// The fallback character of a key of the US ANSI keyboard, or nothing.
std::optional<std::string_view> fallbackCharacter(std::uint32_t keyCode);

}  // namespace orrery::KeyCombo
