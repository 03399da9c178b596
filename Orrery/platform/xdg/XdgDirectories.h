// XdgDirectories: the folders of the XDG Base Directory rules, worked out
// once from the environment. Everything on a free desktop that asks where
// data, configuration or applications live asks this.
//
// Relative and empty entries are ignored, as the rules require; a missing
// or relative home leaves the folders that default into it empty rather
// than pointing at the working folder. Paths carry no trailing slash ("/"
// stays "/").
//
// Thread rules: a plain value.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace orrery::platform {

struct XdgDirectories {
  std::string home;                     // HOME, if absolute
  std::string dataHome;                 // XDG_DATA_HOME, else ~/.local/share
  std::vector<std::string> dataDirs;    // XDG_DATA_DIRS, else /usr/local/share, /usr/share
  std::string configHome;               // XDG_CONFIG_HOME, else ~/.config
  std::vector<std::string> configDirs;  // XDG_CONFIG_DIRS, else /etc/xdg

  // From variables looked up by name (nullptr for unset).
  static XdgDirectories fromVariables(const std::function<const char*(const char*)>& lookup);

  friend bool operator==(const XdgDirectories&, const XdgDirectories&) = default;
};

}  // namespace orrery::platform
