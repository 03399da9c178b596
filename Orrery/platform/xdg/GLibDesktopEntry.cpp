#include "Orrery/platform/xdg/GLibDesktopEntry.h"

#include <glib.h>

namespace orrery::platform {

namespace {

constexpr const char* kGroup = "Desktop Entry";

}  // namespace

void GLibDesktopEntry::Unref::operator()(GKeyFile* file) const { g_key_file_unref(file); }

GLibDesktopEntry::GLibDesktopEntry(std::string_view bytes) : file_(g_key_file_new()) {
  // GLib takes no empty data: it warns instead of failing quietly.
  loaded_ = !bytes.empty() &&
            g_key_file_load_from_data(file_.get(), bytes.data(), bytes.size(), G_KEY_FILE_NONE, nullptr);
}

bool GLibDesktopEntry::startsWithDesktopEntry() const {
  if (!loaded_) return false;
  gchar* start = g_key_file_get_start_group(file_.get());
  const bool desktopEntry = start != nullptr && std::string_view(start) == kGroup;
  g_free(start);
  return desktopEntry;
}

bool GLibDesktopEntry::has(std::string_view key) const {
  const std::string name(key);
  return loaded_ && g_key_file_has_key(file_.get(), kGroup, name.c_str(), nullptr);
}

std::optional<std::string> GLibDesktopEntry::string(std::string_view key) const {
  if (!has(key)) return std::nullopt;
  const std::string name(key);
  gchar* text = g_key_file_get_string(file_.get(), kGroup, name.c_str(), nullptr);
  if (text == nullptr) return std::nullopt;
  std::string result(text);
  g_free(text);
  return result;
}

bool GLibDesktopEntry::boolean(std::string_view key) const {
  const std::string name(key);
  return has(key) && g_key_file_get_boolean(file_.get(), kGroup, name.c_str(), nullptr);
}

std::optional<std::vector<std::string>> GLibDesktopEntry::list(std::string_view key) const {
  if (!has(key)) return std::nullopt;
  const std::string name(key);
  gsize length = 0;
  gchar** items = g_key_file_get_string_list(file_.get(), kGroup, name.c_str(), &length, nullptr);
  if (items == nullptr) return std::nullopt;
  std::vector<std::string> result(items, items + length);
  g_strfreev(items);
  return result;
}

}  // namespace orrery::platform
