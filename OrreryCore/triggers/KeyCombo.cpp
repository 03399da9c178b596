#include "OrreryCore/triggers/KeyCombo.h"

#include <array>

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include "OrreryCore/text/Localized.h"
#include "OrreryCore/triggers/EventFlags.h"

namespace orrery::KeyCombo {

namespace {

struct NamedKey {
  std::uint32_t keyCode;
  std::string_view name;
};

constexpr std::uint32_t spaceKeyCode = 49;

// Keys whose name never depends on the keyboard layout. Space is named here
// too but translated, so its entry's text is only a placeholder.
constexpr std::array<NamedKey, 27> specialKeys = {{
    {122, "F1"},
    {120, "F2"},
    {99, "F3"},
    {118, "F4"},
    {96, "F5"},
    {97, "F6"},
    {98, "F7"},
    {100, "F8"},
    {101, "F9"},
    {109, "F10"},
    {103, "F11"},
    {111, "F12"},
    {spaceKeyCode, "Space"},
    {36, "↩"},
    {76, "⌤"},
    {48, "⇥"},
    {51, "⌫"},
    {117, "⌦"},
    {53, "⎋"},
    {123, "←"},
    {124, "→"},
    {125, "↓"},
    {126, "↑"},
    {115, "↖"},
    {119, "↘"},
    {116, "⇞"},
    {121, "⇟"},
}};

constexpr std::array<std::uint32_t, specialKeys.size()> specialCodes = [] {
  std::array<std::uint32_t, specialKeys.size()> codes{};
  for (std::size_t i = 0; i < specialKeys.size(); ++i) codes[i] = specialKeys[i].keyCode;
  return codes;
}();

// What the keys of a US ANSI keyboard print, for when the layout names
// nothing (no layout service, or a dead key). The keypad keys keep their
// own codes, so they are listed separately from the main block.
constexpr std::array<NamedKey, 65> fallbackCharacters = {{
    {0x00, "A"},
    {0x01, "S"},
    {0x02, "D"},
    {0x03, "F"},
    {0x04, "H"},
    {0x05, "G"},
    {0x06, "Z"},
    {0x07, "X"},
    {0x08, "C"},
    {0x09, "V"},
    {0x0B, "B"},
    {0x0C, "Q"},
    {0x0D, "W"},
    {0x0E, "E"},
    {0x0F, "R"},
    {0x10, "Y"},
    {0x11, "T"},
    {0x12, "1"},
    {0x13, "2"},
    {0x14, "3"},
    {0x15, "4"},
    {0x16, "6"},
    {0x17, "5"},
    {0x18, "="},
    {0x19, "9"},
    {0x1A, "7"},
    {0x1B, "-"},
    {0x1C, "8"},
    {0x1D, "0"},
    {0x1E, "]"},
    {0x1F, "O"},
    {0x20, "U"},
    {0x21, "["},
    {0x22, "I"},
    {0x23, "P"},
    {0x25, "L"},
    {0x26, "J"},
    {0x27, "'"},
    {0x28, "K"},
    {0x29, ";"},
    {0x2A, "\\"},
    {0x2B, ","},
    {0x2C, "/"},
    {0x2D, "N"},
    {0x2E, "M"},
    {0x2F, "."},
    {0x32, "`"},
    // Keypad.
    {0x41, "."},
    {0x43, "*"},
    {0x45, "+"},
    {0x47, "⌧"},
    {0x4B, "/"},
    {0x4E, "-"},
    {0x51, "="},
    {0x52, "0"},
    {0x53, "1"},
    {0x54, "2"},
    {0x55, "3"},
    {0x56, "4"},
    {0x57, "5"},
    {0x58, "6"},
    {0x59, "7"},
    {0x5B, "8"},
    {0x5C, "9"},
    // The extra key of ISO keyboards, left of 1 on Apple's.
    {0x0A, "§"},
}};

const NamedKey* find(std::span<const NamedKey> table, std::uint32_t keyCode) {
  for (const NamedKey& entry : table)
    if (entry.keyCode == keyCode) return &entry;
  return nullptr;
}

// The words for the special keys that keyName() shows as symbols. One call
// with literal texts each, so that the translation tools find them.
std::optional<std::string> keyWord(std::uint32_t keyCode) {
  switch (keyCode) {
    case 36:
      return text::localized("Return", "Name of a key in a shortcut");
    case 76:
      return text::localized("Enter", "Name of a key in a shortcut");
    case 48:
      return text::localized("Tab", "Name of a key in a shortcut");
    case 51:
      return text::localized("Backspace", "Name of a key in a shortcut");
    case 117:
      return text::localized("Delete", "Name of a key in a shortcut");
    case 53:
      return text::localized("Escape", "Name of a key in a shortcut");
    case 123:
      return text::localized("Left", "Name of a key in a shortcut");
    case 124:
      return text::localized("Right", "Name of a key in a shortcut");
    case 125:
      return text::localized("Down", "Name of a key in a shortcut");
    case 126:
      return text::localized("Up", "Name of a key in a shortcut");
    case 115:
      return text::localized("Home", "Name of a key in a shortcut");
    case 119:
      return text::localized("End", "Name of a key in a shortcut");
    case 116:
      return text::localized("Page Up", "Name of a key in a shortcut");
    case 121:
      return text::localized("Page Down", "Name of a key in a shortcut");
    default:
      return std::nullopt;
  }
}

// Locale-independent full upper-casing, so "ß" becomes "SS" on every system.
std::string upperCased(const std::string& text) {
  std::string out;
  icu::UnicodeString::fromUTF8(text).toUpper(icu::Locale::getRoot()).toUTF8String(out);
  return out;
}

}  // namespace

std::uint32_t carbonModifiers(std::uint64_t cocoaFlags) {
  std::uint32_t mask = 0;
  if (cocoaFlags & EventFlags::command) mask |= HotKey::kCommand;
  if (cocoaFlags & EventFlags::shift) mask |= HotKey::kShift;
  if (cocoaFlags & EventFlags::option) mask |= HotKey::kOption;
  if (cocoaFlags & EventFlags::control) mask |= HotKey::kControl;
  return mask;
}

RecorderInput interpret(std::uint16_t keyCode, std::uint64_t cocoaFlags) {
  if (keyCode == escapeKeyCode) return RecorderInput::cancel();
  const std::uint32_t mask = carbonModifiers(cocoaFlags);
  if ((mask & (HotKey::kCommand | HotKey::kOption | HotKey::kControl)) == 0) return RecorderInput::ignore();
  return RecorderInput::accept(HotKey{keyCode, mask});
}

std::string display(const HotKey& key, const LayoutName& layoutName) {
  std::string out;
  if (key.carbonModifiers & HotKey::kControl) out += "⌃";
  if (key.carbonModifiers & HotKey::kOption) out += "⌥";
  if (key.carbonModifiers & HotKey::kShift) out += "⇧";
  if (key.carbonModifiers & HotKey::kCommand) out += "⌘";
  return out + keyName(key.keyCode, layoutName);
}

std::string displayInWords(const HotKey& key, const LayoutName& layoutName) {
  std::string out;
  if (key.carbonModifiers & HotKey::kControl)
    out += text::localized("Ctrl", "The Control key in a shortcut") + '+';
  if (key.carbonModifiers & HotKey::kOption) out += text::localized("Alt", "The Alt key in a shortcut") + '+';
  if (key.carbonModifiers & HotKey::kShift)
    out += text::localized("Shift", "The Shift key in a shortcut") + '+';
  if (key.carbonModifiers & HotKey::kCommand)
    out += text::localized("Super", "The Super (Windows) key in a shortcut") + '+';
  if (std::optional<std::string> word = keyWord(key.keyCode)) return out + *word;
  return out + keyName(key.keyCode, layoutName);
}

std::string keyName(std::uint32_t keyCode, const LayoutName& layoutName) {
  if (keyCode == spaceKeyCode) return text::localized("Space", "Name of the space bar key");
  if (const NamedKey* special = find(specialKeys, keyCode)) return std::string(special->name);
  if (layoutName) {
    const std::optional<std::string> character = layoutName(keyCode);
    if (character && !character->empty()) return upperCased(*character);
  }
  if (const NamedKey* fallback = find(fallbackCharacters, keyCode)) return std::string(fallback->name);
  return text::arg(text::localized("Key %1", "Name of an unknown key, with its code"),
                   {std::to_string(keyCode)});
}

bool isCharacterKey(std::uint32_t keyCode) { return find(specialKeys, keyCode) == nullptr; }

std::span<const std::uint32_t> specialKeyCodes() { return specialCodes; }

std::optional<std::string_view> fallbackCharacter(std::uint32_t keyCode) {
  if (const NamedKey* entry = find(fallbackCharacters, keyCode)) return entry->name;
  return std::nullopt;
}

}  // namespace orrery::KeyCombo
