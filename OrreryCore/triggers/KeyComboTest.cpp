#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <set>
#include <string>

#include "OrreryCore/text/Localized.h"
#include "OrreryCore/triggers/EventFlags.h"
#include "OrreryCore/triggers/KeyCombo.h"

namespace orrery {
namespace {

using KeyCombo::RecorderInput;

constexpr std::uint16_t kA = 0x00;
constexpr std::uint16_t kSpace = 49;
constexpr std::uint64_t capsLock = std::uint64_t{1} << 16;
constexpr std::uint64_t function = std::uint64_t{1} << 23;

// A layout service that knows a few keys, as a settings window would see it.
KeyCombo::LayoutName layout(std::map<std::uint32_t, std::string> names) {
  return [names = std::move(names)](std::uint32_t keyCode) -> std::optional<std::string> {
    const auto found = names.find(keyCode);
    if (found == names.end()) return std::nullopt;
    return found->second;
  };
}

class ScopedTranslator {
 public:
  explicit ScopedTranslator(text::Translator translator) { text::setTranslator(std::move(translator)); }
  ~ScopedTranslator() { text::setTranslator({}); }
};

TEST(KeyCombo, RecorderCancelsIgnoresAndAccepts) {
  EXPECT_EQ(KeyCombo::interpret(53, 0), RecorderInput::cancel());
  EXPECT_EQ(KeyCombo::interpret(53, EventFlags::command | EventFlags::shift), RecorderInput::cancel());

  EXPECT_EQ(KeyCombo::interpret(kA, 0), RecorderInput::ignore());
  EXPECT_EQ(KeyCombo::interpret(kA, EventFlags::shift), RecorderInput::ignore());
  EXPECT_EQ(KeyCombo::interpret(kA, EventFlags::shift | capsLock | function), RecorderInput::ignore());

  EXPECT_EQ(KeyCombo::interpret(kSpace, EventFlags::option),
            RecorderInput::accept({kSpace, HotKey::kOption}));
  EXPECT_EQ(KeyCombo::interpret(kA, EventFlags::control), RecorderInput::accept({kA, HotKey::kControl}));
  // Lock and device bits do not become part of the shortcut.
  const auto accepted =
      KeyCombo::interpret(40, EventFlags::command | EventFlags::shift | capsLock | function);
  EXPECT_TRUE(accepted.isAccept());
  EXPECT_EQ(accepted.acceptedKey(), (HotKey{40, HotKey::kCommand | HotKey::kShift}));
  EXPECT_FALSE(RecorderInput::ignore().acceptedKey());
}

TEST(KeyCombo, DisplayPutsModifiersInTheirFixedOrder) {
  const std::uint32_t all = HotKey::kCommand | HotKey::kShift | HotKey::kOption | HotKey::kControl;
  EXPECT_EQ(KeyCombo::display({kSpace, all}), "⌃⌥⇧⌘Space");
  EXPECT_EQ(KeyCombo::display({kSpace, HotKey::kCommand | HotKey::kControl}), "⌃⌘Space");
  EXPECT_EQ(KeyCombo::display({kA, HotKey::kShift | HotKey::kOption}), "⌥⇧A");
  // On a French layout the US A key types "q".
  EXPECT_EQ(KeyCombo::display({kA, HotKey::kCommand}, layout({{kA, "q"}})), "⌘Q");
  EXPECT_EQ(KeyCombo::display({122, 0}), "F1");
}

TEST(KeyCombo, InWordsAsLinuxDesktopsShowShortcuts) {
  const std::uint32_t all = HotKey::kCommand | HotKey::kShift | HotKey::kOption | HotKey::kControl;
  EXPECT_EQ(KeyCombo::displayInWords({kSpace, all}), "Ctrl+Alt+Shift+Super+Space");
  EXPECT_EQ(KeyCombo::displayInWords({kA, HotKey::kCommand}, layout({{kA, "q"}})), "Super+Q");
  EXPECT_EQ(KeyCombo::displayInWords({121, HotKey::kControl}), "Ctrl+Page Down");
  EXPECT_EQ(KeyCombo::displayInWords({36, HotKey::kOption}), "Alt+Return");
  EXPECT_EQ(KeyCombo::displayInWords({111, 0}), "F12");
  // Every special key has a word, not a symbol.
  for (const std::uint32_t code : KeyCombo::specialKeyCodes()) {
    const std::string shown = KeyCombo::displayInWords({code, 0});
    EXPECT_TRUE(std::all_of(shown.begin(), shown.end(), [](char c) { return c > 0 && c != '+'; }))
        << code << " " << shown;
  }
  ScopedTranslator german([](std::string_view source, std::string_view) -> std::string {
    if (source == "Ctrl") return "Strg";
    if (source == "Delete") return "Entf";
    return std::string(source);
  });
  EXPECT_EQ(KeyCombo::displayInWords({117, HotKey::kControl | HotKey::kOption}), "Strg+Alt+Entf");
}

TEST(KeyCombo, SpecialKeysKeepTheirOwnNames) {
  const auto specials = KeyCombo::specialKeyCodes();
  EXPECT_EQ(std::set<std::uint32_t>(specials.begin(), specials.end()).size(), 27U);
  // A layout that names every key must not override them.
  const KeyCombo::LayoutName everything = [](std::uint32_t) { return std::optional<std::string>("x"); };
  for (const std::uint32_t code : specials) {
    EXPECT_EQ(KeyCombo::keyName(code, everything), KeyCombo::keyName(code)) << code;
    EXPECT_FALSE(KeyCombo::isCharacterKey(code)) << code;
  }
  for (const auto& [code, name] : std::map<std::uint32_t, std::string>{
           {122, "F1"}, {111, "F12"}, {36, "↩"}, {76, "⌤"}, {117, "⌦"}, {53, "⎋"}, {126, "↑"}, {121, "⇟"}})
    EXPECT_EQ(KeyCombo::keyName(code), name) << code;
}

TEST(KeyCombo, KeyNameAsksTheLayoutThenTheFallbackTable) {
  const auto german = layout({{0x1B, "ß"}, {0x06, "y"}, {0x29, "ö"}, {0x0C, ""}});
  EXPECT_EQ(KeyCombo::keyName(0x1B, german), "SS");
  EXPECT_EQ(KeyCombo::keyName(0x06, german), "Y");
  EXPECT_EQ(KeyCombo::keyName(0x29, german), "Ö");
  EXPECT_EQ(KeyCombo::keyName(0x0C, german), "Q");  // empty answer: fallback
  EXPECT_EQ(KeyCombo::keyName(0x2A, german), "\\");
  EXPECT_EQ(KeyCombo::keyName(0x2A), "\\");
  EXPECT_EQ(KeyCombo::keyName(0x52), "0");  // keypad 0
  EXPECT_TRUE(KeyCombo::isCharacterKey(0x00));
  EXPECT_TRUE(KeyCombo::isCharacterKey(200));
}

TEST(KeyCombo, UnknownKeysAreNamedByTheirCode) {
  EXPECT_EQ(KeyCombo::keyName(200), "Key 200");
  EXPECT_EQ(KeyCombo::keyName(200, layout({{201, "x"}})), "Key 200");
  EXPECT_EQ(KeyCombo::keyName(0x24 + 1000), "Key 1036");
  EXPECT_EQ(KeyCombo::keyName(std::numeric_limits<std::uint32_t>::max()), "Key 4294967295");
  // Codes that are neither special nor character keys (modifiers, volume).
  for (const std::uint32_t code : {0x37U, 0x38U, 0x3AU, 0x3BU, 0x48U, 0x4AU})
    EXPECT_EQ(KeyCombo::keyName(code), "Key " + std::to_string(code));
}

TEST(KeyCombo, NamesGoThroughTheTranslator) {
  ScopedTranslator german([](std::string_view source, std::string_view) -> std::string {
    if (source == "Space") return "Leertaste";
    if (source == "Key %1") return "Taste %1";
    return std::string(source);
  });
  EXPECT_EQ(KeyCombo::display({kSpace, HotKey::kOption}), "⌥Leertaste");
  EXPECT_EQ(KeyCombo::keyName(200), "Taste 200");
}

TEST(KeyCombo, FallbackTableCoversTheAnsiCharacterKeys) {
  std::set<std::string> letters;
  for (std::uint32_t code = 0; code < 128; ++code) {
    const auto character = KeyCombo::fallbackCharacter(code);
    if (!character) continue;
    EXPECT_TRUE(KeyCombo::isCharacterKey(code)) << code;
    EXPECT_EQ(KeyCombo::keyName(code), *character);
    if (character->size() == 1 && (*character)[0] >= 'A' && (*character)[0] <= 'Z') {
      EXPECT_TRUE(letters.insert(std::string(*character)).second) << "letter twice: " << *character;
    }
  }
  EXPECT_EQ(letters.size(), 26U);
  EXPECT_EQ(KeyCombo::fallbackCharacter(0x00), "A");
  EXPECT_EQ(KeyCombo::fallbackCharacter(0x10), "Y");
  EXPECT_EQ(KeyCombo::fallbackCharacter(0x32), "`");
  EXPECT_FALSE(KeyCombo::fallbackCharacter(0x4C));  // keypad Enter is special
}

}  // namespace
}  // namespace orrery
