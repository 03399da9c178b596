// SyncState: this machine's own bookkeeping of the sync, kept in
// "sync-state.json" beside the arrangement file (see SyncStateStore).
//
// A default-constructed record is the fresh one: sync off, a new random
// device identity, no base, no user edits, local changes at the distant past,
// never synced, no engine data, no writers, no report sent. The identity is
// made once with the first fresh record and kept for the life of the file.
//
// Decoding is partly forgiving, because the record outlives versions of the
// program and of the shared snapshot:
// - missing keys (and nulls) keep the fresh values;
// - a malformed "enabled", "deviceID", "userEdited" or "localModified" fails
//   the whole record: these decide whether sync runs and who this machine is,
//   and guessing them could overwrite the user's arrangement;
// - a malformed "base" (including a snapshot of a newer format), "lastSync",
//   "engineState" or "lastReportedCount" is dropped, and a malformed
//   "writers" becomes empty: each only costs a fresh start of that part.
//
// Encoding: the field names as keys, optional fields omitted when absent,
// dates as seconds since 2001-01-01T00:00:00Z, UUIDs upper-case, engineState
// as base64, writers as an object from UUID text to date; pretty-printed
// with sorted keys.
//
// Thread rules: a plain value; the sync engine owns its copy on the main
// thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "OrreryCore/base/Date.h"
#include "OrreryCore/base/DecodingError.h"
#include "OrreryCore/base/Expected.h"
#include "OrreryCore/base/Uuid.h"
#include "OrreryCore/sync/DeviceReport.h"
#include "OrreryCore/sync/SharedSnapshot.h"

namespace orrery {

struct SyncState {
  // Earlier than any real change: 1900-01-01T00:00:00Z, a whole number of
  // seconds so that it survives the wire form exactly.
  static Date distantPast();

  bool enabled = false;
  Uuid deviceID = Uuid::random();
  std::optional<SharedSnapshot> base;
  bool userEdited = false;
  Date localModified = distantPast();
  std::optional<Date> lastSync;
  std::optional<std::vector<std::uint8_t>> engineState;
  Writers writers;
  std::optional<std::int64_t> lastReportedCount;

  friend bool operator==(const SyncState&, const SyncState&) = default;

  nlohmann::json toJson() const;
  static Expected<SyncState, DecodingError> fromJson(const nlohmann::json& json);
  // Pretty-printed, sorted keys.
  std::string encoded() const;
  static Expected<SyncState, DecodingError> decode(std::string_view bytes);
};

// Base64 with padding, the form of binary data in JSON. decodeBase64 accepts
// only the canonical alphabet with correct padding.
std::string encodeBase64(const std::vector<std::uint8_t>& bytes);
std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text);

}  // namespace orrery
