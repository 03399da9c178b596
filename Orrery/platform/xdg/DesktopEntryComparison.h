// DesktopEntryComparison: holds DesktopEntryFile to GLib's key-file parser
// on one entry, question by question, the way the scanner asks them.
//
// The reader may leave any file to GLib; what it settles itself must get
// GLib's answers for every key the scanner reads (and a few it does not, to
// catch a value kept under the wrong key). The program of the Exec line is
// held to g_shell_parse_argv() too, whichever parser gave the line, since
// the scanner splits it by hand either way. Used by the reader's tests and
// by its fuzz target.
//
// Thread rules: the answers depend on the process's message languages
// (g_get_language_names()); do not change them while a comparison runs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orrery::platform {

struct DesktopEntryComparison {
  // Whether the reader answered itself rather than leaving the file to GLib.
  bool settled = false;
  // One readable line per answer that differs from GLib's.
  std::vector<std::string> differences;
};

// The keys compared: the scanner's, Encoding, an unused one, and Name in
// each of the process's message languages.
std::vector<std::string> comparedDesktopEntryKeys();

DesktopEntryComparison compareWithGLib(std::string_view text);

}  // namespace orrery::platform
