// SharedSnapshot: what all of the user's machines share through the cloud.
//
// One record for all machines: the arrangement, the shared part of the
// settings, when the writing machine last changed either, and which machine
// wrote it. The sync state keeps the last snapshot this machine and the cloud
// agreed on as the base of the next three-way merge.
//
// The encoding is strict: every key ("format", "layout", "settings",
// "modified", "writer") is required, the arrangement and settings are read by
// their own strict rules, "modified" is seconds since 2001-01-01T00:00:00Z and
// "writer" an upper-case UUID. A snapshot of format 2 or later comes from a
// newer version whose rules this one does not know; decode() treats it
// exactly like bytes that are not a snapshot at all, so the engine neither
// applies it nor overwrites it.
//
// Thread rules: a plain value.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json_fwd.hpp>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/base/Date.h"
#include "OrreryCore/base/DecodingError.h"
#include "OrreryCore/base/Expected.h"
#include "OrreryCore/base/Uuid.h"
#include "OrreryCore/sync/SyncedSettings.h"

namespace orrery {

struct SharedSnapshot {
  // The shape this version writes; anything from currentFormat + 1 on is
  // not readable here.
  static constexpr std::int64_t currentFormat = 1;

  std::int64_t format = currentFormat;
  Layout layout;
  SyncedSettings settings;
  Date modified{};  // when the writer last changed arrangement or shared settings
  Uuid writer;      // deviceID of the machine that wrote it

  friend bool operator==(const SharedSnapshot&, const SharedSnapshot&) = default;

  // The snapshot if the bytes hold one this version can use; nothing for
  // malformed bytes and for any newer format.
  static std::optional<SharedSnapshot> decode(std::string_view bytes);
  // The same rule for a snapshot embedded in another JSON document.
  static std::optional<SharedSnapshot> readable(const nlohmann::json& json);
  // Compact JSON with sorted keys.
  std::string encoded() const;

  nlohmann::json toJson() const;
  // Strict decoding of the shape; does not judge the format number.
  static Expected<SharedSnapshot, DecodingError> fromJson(const nlohmann::json& json);

  // The three-way merge of two machines' snapshots against their base. The
  // local side counts as newer only when its `modified` is strictly later, so
  // equal times favour the remote side. The result has the current format,
  // the later of the two modification times, and the local writer (the
  // machine that merges is the one that will upload it).
  static SharedSnapshot merged(const SharedSnapshot& base, const SharedSnapshot& local,
                               const SharedSnapshot& remote);
};

}  // namespace orrery
