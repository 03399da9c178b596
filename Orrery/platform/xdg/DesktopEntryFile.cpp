#include "Orrery/platform/xdg/DesktopEntryFile.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include <glib.h>

namespace orrery::platform {

namespace {

constexpr std::string_view kDesktopEntry = "Desktop Entry";

// Character classes, looked up once per byte: the reader spends its time
// on the keys of a few thousand lines per scan.
enum CharacterClass : unsigned char {
  kBlank = 1,    // space and tab
  kControl = 2,  // a control character other than tab (GLib treats some of them
                 // as white space in some places and as text in others)
  kPlain = 4,    // printable ASCII, space included
  // What a key may be made of here: printable ASCII without blanks. GLib
  // takes anything but "=", "[" and "]", inner spaces included.
  kKey = 8,
  // GLib takes letters and digits of any script in a locale; ASCII ones here.
  kLocale = 16,
};

constexpr std::array<unsigned char, 256> kClasses = [] {
  std::array<unsigned char, 256> classes{};
  for (int c = 0; c < 256; ++c) {
    unsigned char bits = 0;
    if (c == ' ' || c == '\t') bits |= kBlank;
    if ((c < 0x20 && c != '\t') || c == 0x7f) bits |= kControl;
    if (c >= 0x20 && c < 0x7f) bits |= kPlain;
    if (c > 0x20 && c < 0x7f && c != '=' && c != '[' && c != ']') bits |= kKey;
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_' ||
        c == '.' || c == '@')
      bits |= kLocale;
    classes[static_cast<std::size_t>(c)] = bits;
  }
  return classes;
}();

bool is(char c, CharacterClass wanted) { return (kClasses[static_cast<unsigned char>(c)] & wanted) != 0; }
bool isBlank(char c) { return is(c, kBlank); }
bool isControl(char c) { return is(c, kControl); }

std::string_view withoutLeadingBlanks(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && isBlank(text[at])) ++at;
  return text.substr(at);
}

bool equalIgnoringAsciiCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return g_ascii_tolower(x) == g_ascii_tolower(y);
         });
}

// The group name of a group line (first character "["), or nothing when the
// line is not one this reader vouches for.
std::optional<std::string_view> groupName(std::string_view line) {
  const std::size_t close = line.find(']');
  if (close == std::string_view::npos) return std::nullopt;
  const std::string_view name = line.substr(1, close - 1);
  if (name.empty() || name.front() == ' ' || name.back() == ' ') return std::nullopt;
  if (!std::all_of(name.begin(), name.end(), [](char c) { return is(c, kPlain) && c != '['; }))
    return std::nullopt;
  const std::string_view after = line.substr(close + 1);
  if (!std::all_of(after.begin(), after.end(), isBlank)) return std::nullopt;
  return name;
}

// Key comparison without a library call: keys are short, and most that
// differ already differ in length or first letter.
bool sameKey(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (a[i] != b[i]) return false;
  return true;
}

bool isUtf8(std::string_view text) {
  return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr);
}

// The character a backslash escape stands for in a value, or 0.
char escaped(char c) {
  switch (c) {
    case 's':
      return ' ';
    case 'n':
      return '\n';
    case 't':
      return '\t';
    case 'r':
      return '\r';
    case '\\':
      return '\\';
    default:
      return 0;
  }
}

}  // namespace

DesktopEntryFile::DesktopEntryFile(std::vector<std::string> keys)
    : keys_(std::move(keys)), values_(keys_.size()) {
  for (const std::string& key : keys_)
    keyLengths_ |= key.size() < 64 ? std::uint64_t{1} << key.size() : ~std::uint64_t{0};
}

void DesktopEntryFile::read(std::string_view bytes) {
  std::fill(values_.begin(), values_.end(), std::nullopt);
  startsWithDesktopEntry_ = false;
  // GLib ends a line's text at a NUL and drops a carriage return before a
  // line feed; such files are rare enough to leave to it.
  // (find rather than memchr: an empty view may have no data pointer at all.)
  needsGLib_ = bytes.find('\0') != std::string_view::npos || bytes.find('\r') != std::string_view::npos;
  if (needsGLib_) return;

  // Comments may come first; then the file must open with the group.
  std::size_t start = 0;
  while (start < bytes.size()) {
    std::size_t end = bytes.find('\n', start);
    if (end == std::string_view::npos) end = bytes.size();
    const std::string_view raw = bytes.substr(start, end - start);
    const std::string_view line = withoutLeadingBlanks(raw);
    start = end + 1;
    if (line.empty() || line.front() == '#') continue;
    if (line.front() == '[' && groupName(line) == kDesktopEntry) {
      startsWithDesktopEntry_ = true;
      needsGLib_ = !readGroups(start < bytes.size() ? bytes.substr(start) : std::string_view());
      return;
    }
    // Another group, a key before any group or a line GLib rejects: not an
    // application either way, unless the line holds something GLib might
    // read differently from this reader.
    needsGLib_ =
        !std::all_of(raw.begin(), raw.end(), [](char c) { return is(c, CharacterClass(kPlain | kBlank)); });
    return;
  }
}

