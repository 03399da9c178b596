#include <gtest/gtest.h>

#include <set>

#include "OrreryCore/settings/HotKey.h"
#include "OrreryCore/triggers/KeyCombo.h"
#include "OrreryCore/triggers/X11KeyTable.h"

namespace orrery {
namespace {

namespace X = X11KeyTable;

TEST(X11KeyTable, EveryKeyRoundTrips) {
  ASSERT_FALSE(X::entries().empty());
  std::set<std::uint32_t> keysyms;
  std::set<std::uint32_t> keyCodes;
  for (const X::Entry& entry : X::entries()) {
    EXPECT_TRUE(keysyms.insert(entry.keysym).second) << "keysym twice: " << std::hex << entry.keysym;
    EXPECT_TRUE(keyCodes.insert(entry.keyCode).second) << "key code twice: " << entry.keyCode;
    EXPECT_EQ(X::keyCodeForKeysym(entry.keysym), entry.keyCode) << std::hex << entry.keysym;
    EXPECT_EQ(X::keysymForKeyCode(entry.keyCode), entry.keysym) << entry.keyCode;
  }
  // An alias leads to a key whose main keysym is another one.
  for (const X::Entry& alias : X::aliases()) {
    EXPECT_TRUE(keysyms.insert(alias.keysym).second) << "keysym twice: " << std::hex << alias.keysym;
    EXPECT_TRUE(keyCodes.contains(alias.keyCode)) << std::hex << alias.keysym;
    EXPECT_EQ(X::keyCodeForKeysym(alias.keysym), alias.keyCode);
    const auto back = X::keysymForKeyCode(alias.keyCode);
    ASSERT_TRUE(back);
    EXPECT_EQ(X::keyCodeForKeysym(*back), alias.keyCode);
  }
}

TEST(X11KeyTable, KnownKeysymsLandOnTheirMacKeys) {
  EXPECT_EQ(X::keyCodeForKeysym(0x61), 0x00U);    // a
  EXPECT_EQ(X::keyCodeForKeysym(0x41), 0x00U);    // A
  EXPECT_EQ(X::keyCodeForKeysym(0x20), 49U);      // space
  EXPECT_EQ(X::keyCodeForKeysym(0xff1b), 53U);    // Escape
  EXPECT_EQ(X::keyCodeForKeysym(0xffbe), 122U);   // F1
  EXPECT_EQ(X::keyCodeForKeysym(0xfe20), 48U);    // ISO_Left_Tab is the Tab key
  EXPECT_EQ(X::keyCodeForKeysym(0xff95), 0x59U);  // KP_Home is keypad 7
  EXPECT_EQ(X::keysymForKeyCode(0x00), 0x61U);    // back to lower-case a
  EXPECT_EQ(X::keysymForKeyCode(0x59), 0xffb7U);  // KP_7
  EXPECT_FALSE(X::keyCodeForKeysym(0xffe1));      // Shift_L alone is no shortcut
  EXPECT_FALSE(X::keyCodeForKeysym(0x1008ff13));  // XF86AudioRaiseVolume
  EXPECT_FALSE(X::keysymForKeyCode(0x37));        // Command key
  EXPECT_FALSE(X::keysymForKeyCode(500));
}

TEST(X11KeyTable, EveryNamedMacKeyCanBeGrabbed) {
  // A shortcut recorded on a Mac must be reachable on Linux whenever its key
  // has a name there: every special key and every fallback character key.
  for (const std::uint32_t code : KeyCombo::specialKeyCodes()) EXPECT_TRUE(X::keysymForKeyCode(code)) << code;
  for (std::uint32_t code = 0; code < 128; ++code) {
    if (KeyCombo::fallbackCharacter(code)) {
      EXPECT_TRUE(X::keysymForKeyCode(code)) << code;
    }
  }
}

TEST(X11KeyTable, ModifierMasksTranslateBothWays) {
  EXPECT_EQ(X::carbonModifiers(X::Mask::mod4), HotKey::kCommand);
  EXPECT_EQ(X::carbonModifiers(X::Mask::shift), HotKey::kShift);
  EXPECT_EQ(X::carbonModifiers(X::Mask::mod1), HotKey::kOption);
  EXPECT_EQ(X::carbonModifiers(X::Mask::control), HotKey::kControl);
  EXPECT_EQ(X::carbonModifiers(X::Mask::lock | X::Mask::mod2 | X::Mask::mod3 | X::Mask::mod5), 0U);

  const std::uint32_t shortcutBits = X::Mask::shift | X::Mask::control | X::Mask::mod1 | X::Mask::mod4;
  for (std::uint32_t state = 0; state < 256; ++state) {
    const std::uint32_t carbon = X::carbonModifiers(state);
    EXPECT_EQ(X::x11Modifiers(carbon), state & shortcutBits) << state;
    // The recorder path (X11 state -> event flags -> Carbon) agrees.
    EXPECT_EQ(KeyCombo::carbonModifiers(X::eventFlags(state)), carbon) << state;
  }
  EXPECT_EQ(X::x11Modifiers(0xFFFFFFFF), shortcutBits);
  for (const std::uint32_t variant : X::lockVariants) EXPECT_EQ(variant & shortcutBits, 0U);
}

}  // namespace
}  // namespace orrery
