// The JSON value readers shared by the settings record and its synced part.
//
// Each reader takes one present, non-null value and either returns it as the
// field's type or says why not, with the key as the error's path. Whether a
// missing key is an error, and whether an error fails the whole record, is
// the caller's rule: the local record is tolerant, the synced part strict.
//
// Thread rules: pure functions.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <nlohmann/json_fwd.hpp>

#include "OrreryCore/base/DecodingError.h"
#include "OrreryCore/base/Expected.h"
#include "OrreryCore/settings/HotKey.h"
#include "OrreryCore/settings/SettingsEnums.h"

namespace orrery::settingsCoding {

// A whole number; a fractional one or one beyond 64 bits is rejected, not
// rounded or wrapped. Integral floats (7.0) are accepted.
Expected<std::int64_t, DecodingError> integer(const nlohmann::json& value, std::string_view key);
Expected<double, DecodingError> number(const nlohmann::json& value, std::string_view key);
Expected<bool, DecodingError> boolean(const nlohmann::json& value, std::string_view key);
Expected<std::string, DecodingError> string(const nlohmann::json& value, std::string_view key);
Expected<BackgroundStyle, DecodingError> backgroundStyle(const nlohmann::json& value, std::string_view key);
Expected<Corner, DecodingError> corner(const nlohmann::json& value, std::string_view key);
Expected<CornerModifier, DecodingError> cornerModifier(const nlohmann::json& value, std::string_view key);
Expected<LayoutMode, DecodingError> layoutMode(const nlohmann::json& value, std::string_view key);
Expected<HotKey, DecodingError> hotKey(const nlohmann::json& value, std::string_view key);

}  // namespace orrery::settingsCoding
