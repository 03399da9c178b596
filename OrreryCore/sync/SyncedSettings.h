// SyncedSettings: the part of the settings that all of the user's machines
// share.
//
// The eight shared fields of Settings, with the same types, JSON keys and
// case-name codings; the per-machine fields (grid, icon size, launch at
// login, first run) never travel. A default SyncedSettings equals
// Settings().synced().
//
// Unlike the local record, this part is read strictly: it travels inside the
// shared snapshot, and a snapshot this version cannot fully understand must
// be recognised as such rather than half-applied. Every key is required
// except "hotKey", which is absent when there is no hot key.
//
// merge() combines two machines' edits field by field against their last
// common state, so a change made on only one machine always survives.
//
// Thread rules: a plain value.
#pragma once

#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "OrreryCore/base/DecodingError.h"
#include "OrreryCore/base/Expected.h"
#include "OrreryCore/settings/HotKey.h"
#include "OrreryCore/settings/SettingsEnums.h"

namespace orrery {

struct SyncedSettings {
  BackgroundStyle background = BackgroundStyle::blurredWallpaper;
  std::string solidColorHex = "#1E1E1E";
  Corner corner = Corner::none;
  CornerModifier cornerModifier = CornerModifier::none;
  std::optional<HotKey> hotKey;
  bool animations = true;
  bool showMenuBarIcon = true;
  LayoutMode layoutMode = LayoutMode::paged;

  friend bool operator==(const SyncedSettings&, const SyncedSettings&) = default;

  // Three-way merge, each field on its own (the hot key as a whole):
  // unchanged locally → the remote value; changed only locally, or changed
  // the same way on both sides → the local value; changed differently on both
  // sides → the newer side's value (remote when the times are equal, which
  // the caller expresses as localIsNewer = false).
  static SyncedSettings merge(const SyncedSettings& base, const SyncedSettings& local,
                              const SyncedSettings& remote, bool localIsNewer);

  // Every key; "hotKey" only when there is one.
  nlohmann::json toJson() const;
  static Expected<SyncedSettings, DecodingError> fromJson(const nlohmann::json& json);
};

}  // namespace orrery
