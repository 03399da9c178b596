#include "OrreryCore/settings/SettingsCoding.h"

#include <cmath>
#include <limits>

#include <nlohmann/json.hpp>

namespace orrery::settingsCoding {

namespace {

using Kind = DecodingError::Kind;

DecodingError failure(Kind kind, std::string_view key, std::string message) {
  return DecodingError{kind, std::string(key), std::move(message)};
}

DecodingError typeMismatch(std::string_view key, const char* expected, const nlohmann::json& found) {
  return failure(
      Kind::typeMismatch, key,
      std::string("Expected to decode ") + expected + " but found " + found.type_name() + " instead.");
}

// Enumerations travel as their case names; a name no case has is data this
// version cannot represent.
template <typename Enum, typename FromName>
Expected<Enum, DecodingError> enumeration(const nlohmann::json& value, std::string_view key,
                                          FromName fromName) {
  if (!value.is_string()) return Unexpected(typeMismatch(key, "a string", value));
  const auto& name = value.get_ref<const std::string&>();
  if (const auto decoded = fromName(name)) return *decoded;
  return Unexpected(
      failure(Kind::dataCorrupted, key, "Cannot initialize from invalid value \"" + name + "\"."));
}

}  // namespace

Expected<std::int64_t, DecodingError> integer(const nlohmann::json& value, std::string_view key) {
  constexpr auto maximum = std::numeric_limits<std::int64_t>::max();
  if (value.is_number_unsigned()) {
    const auto unsignedValue = value.get<std::uint64_t>();
    if (unsignedValue <= static_cast<std::uint64_t>(maximum)) return static_cast<std::int64_t>(unsignedValue);
  } else if (value.is_number_integer()) {
    return value.get<std::int64_t>();
  } else if (value.is_number_float()) {
    const double floating = value.get<double>();
    // 2^63 itself is not representable; everything below it that is whole is.
    if (std::isfinite(floating) && std::trunc(floating) == floating && floating >= -0x1p63 &&
        floating < 0x1p63)
      return static_cast<std::int64_t>(floating);
  } else {
    return Unexpected(typeMismatch(key, "an integer", value));
  }
  return Unexpected(
      failure(Kind::dataCorrupted, key, "Parsed JSON number " + value.dump() + " does not fit in Int."));
}

Expected<double, DecodingError> number(const nlohmann::json& value, std::string_view key) {
  if (!value.is_number()) return Unexpected(typeMismatch(key, "a number", value));
  return value.get<double>();
}

Expected<bool, DecodingError> boolean(const nlohmann::json& value, std::string_view key) {
  if (!value.is_boolean()) return Unexpected(typeMismatch(key, "a Boolean", value));
  return value.get<bool>();
}

Expected<std::string, DecodingError> string(const nlohmann::json& value, std::string_view key) {
  if (!value.is_string()) return Unexpected(typeMismatch(key, "a string", value));
  return value.get<std::string>();
}

Expected<BackgroundStyle, DecodingError> backgroundStyle(const nlohmann::json& value, std::string_view key) {
  return enumeration<BackgroundStyle>(value, key, backgroundStyleFromCaseName);
}

Expected<Corner, DecodingError> corner(const nlohmann::json& value, std::string_view key) {
  return enumeration<Corner>(value, key, cornerFromCaseName);
}

Expected<CornerModifier, DecodingError> cornerModifier(const nlohmann::json& value, std::string_view key) {
  return enumeration<CornerModifier>(value, key, cornerModifierFromCaseName);
}

Expected<LayoutMode, DecodingError> layoutMode(const nlohmann::json& value, std::string_view key) {
  return enumeration<LayoutMode>(value, key, layoutModeFromCaseName);
}

Expected<HotKey, DecodingError> hotKey(const nlohmann::json& value, std::string_view key) {
  if (!value.is_object()) return Unexpected(typeMismatch(key, "a keyed container", value));
  if (const auto decoded = HotKey::fromJson(value)) return *decoded;
  for (const char* part : {"keyCode", "carbonModifiers"})
    if (!value.contains(part))
      return Unexpected(failure(Kind::keyNotFound, std::string(key) + "." + part,
                                std::string("No value associated with key \"") + part + "\"."));
  return Unexpected(failure(Kind::typeMismatch, key,
                            "Expected \"keyCode\" and \"carbonModifiers\" as unsigned 32-bit integers."));
}

}  // namespace orrery::settingsCoding
