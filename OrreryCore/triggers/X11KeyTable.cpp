#include "OrreryCore/triggers/X11KeyTable.h"

#include <array>

#include "OrreryCore/settings/HotKey.h"
#include "OrreryCore/triggers/EventFlags.h"

namespace orrery::X11KeyTable {

namespace {

// Keysyms of the Latin-1 range equal their character codes.
constexpr std::uint32_t latin(char c) { return static_cast<std::uint32_t>(static_cast<unsigned char>(c)); }

namespace Keysym {
constexpr std::uint32_t section = 0x00a7;
constexpr std::uint32_t isoLeftTab = 0xfe20;
constexpr std::uint32_t backSpace = 0xff08;
constexpr std::uint32_t tab = 0xff09;
constexpr std::uint32_t clear = 0xff0b;
constexpr std::uint32_t returnKey = 0xff0d;
constexpr std::uint32_t escape = 0xff1b;
constexpr std::uint32_t home = 0xff50;
constexpr std::uint32_t left = 0xff51;
constexpr std::uint32_t up = 0xff52;
constexpr std::uint32_t right = 0xff53;
constexpr std::uint32_t down = 0xff54;
constexpr std::uint32_t pageUp = 0xff55;
constexpr std::uint32_t pageDown = 0xff56;
constexpr std::uint32_t end = 0xff57;
constexpr std::uint32_t insert = 0xff63;
constexpr std::uint32_t kpEnter = 0xff8d;
constexpr std::uint32_t kpHome = 0xff95;
constexpr std::uint32_t kpLeft = 0xff96;
constexpr std::uint32_t kpUp = 0xff97;
constexpr std::uint32_t kpRight = 0xff98;
constexpr std::uint32_t kpDown = 0xff99;
constexpr std::uint32_t kpPageUp = 0xff9a;
constexpr std::uint32_t kpPageDown = 0xff9b;
constexpr std::uint32_t kpEnd = 0xff9c;
constexpr std::uint32_t kpBegin = 0xff9d;
constexpr std::uint32_t kpInsert = 0xff9e;
constexpr std::uint32_t kpDelete = 0xff9f;
constexpr std::uint32_t kpMultiply = 0xffaa;
constexpr std::uint32_t kpAdd = 0xffab;
constexpr std::uint32_t kpSeparator = 0xffac;
constexpr std::uint32_t kpSubtract = 0xffad;
constexpr std::uint32_t kpDecimal = 0xffae;
constexpr std::uint32_t kpDivide = 0xffaf;
constexpr std::uint32_t kp0 = 0xffb0;  // KP_1 … KP_9 follow
constexpr std::uint32_t kpEqual = 0xffbd;
constexpr std::uint32_t f1 = 0xffbe;  // F2 … F20 follow
constexpr std::uint32_t deleteKey = 0xffff;
constexpr std::uint32_t kp(int digit) { return kp0 + static_cast<std::uint32_t>(digit); }
constexpr std::uint32_t f(int number) { return f1 + static_cast<std::uint32_t>(number - 1); }
}  // namespace Keysym

// macOS virtual key codes of the keypad digits, which are not contiguous.
constexpr std::uint32_t kpCode[10] = {0x52, 0x53, 0x54, 0x55, 0x56, 0x57, 0x58, 0x59, 0x5B, 0x5C};

constexpr auto mainEntries = std::to_array<Entry>({
    // Letters.
    {latin('a'), 0x00},
    {latin('s'), 0x01},
    {latin('d'), 0x02},
    {latin('f'), 0x03},
    {latin('h'), 0x04},
    {latin('g'), 0x05},
    {latin('z'), 0x06},
    {latin('x'), 0x07},
    {latin('c'), 0x08},
    {latin('v'), 0x09},
    {latin('b'), 0x0B},
    {latin('q'), 0x0C},
    {latin('w'), 0x0D},
    {latin('e'), 0x0E},
    {latin('r'), 0x0F},
    {latin('y'), 0x10},
    {latin('t'), 0x11},
    {latin('o'), 0x1F},
    {latin('u'), 0x20},
    {latin('i'), 0x22},
    {latin('p'), 0x23},
    {latin('l'), 0x25},
    {latin('j'), 0x26},
    {latin('k'), 0x28},
    {latin('n'), 0x2D},
    {latin('m'), 0x2E},
    // Digits of the main block.
    {latin('1'), 0x12},
    {latin('2'), 0x13},
    {latin('3'), 0x14},
    {latin('4'), 0x15},
    {latin('5'), 0x17},
    {latin('6'), 0x16},
    {latin('7'), 0x1A},
    {latin('8'), 0x1C},
    {latin('9'), 0x19},
    {latin('0'), 0x1D},
    // Punctuation of the US layout, and the ISO keyboard's extra key.
    {latin('='), 0x18},
    {latin('-'), 0x1B},
    {latin(']'), 0x1E},
    {latin('['), 0x21},
    {latin('\''), 0x27},
    {latin(';'), 0x29},
    {latin('\\'), 0x2A},
    {latin(','), 0x2B},
    {latin('/'), 0x2C},
    {latin('.'), 0x2F},
    {latin('`'), 0x32},
    {Keysym::section, 0x0A},
    // Editing and navigation.
    {latin(' '), 0x31},
    {Keysym::returnKey, 0x24},
    {Keysym::tab, 0x30},
    {Keysym::backSpace, 0x33},
    {Keysym::escape, 0x35},
    {Keysym::deleteKey, 0x75},
    // Apple's Help key sits where PC keyboards have Insert, and macOS reports
    // a PC keyboard's Insert as Help.
    {Keysym::insert, 0x72},
    {Keysym::home, 0x73},
    {Keysym::end, 0x77},
    {Keysym::pageUp, 0x74},
    {Keysym::pageDown, 0x79},
    {Keysym::left, 0x7B},
    {Keysym::right, 0x7C},
    {Keysym::down, 0x7D},
    {Keysym::up, 0x7E},
    // Function keys.
    {Keysym::f(1), 0x7A},
    {Keysym::f(2), 0x78},
    {Keysym::f(3), 0x63},
    {Keysym::f(4), 0x76},
    {Keysym::f(5), 0x60},
    {Keysym::f(6), 0x61},
    {Keysym::f(7), 0x62},
    {Keysym::f(8), 0x64},
    {Keysym::f(9), 0x65},
    {Keysym::f(10), 0x6D},
    {Keysym::f(11), 0x67},
    {Keysym::f(12), 0x6F},
    {Keysym::f(13), 0x69},
    {Keysym::f(14), 0x6B},
    {Keysym::f(15), 0x71},
    {Keysym::f(16), 0x6A},
    {Keysym::f(17), 0x40},
    {Keysym::f(18), 0x4F},
    {Keysym::f(19), 0x50},
    {Keysym::f(20), 0x5A},
    // Keypad.
    {Keysym::kp(0), kpCode[0]},
    {Keysym::kp(1), kpCode[1]},
    {Keysym::kp(2), kpCode[2]},
    {Keysym::kp(3), kpCode[3]},
    {Keysym::kp(4), kpCode[4]},
    {Keysym::kp(5), kpCode[5]},
    {Keysym::kp(6), kpCode[6]},
    {Keysym::kp(7), kpCode[7]},
    {Keysym::kp(8), kpCode[8]},
    {Keysym::kp(9), kpCode[9]},
    {Keysym::kpDecimal, 0x41},
    {Keysym::kpMultiply, 0x43},
    {Keysym::kpAdd, 0x45},
    {Keysym::clear, 0x47},
    {Keysym::kpDivide, 0x4B},
    {Keysym::kpEnter, 0x4C},
    {Keysym::kpSubtract, 0x4E},
    {Keysym::kpEqual, 0x51},
});

constexpr std::array<Entry, 39> aliasEntries = [] {
  std::array<Entry, 39> out{};
  std::size_t n = 0;
  // Upper-case letters: the same keys with Shift or Caps Lock.
  for (const Entry& entry : mainEntries)
    if (entry.keysym >= latin('a') && entry.keysym <= latin('z'))
      out[n++] = Entry{entry.keysym - (latin('a') - latin('A')), entry.keyCode};
  out[n++] = {Keysym::isoLeftTab, 0x30};  // Shift+Tab
  // The keypad with Num Lock off.
  out[n++] = {Keysym::kpInsert, kpCode[0]};
  out[n++] = {Keysym::kpEnd, kpCode[1]};
  out[n++] = {Keysym::kpDown, kpCode[2]};
  out[n++] = {Keysym::kpPageDown, kpCode[3]};
  out[n++] = {Keysym::kpLeft, kpCode[4]};
  out[n++] = {Keysym::kpBegin, kpCode[5]};
  out[n++] = {Keysym::kpRight, kpCode[6]};
  out[n++] = {Keysym::kpHome, kpCode[7]};
  out[n++] = {Keysym::kpUp, kpCode[8]};
  out[n++] = {Keysym::kpPageUp, kpCode[9]};
  out[n++] = {Keysym::kpDelete, 0x41};
  out[n++] = {Keysym::kpSeparator, 0x41};  // the decimal key of layouts with a decimal comma
  return out;
}();

}  // namespace

std::span<const Entry> entries() { return mainEntries; }
std::span<const Entry> aliases() { return aliasEntries; }

std::optional<std::uint32_t> keyCodeForKeysym(std::uint32_t keysym) {
  for (const Entry& entry : mainEntries)
    if (entry.keysym == keysym) return entry.keyCode;
  for (const Entry& entry : aliasEntries)
    if (entry.keysym == keysym) return entry.keyCode;
  return std::nullopt;
}

std::optional<std::uint32_t> keysymForKeyCode(std::uint32_t keyCode) {
  for (const Entry& entry : mainEntries)
    if (entry.keyCode == keyCode) return entry.keysym;
  return std::nullopt;
}

std::uint32_t carbonModifiers(std::uint32_t x11State) {
  std::uint32_t mask = 0;
  if (x11State & Mask::mod4) mask |= HotKey::kCommand;
  if (x11State & Mask::shift) mask |= HotKey::kShift;
  if (x11State & Mask::mod1) mask |= HotKey::kOption;
  if (x11State & Mask::control) mask |= HotKey::kControl;
  return mask;
}

std::uint32_t x11Modifiers(std::uint32_t carbonMask) {
  std::uint32_t state = 0;
  if (carbonMask & HotKey::kCommand) state |= Mask::mod4;
  if (carbonMask & HotKey::kShift) state |= Mask::shift;
  if (carbonMask & HotKey::kOption) state |= Mask::mod1;
  if (carbonMask & HotKey::kControl) state |= Mask::control;
  return state;
}

std::uint64_t eventFlags(std::uint32_t x11State) {
  std::uint64_t flags = 0;
  if (x11State & Mask::mod4) flags |= EventFlags::command;
  if (x11State & Mask::shift) flags |= EventFlags::shift;
  if (x11State & Mask::mod1) flags |= EventFlags::option;
  if (x11State & Mask::control) flags |= EventFlags::control;
  return flags;
}

}  // namespace orrery::X11KeyTable
