#include "Orrery/platform/xdg/XdgIconLocator.h"

#include <fcntl.h>

#include <optional>

#include <glib.h>

#include "Orrery/platform/posix/OpenFolder.h"
#include "Orrery/platform/xdg/DesktopEntryFile.h"
#include "Orrery/platform/xdg/GLibDesktopEntry.h"

namespace orrery::platform {

namespace {

// The same bound the scan puts on entries.
constexpr off_t kMaxEntryBytes = 4 * 1024 * 1024;

template <class Keys>
std::optional<std::string> firstValue(const Keys& entry, const std::vector<std::string>& keys) {
  if (!entry.startsWithDesktopEntry()) return std::nullopt;
  // g_key_file_get_locale_string() takes the first translation present,
  // even an empty one.
  for (const std::string& key : keys)
    if (std::optional<std::string> value = entry.string(key)) return value;
  return std::nullopt;
}

}  // namespace

XdgIconLocator::XdgIconLocator() {
  for (const gchar* const* language = g_get_language_names(); *language != nullptr; ++language)
    keys_.push_back(std::string("Icon[") + *language + "]");
  keys_.emplace_back("Icon");
}

std::string XdgIconLocator::icon(const AppInfo& app) const {
  std::string bytes;
  if (!readWholeFile({AT_FDCWD, app.url.c_str()}, kMaxEntryBytes, bytes)) return {};
  return iconOfEntry(bytes);
}

std::string XdgIconLocator::iconOfEntry(const std::string& bytes) const {
  DesktopEntryFile file(keys_);
  file.read(bytes);
  std::optional<std::string> value;
  if (!file.needsGLib()) value = firstValue(file, keys_);
  if (file.needsGLib()) value = firstValue(GLibDesktopEntry(bytes), keys_);
  if (!value || value->empty()) return {};

  std::string icon = std::move(*value);
  if (icon.front() != '/') {
    const std::size_t dot = icon.rfind('.');
    if (dot != std::string::npos) {
      const std::string_view extension = std::string_view(icon).substr(dot);
      if (extension == ".png" || extension == ".xpm" || extension == ".svg") icon.resize(dot);
    }
  }
  return icon;
}

}  // namespace orrery::platform
