#include "Orrery/platform/xdg/DesktopEntryComparison.h"

#include <glib.h>

#include <optional>

#include "Orrery/platform/posix/QuotedBytes.h"
#include "Orrery/platform/xdg/DesktopEntryFile.h"
#include "Orrery/platform/xdg/GLibDesktopEntry.h"

namespace orrery::platform {

namespace {

std::string shown(bool value) { return value ? "true" : "false"; }

std::string shown(const std::optional<std::string>& value) {
  return value ? quotedBytes(*value) : std::string("nothing");
}

std::string shown(const std::optional<std::vector<std::string>>& value) {
  if (!value) return "nothing";
  std::string text = "[";
  for (const std::string& item : *value) text += (text.size() > 1 ? ", " : "") + quotedBytes(item);
  return text + "]";
}

template <class Value>
void compare(const std::string& question, const Value& here, const Value& glib,
             std::vector<std::string>& differences) {
  if (here != glib)
    differences.push_back(question + ": " + shown(here) + " here, " + shown(glib) + " from GLib");
}

// The program g_shell_parse_argv() finds first in `command`.
std::optional<std::string> shellProgram(const std::string& command) {
  gint argc = 0;
  gchar** argv = nullptr;
  std::optional<std::string> program;
  if (g_shell_parse_argv(command.c_str(), &argc, &argv, nullptr) && argc >= 1) program = argv[0];
  g_strfreev(argv);
  return program;
}

}  // namespace

std::vector<std::string> comparedDesktopEntryKeys() {
  std::vector<std::string> keys{"Type",      "Name",    "Hidden", "NoDisplay", "OnlyShowIn",
                                "NotShowIn", "TryExec", "Exec",   "Encoding",  "X-Other"};
  for (const gchar* const* language = g_get_language_names(); *language != nullptr; ++language)
    keys.push_back(std::string("Name[") + *language + "]");
  return keys;
}

DesktopEntryComparison compareWithGLib(std::string_view text) {
  DesktopEntryComparison result;
  const std::vector<std::string> keys = comparedDesktopEntryKeys();
  DesktopEntryFile file(keys);
  file.read(text);
  result.settled = !file.needsGLib();
  const GLibDesktopEntry glib(text);

  if (result.settled) {
    compare("starts with [Desktop Entry]", file.startsWithDesktopEntry(), glib.startsWithDesktopEntry(),
            result.differences);
    // A file that does not start with the group is never asked anything more.
    if (!file.startsWithDesktopEntry()) return result;
    if (!glib.loaded()) result.differences.push_back("read here, rejected by GLib");
    for (const std::string& key : keys) {
      compare("has " + key, file.has(key), glib.has(key), result.differences);
      compare("string " + key, file.string(key), glib.string(key), result.differences);
      compare("list " + key, file.list(key), glib.list(key), result.differences);
      // A boolean the reader cannot spell is left to GLib; read afresh so
      // one such key does not hide the others.
      DesktopEntryFile fresh(keys);
      fresh.read(text);
      const bool value = fresh.boolean(key);
      if (!fresh.needsGLib()) compare("boolean " + key, value, glib.boolean(key), result.differences);
    }
  }

  if (glib.startsWithDesktopEntry()) {
    if (const std::optional<std::string> exec = glib.string("Exec"))
      compare("program of Exec " + quotedBytes(*exec), commandProgram(*exec), shellProgram(*exec),
              result.differences);
  }
  return result;
}

}  // namespace orrery::platform
