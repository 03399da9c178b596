// KeyView: a top-level item's key that refers to the strings of the
// arrangement it came from, so that matching or ordering ten thousand items
// copies no app ID. Only valid while that arrangement is unchanged.
//
// Thread rules: a plain value.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

#include "OrreryCore/arrangement/Layout.h"

namespace orrery {

struct KeyView {
  bool isFolder = false;
  std::string_view app;
  Uuid folder;
  friend bool operator==(const KeyView&, const KeyView&) = default;
};

struct KeyViewHash {
  std::size_t operator()(const KeyView& key) const noexcept {
    return key.isFolder ? std::hash<Uuid>()(key.folder) : std::hash<std::string_view>()(key.app);
  }
};

inline KeyView keyView(const LayoutItem& item) {
  if (const auto* id = item.appID()) return KeyView{false, *id, {}};
  return KeyView{true, {}, item.asFolder()->id};
}

}  // namespace orrery
