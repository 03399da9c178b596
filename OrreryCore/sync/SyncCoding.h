// JSON readers shared by the sync records (snapshot, device report, sync
// state): required keys, UUIDs and dates in their wire forms.
//
// Dates travel as seconds since 2001-01-01T00:00:00Z (a JSON number, with a
// fraction); UUIDs as their canonical text, written upper-case and read in
// any case. Each reader names the key in its error so a log line says which
// value was wrong.
//
// Thread rules: pure functions.
#pragma once

#include <string_view>

#include <nlohmann/json_fwd.hpp>

#include "OrreryCore/base/Date.h"
#include "OrreryCore/base/DecodingError.h"
#include "OrreryCore/base/Expected.h"
#include "OrreryCore/base/Uuid.h"

namespace orrery::syncCoding {

// The object itself, or a type mismatch at `path`.
Expected<const nlohmann::json*, DecodingError> object(const nlohmann::json& value, std::string_view path);
// The present, non-null value under `key`, or why there is none.
Expected<const nlohmann::json*, DecodingError> required(const nlohmann::json& object, std::string_view key);
// The value under `key` when present and not null; null otherwise.
const nlohmann::json* optional(const nlohmann::json& object, std::string_view key);

Expected<Uuid, DecodingError> uuid(const nlohmann::json& value, std::string_view key);
Expected<Date, DecodingError> date(const nlohmann::json& value, std::string_view key);

nlohmann::json dateJson(Date date);

}  // namespace orrery::syncCoding
