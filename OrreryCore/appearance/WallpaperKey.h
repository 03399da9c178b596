// WallpaperKey: names one blurred rendering of a desktop picture.
//
// The same picture on a display of another size, or on another display, is
// another render, so every field makes the key. The picture is named by
// its file path; the adapter passes whatever the desktop reports (a GNOME
// "picture-uri" made a path, the first picture of a slideshow, …). A
// picture replaced in place keeps its path, so the key also carries the
// file's version (its modification time and size).
//
// Thread rules: a plain value; renders on background threads carry a copy.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace orrery {

struct WallpaperKey {
  std::uint32_t displayID = 0;
  std::string url;  // the desktop picture's file path
  std::int64_t pixelWidth = 0;
  std::int64_t pixelHeight = 0;
  std::string version = {};  // empty where the name alone tells pictures apart

  friend bool operator==(const WallpaperKey&, const WallpaperKey&) = default;
};

}  // namespace orrery

template <>
struct std::hash<orrery::WallpaperKey> {
  std::size_t operator()(const orrery::WallpaperKey& key) const noexcept {
    std::size_t h = std::hash<std::uint32_t>()(key.displayID);
    h = h * 31 + std::hash<std::string>()(key.url);
    h = h * 31 + std::hash<std::int64_t>()(key.pixelWidth);
    h = h * 31 + std::hash<std::int64_t>()(key.pixelHeight);
    h = h * 31 + std::hash<std::string>()(key.version);
    return h;
  }
};
