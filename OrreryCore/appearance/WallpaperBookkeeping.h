// WallpaperBookkeeping: which blurred desktop picture belongs to which
// display, which renders are running, and which failed.
//
// The background asks refresh() whenever displays or pictures change and
// starts one render for each key it returns; refresh() marks those keys as
// in flight at once, so a second refresh before the render has begun never
// starts it twice. Each render ends in finish(). A key that failed is never
// tried again (the same picture at the same size would fail the same way);
// a new picture or a new screen size is a new key and is tried. Generic
// over the image type, so the core holds no image library.
//
// Thread rules: a plain value owned by the main thread; renders run
// elsewhere and report back through the owner.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "OrreryCore/appearance/WallpaperKey.h"

namespace orrery {

template <typename Image>
struct WallpaperBookkeeping {
  std::map<std::uint32_t, WallpaperKey> current;  // display ID -> the key it needs
  std::unordered_map<WallpaperKey, Image> images;
  std::unordered_set<WallpaperKey> inFlight;
  std::unordered_set<WallpaperKey> failed;

  struct Finished {
    bool published = false;   // the image is what its display shows now: redraw
    bool logFailure = false;  // the first failure of this key: log it
    friend bool operator==(const Finished&, const Finished&) = default;
  };

  // The image for the display's current key, or null.
  const Image* image(std::uint32_t displayID) const {
    const auto key = current.find(displayID);
    if (key == current.end()) return nullptr;
    const auto found = images.find(key->second);
    return found == images.end() ? nullptr : &found->second;
  }

  // Takes the keys the displays need now; drops finished images no display
  // needs any more; returns the keys to render (by display ID), now in
  // flight.
  std::vector<WallpaperKey> refresh(std::map<std::uint32_t, WallpaperKey> keys) {
    current = std::move(keys);
    std::unordered_set<WallpaperKey> needed;
    for (const auto& entry : current) needed.insert(entry.second);
    std::erase_if(images, [&](const auto& entry) { return !needed.contains(entry.first); });

    std::vector<WallpaperKey> toStart;
    for (const auto& [displayID, key] : current) {
      if (images.contains(key) || inFlight.contains(key) || failed.contains(key)) continue;
      inFlight.insert(key);
      toStart.push_back(key);
    }
    return toStart;
  }

  // Records the end of one render: an image, or nothing when it failed.
  Finished finish(const WallpaperKey& key, std::optional<Image> image) {
    inFlight.erase(key);
    if (!image) return Finished{false, failed.insert(key).second};
    failed.erase(key);
    images.insert_or_assign(key, std::move(*image));
    const auto shown = current.find(key.displayID);
    return Finished{shown != current.end() && shown->second == key, false};
  }

  friend bool operator==(const WallpaperBookkeeping&, const WallpaperBookkeeping&) = default;
};

}  // namespace orrery