bool DesktopEntryFile::readGroups(std::string_view rest) {
  bool inDesktopEntry = true;
  const char* at = rest.data();
  const char* const end = at + rest.size();
  const auto lineEnd = [end](const char* from) {
    const void* newline = std::memchr(from, '\n', static_cast<std::size_t>(end - from));
    return newline == nullptr ? end : static_cast<const char*>(newline);
  };
  // One pass over each line: the key is checked as it is read, and only
  // the value is searched for the line's end.
  while (at < end) {
    while (at < end && isBlank(*at)) ++at;
    if (at == end) break;
    if (*at == '\n') {
      ++at;
      continue;
    }
    if (*at == '#') {
      at = lineEnd(at);
      continue;
    }
    if (*at == '[') {
      const char* const stop = lineEnd(at);
      const auto name = groupName(std::string_view(at, static_cast<std::size_t>(stop - at)));
      if (!name) return false;
      // A group named twice is one group, so a second [Desktop Entry]
      // section adds to the first.
      inDesktopEntry = *name == kDesktopEntry;
      at = stop;
      continue;
    }

    // A key line this reader vouches for, split the way GLib splits it: the
    // key without the blanks before "=", the value without those after it.
    const char* const keyStart = at;
    while (at < end && is(*at, kKey)) ++at;
    if (at == keyStart) return false;
    if (at < end && *at == '[') {
      const char* const localeStart = ++at;
      while (at < end && is(*at, kLocale)) ++at;
      if (at == localeStart || at == end || *at != ']') return false;
      ++at;
    }
    const std::string_view key(keyStart, static_cast<std::size_t>(at - keyStart));
    while (at < end && isBlank(*at)) ++at;
    if (at == end || *at != '=') return false;
    ++at;
    while (at < end && isBlank(*at)) ++at;
    // GLib also takes vertical tabs and form feeds off the front of a value.
    if (at < end && *at != '\n' && isControl(*at)) return false;
    const char* const stop = lineEnd(at);
    if (inDesktopEntry) {
      const std::string_view value(at, static_cast<std::size_t>(stop - at));
      // GLib refuses a file whose first group declares another encoding.
      if (sameKey(key, "Encoding") && !equalIgnoringAsciiCase(value, "UTF-8")) return false;
      keep(key, value);
    }
    at = stop;
  }
  return true;
}

void DesktopEntryFile::keep(std::string_view key, std::string_view value) {
  // Most keys of a real entry are not asked for; their length says so.
  if (key.size() < 64 && (keyLengths_ & (std::uint64_t{1} << key.size())) == 0) return;
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    // A key given again replaces the earlier value, as in GLib.
    if (sameKey(keys_[i], key)) {
      values_[i] = value;
      return;
    }
  }
}

const std::optional<std::string_view>* DesktopEntryFile::value(std::string_view key) const {
  for (std::size_t i = 0; i < keys_.size(); ++i)
    if (sameKey(keys_[i], key)) return &values_[i];
  needsGLib_ = true;
  return nullptr;
}

bool DesktopEntryFile::has(std::string_view key) const {
  const auto* found = value(key);
  return found != nullptr && found->has_value();
}

std::optional<std::string> DesktopEntryFile::string(std::string_view key) const {
  const auto* found = value(key);
  if (found == nullptr || !*found || !isUtf8(**found)) return std::nullopt;
  const std::string_view raw = **found;
  if (raw.find('\\') == std::string_view::npos) return std::string(raw);
  std::string text;
  text.reserve(raw.size());
  for (std::size_t at = 0; at < raw.size(); ++at) {
    if (raw[at] != '\\') {
      text += raw[at];
      continue;
    }
    // A backslash at the end is dropped; an escape GLib does not know keeps
    // both characters. GLib complains about both but still answers.
    if (++at == raw.size()) break;
    const char replacement = escaped(raw[at]);
    if (replacement == 0) text += '\\';
    text += replacement == 0 ? raw[at] : replacement;
  }
  return text;
}

bool DesktopEntryFile::boolean(std::string_view key) const {
  const auto* found = value(key);
  if (found == nullptr || !*found) return false;
  const std::string_view raw = **found;
  if (raw == "true" || raw == "1") return true;
  if (raw != "false" && raw != "0") needsGLib_ = true;
  return false;
}

std::optional<std::vector<std::string>> DesktopEntryFile::list(std::string_view key) const {
  const auto* found = value(key);
  if (found == nullptr || !*found || !isUtf8(**found)) return std::nullopt;
  const std::string_view raw = **found;
  std::vector<std::string> items;
  std::string item;
  bool pending = false;  // whether `item` has text not yet ended by ";"
  for (std::size_t at = 0; at < raw.size(); ++at) {
    const char c = raw[at];
    if (c == ';') {
      items.push_back(std::move(item));
      item.clear();
      pending = false;
      continue;
    }
    pending = true;
    if (c != '\\') {
      item += c;
      continue;
    }
    // Unlike a single string, a list with a bad escape is no list at all.
    if (++at == raw.size()) return std::nullopt;
    const char replacement = raw[at] == ';' ? ';' : escaped(raw[at]);
    if (replacement == 0) return std::nullopt;
    item += replacement;
  }
  // A trailing ";" ends the list rather than starting an empty item.
  if (pending) items.push_back(std::move(item));
  return items;
}

std::optional<std::string> commandProgram(const std::string& command) {
  // Without quotes, escapes, comments or line breaks the shell's rules come
  // down to splitting at blanks.
  const bool plain = std::none_of(command.begin(), command.end(), [](char c) {
    return c == '\'' || c == '"' || c == '\\' || c == '#' || isControl(c);
  });
  if (plain) {
    const std::string_view words = withoutLeadingBlanks(command);
    if (words.empty()) return std::nullopt;
    return std::string(words.substr(0, std::min(words.find(' '), words.find('\t'))));
  }
  gint argc = 0;
  gchar** argv = nullptr;
  if (!g_shell_parse_argv(command.c_str(), &argc, &argv, nullptr)) return std::nullopt;
  std::optional<std::string> program;
  if (argc >= 1) program = argv[0];
  g_strfreev(argv);
  return program;
}

}  // namespace orrery::platform
