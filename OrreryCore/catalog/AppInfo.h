// AppInfo: one installed application as the catalog knows it.
//
// `id` is what the arrangement stores: the bundle identifier or desktop-file
// ID, else the bundle's standardized path. `url` is the path where the app
// was found (a symbolic link keeps its own path, not its target's), so
// launching and trashing act on what the user sees. Two records of the same
// app differ when its modification date changed; that is how icon caches
// notice an update.
//
// JSON: {"id": "…", "modified": seconds since 2001-01-01, "name": "…",
// "url": "file:///…"}, `modified` left out when absent. The url travels as
// a percent-encoded file URL rather than a bare path: that is how a URL is
// written wherever URLs are coded, and it keeps the JSON pure ASCII, so a
// file name that is not valid UTF-8 (Linux allows any bytes) still encodes
// and comes back byte for byte.
//
// Thread rules: a plain value; scans build them on a background thread and
// hand them to the main thread by copy.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

#include <nlohmann/json_fwd.hpp>

#include "OrreryCore/base/Date.h"
#include "OrreryCore/base/DecodingError.h"
#include "OrreryCore/base/Expected.h"

namespace orrery {

// Hashes std::string and std::string_view alike, so sets of app IDs can be
// searched with views of IDs held elsewhere without copying them.
struct StringHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>()(text); }
};

using AppIDSet = std::unordered_set<std::string, StringHash, std::equal_to<>>;

struct AppInfo {
  std::string id;
  std::string name;
  std::string url;  // absolute file path
  std::optional<Date> modified;

  nlohmann::json toJson() const;
  // Strict: "id", "name" and "url" must be strings, "url" an absolute file
  // URL; "modified" a number when present (null counts as absent).
  static Expected<AppInfo, DecodingError> fromJson(const nlohmann::json& json);

  friend bool operator==(const AppInfo&, const AppInfo&) = default;
};

// "file:///Applications/Visual%20Studio.app" for "/Applications/Visual
// Studio.app": every byte outside the unreserved and path characters is
// percent-encoded. `path` must be absolute.
std::string fileURL(std::string_view path);

// The path of a "file:" URL ("file:///p" or "file://localhost/p"), decoded,
// without the trailing slash that URLs of folders carry. Nothing for other
// schemes, hosts, relative or malformed URLs, or an encoded NUL.
std::optional<std::string> pathFromFileURL(std::string_view url);

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
