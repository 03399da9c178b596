#include "Orrery/platform/xdg/XdgDirectories.h"

#include <string_view>

namespace orrery::platform {

namespace {

bool isAbsolute(std::string_view path) { return !path.empty() && path.front() == '/'; }

std::string withoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

// `base` + `/` + `relative`, without doubling the slash of the root.
std::string under(const std::string& base, std::string_view relative) {
  if (base.empty()) return {};
  return (base == "/" ? "" : base) + "/" + std::string(relative);
}

// The absolute entries of a colon-separated list; the defaults when the
// list is unset or empty.
std::vector<std::string> folderList(const char* value, std::vector<std::string> defaults) {
  if (value == nullptr || value[0] == '\0') return defaults;
  std::vector<std::string> folders;
  std::string_view rest = value;
  while (!rest.empty()) {
    const std::size_t colon = rest.find(':');
    const std::string_view entry = rest.substr(0, colon);
    if (isAbsolute(entry)) folders.push_back(withoutTrailingSlashes(std::string(entry)));
    if (colon == std::string_view::npos) break;
    rest.remove_prefix(colon + 1);
  }
  return folders;
}

}  // namespace

XdgDirectories XdgDirectories::fromVariables(const std::function<const char*(const char*)>& lookup) {
  const auto absolute = [&](const char* name) -> std::string {
    const char* value = lookup(name);
    return value != nullptr && isAbsolute(value) ? withoutTrailingSlashes(value) : std::string();
  };
  XdgDirectories folders;
  folders.home = absolute("HOME");
  folders.dataHome = absolute("XDG_DATA_HOME");
  if (folders.dataHome.empty()) folders.dataHome = under(folders.home, ".local/share");
  folders.dataDirs = folderList(lookup("XDG_DATA_DIRS"), {"/usr/local/share", "/usr/share"});
  folders.configHome = absolute("XDG_CONFIG_HOME");
  if (folders.configHome.empty()) folders.configHome = under(folders.home, ".config");
  folders.configDirs = folderList(lookup("XDG_CONFIG_DIRS"), {"/etc/xdg"});
  return folders;
}

}  // namespace orrery::platform
