// AppInfo: one installed application as the catalog knows it.
//
// `id` is what the arrangement stores: the bundle identifier or desktop-file
// ID, else the bundle's standardized path. `url` is the path where the app
// was found (a symbolic link keeps its own path, not its target's), so
// launching and trashing act on what the user sees. Two records of the same
// app differ when its modification date changed; that is how icon caches
// notice an update.
//
// Thread rules: a plain value; scans build them on a background thread and
// hand them to the main thread by copy.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "base/Date.h"

namespace orrery {

struct AppInfo {
  std::string id;
  std::string name;
  std::string url;  // absolute file path
  std::optional<Date> modified;

  friend bool operator==(const AppInfo&, const AppInfo&) = default;
};

}  // namespace orrery

template <>
struct std::hash<orrery::AppInfo> {
  std::size_t operator()(const orrery::AppInfo& app) const noexcept {
    std::size_t h = std::hash<std::string>()(app.id);
    h = h * 31 + std::hash<std::string>()(app.name);
    h = h * 31 + std::hash<std::string>()(app.url);
    // An absent date hashes apart from every present one, the epoch included.
    h = h * 31 +
        (app.modified
             ? std::hash<long long>()(static_cast<long long>(app.modified->time_since_epoch().count()))
             : 0x9e3779b97f4a7c15ULL);
    return h;
  }
};
