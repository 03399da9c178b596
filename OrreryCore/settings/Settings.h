// Settings: the user's preferences on one machine.
//
// Grid and icon size, background, triggers (hot corner, its modifier, the
// hot key), animations, the tray icon, launch at login, the first-run flag
// and the layout mode. Eight fields are shared with the user's other
// machines (see synced() and sync/SyncedSettings.h); columns, rows, iconSize,
// launchAtLogin and firstRunDone stay per machine.
//
// The record is stored as JSON under the key "settings" of a KeyValueStore.
// Reading is tolerant where that keeps the user's other choices alive:
// missing keys keep their default, out-of-range numbers are clamped. A value
// this version cannot understand in a strict key (wrong JSON type, an
// unknown background, corner or modifier, an incomplete hot key) fails the
// whole record, and load() then starts from the defaults. layoutMode alone is
// forgiving: a bad value there only resets that field to paged, so a record
// written by a version with more layout modes keeps everything else.
//
// Assigning a field in memory does not clamp; the ranges bound what the
// settings window offers and what decoding accepts.
//
// Thread rules: a plain value. The application's settings store owns the
// current record on the main thread.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json_fwd.hpp>

#include "OrreryCore/base/DecodingError.h"
#include "OrreryCore/base/Expected.h"
#include "OrreryCore/settings/HotKey.h"
#include "OrreryCore/settings/KeyValueStore.h"
#include "OrreryCore/settings/SettingsEnums.h"

namespace orrery {

struct SyncedSettings;

// A closed interval [lowerBound, upperBound].
template <typename T>
struct ClosedRange {
  T lowerBound;
  T upperBound;

  constexpr bool contains(T value) const { return lowerBound <= value && value <= upperBound; }
  constexpr T clamped(T value) const { return std::min(std::max(value, lowerBound), upperBound); }

  friend constexpr bool operator==(const ClosedRange&, const ClosedRange&) = default;
};

struct Settings {
  static constexpr ClosedRange<std::int64_t> columnsRange{4, 12};
  static constexpr ClosedRange<std::int64_t> rowsRange{3, 8};
  static constexpr ClosedRange<double> iconSizeRange{48.0, 160.0};

  // The one key of the KeyValueStore that holds the record.
  static constexpr std::string_view storageKey = "settings";

  std::int64_t columns = 7;
  std::int64_t rows = 5;
  double iconSize = 116.0;  // points
  BackgroundStyle background = BackgroundStyle::blurredWallpaper;
  std::string solidColorHex = "#1E1E1E";  // read by appearance/, not checked here
  Corner corner = Corner::none;
  CornerModifier cornerModifier = CornerModifier::none;
  std::optional<HotKey> hotKey;
  bool animations = true;
  bool showMenuBarIcon = true;
  bool launchAtLogin = false;
  bool firstRunDone = false;
  LayoutMode layoutMode = LayoutMode::paged;

  friend bool operator==(const Settings&, const Settings&) = default;

  // --- Sharing with other machines ------------------------------------------

  // The eight shared fields.
  SyncedSettings synced() const;
  // This record with the eight shared fields taken from `shared`; the
  // per-machine fields stay as they are.
  Settings applying(const SyncedSettings& shared) const;

  // --- JSON -------------------------------------------------------------------

  // Every key; "hotKey" only when there is one (never null).
  nlohmann::json toJson() const;
  // The tolerant per-key reading described above, clamped afterwards.
  static Expected<Settings, DecodingError> fromJson(const nlohmann::json& json);
  // Compact JSON; nothing when the record cannot be written as JSON at all
  // (solidColorHex holding bytes that are not UTF-8).
  std::optional<std::string> encoded() const;
  static Expected<Settings, DecodingError> decode(std::string_view bytes);

  // --- Storage ----------------------------------------------------------------

  // The stored record, or the defaults when there is none or it cannot be
  // decoded (the stored bytes are left as they are until the next save).
  static Settings load(const KeyValueStore& from);
  // Writes the record under storageKey; when it cannot be encoded, the
  // stored value stays as it was.
  void save(KeyValueStore& to) const;
};

}  // namespace orrery
