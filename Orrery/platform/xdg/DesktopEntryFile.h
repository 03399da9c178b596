// DesktopEntryFile: the [Desktop Entry] group of one desktop entry, read
// without GLib's key-file parser but answering as that parser does.
//
// A scan reads every entry on the machine, and GLib's parser spends most of
// that time storing every line of every group in hash tables before a
// single key is asked for. This reader walks the bytes once, checks each
// line by the parser's rules and keeps only the raw values of the keys it
// was built for, as views into the caller's bytes (which must outlive the
// answers).
//
// It reads the shape real entries have. Whatever lies outside that shape
// it does not guess at but reports through needsGLib(), and the caller asks
// GLib instead: a line GLib rejects, a control character other than tab, a
// carriage return, a key or group name outside printable ASCII, a key with
// inner spaces, an Encoding other than UTF-8, an escape GLib complains
// about, a boolean spelled other than true/false/1/0, a list with escapes.
// A file whose first line that is not a comment is anything but the
// [Desktop Entry] group line is settled at once: GLib either rejects it or
// starts it with another group, and neither is an application.
//
// Thread rules: one object per thread; read() replaces what it holds.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery::platform {

class DesktopEntryFile {
 public:
  // `keys` are the keys whose values are kept, translations spelled out
  // ("Name[de_CH]"). A translation must be into one of the languages GLib
  // keeps (g_get_language_names()): GLib drops the others while parsing.
  explicit DesktopEntryFile(std::vector<std::string> keys);

  // Reads `bytes`, which must stay alive and unchanged while this object
  // answers questions about them.
  void read(std::string_view bytes);

  // Whether GLib's parser must be asked instead: set by read(), and by a
  // question below whose answer this reader cannot give the way GLib would.
  bool needsGLib() const { return needsGLib_; }

  // Whether the first group is "Desktop Entry" (false also for a file
  // GLib's parser rejects before any other group).
  bool startsWithDesktopEntry() const { return startsWithDesktopEntry_; }

  // The answers of g_key_file_has_key, g_key_file_get_string (nothing when
  // the key is missing or its value is not UTF-8), g_key_file_get_boolean
  // (false when missing or not a boolean) and g_key_file_get_string_list
  // (nothing when missing or not UTF-8) for the [Desktop Entry] group. Only
  // the keys given at construction can be asked for.
  bool has(std::string_view key) const;
  std::optional<std::string> string(std::string_view key) const;
  bool boolean(std::string_view key) const;
  std::optional<std::vector<std::string>> list(std::string_view key) const;

 private:
  // Reads the lines after the first group line; false when one of them
  // is outside what this reader settles itself.
  bool readGroups(std::string_view rest);
  const std::optional<std::string_view>* value(std::string_view key) const;
  void keep(std::string_view key, std::string_view value);

  std::vector<std::string> keys_;
  std::vector<std::optional<std::string_view>> values_;  // parallel to keys_
  std::uint64_t keyLengths_ = 0;                         // bit n: a key of n bytes is kept
  bool startsWithDesktopEntry_ = false;
  mutable bool needsGLib_ = false;
};

// The program an Exec line runs: the first word as g_shell_parse_argv()
// splits and unquotes the line, or nothing when it cannot (unbalanced
// quotes, nothing but blanks or a comment).
std::optional<std::string> commandProgram(const std::string& command);

}  // namespace orrery::platform
