#include "OrreryCore/settings/Settings.h"

#include <nlohmann/json.hpp>

#include "OrreryCore/settings/SettingsCoding.h"

namespace orrery {

namespace {

// Reads `key` into `field` when it holds a value; a missing key or null
// leaves the field's default. Returns the reason when the value is unusable.
template <typename T, typename Reader>
std::optional<DecodingError> readOptional(const nlohmann::json& object, const char* key, T& field,
                                          Reader read) {
  const auto found = object.find(key);
  if (found == object.end() || found->is_null()) return std::nullopt;
  auto value = read(*found, key);
  if (!value) return value.error();
  field = std::move(*value);
  return std::nullopt;
}

}  // namespace

nlohmann::json Settings::toJson() const {
  nlohmann::json json = {
      {"columns", columns},
      {"rows", rows},
      {"iconSize", iconSize},
      {"background", caseName(background)},
      {"solidColorHex", solidColorHex},
      {"corner", caseName(corner)},
      {"cornerModifier", caseName(cornerModifier)},
      {"animations", animations},
      {"showMenuBarIcon", showMenuBarIcon},
      {"launchAtLogin", launchAtLogin},
      {"firstRunDone", firstRunDone},
      {"layoutMode", caseName(layoutMode)},
  };
  if (hotKey) json["hotKey"] = hotKey->toJson();
  return json;
}

Expected<Settings, DecodingError> Settings::fromJson(const nlohmann::json& json) {
  namespace coding = settingsCoding;
  if (!json.is_object())
    return Unexpected(DecodingError{
        DecodingError::Kind::typeMismatch, "",
        "Expected to decode a keyed container but found " + std::string(json.type_name()) + " instead."});

  Settings settings;
  // In the order of the keys, so the first bad key is the one reported.
  if (auto error = readOptional(json, "columns", settings.columns, coding::integer))
    return Unexpected(*error);
  if (auto error = readOptional(json, "rows", settings.rows, coding::integer)) return Unexpected(*error);
  if (auto error = readOptional(json, "iconSize", settings.iconSize, coding::number))
    return Unexpected(*error);
  if (auto error = readOptional(json, "background", settings.background, coding::backgroundStyle))
    return Unexpected(*error);
  if (auto error = readOptional(json, "solidColorHex", settings.solidColorHex, coding::string))
    return Unexpected(*error);
  if (auto error = readOptional(json, "corner", settings.corner, coding::corner)) return Unexpected(*error);
  if (auto error = readOptional(json, "cornerModifier", settings.cornerModifier, coding::cornerModifier))
    return Unexpected(*error);
  if (auto error = readOptional(json, "hotKey", settings.hotKey, coding::hotKey)) return Unexpected(*error);
  if (auto error = readOptional(json, "animations", settings.animations, coding::boolean))
    return Unexpected(*error);
  if (auto error = readOptional(json, "showMenuBarIcon", settings.showMenuBarIcon, coding::boolean))
    return Unexpected(*error);
  if (auto error = readOptional(json, "launchAtLogin", settings.launchAtLogin, coding::boolean))
    return Unexpected(*error);
  if (auto error = readOptional(json, "firstRunDone", settings.firstRunDone, coding::boolean))
    return Unexpected(*error);
  // Deliberately forgiving: a mode this version does not know (or garbage)
  // costs only the mode, never the user's other settings.
  if (readOptional(json, "layoutMode", settings.layoutMode, coding::layoutMode))
    settings.layoutMode = LayoutMode::paged;

  settings.columns = columnsRange.clamped(settings.columns);
  settings.rows = rowsRange.clamped(settings.rows);
  settings.iconSize = iconSizeRange.clamped(settings.iconSize);
  return settings;
}

std::optional<std::string> Settings::encoded() const {
  try {
    return toJson().dump();
  } catch (const nlohmann::json::exception&) {
    // Only text that is not UTF-8 makes dump() fail.
    return std::nullopt;
  }
}

Expected<Settings, DecodingError> Settings::decode(std::string_view bytes) {
  const auto json = nlohmann::json::parse(bytes, nullptr, /*allow_exceptions=*/false);
  if (json.is_discarded())
    return Unexpected(
        DecodingError{DecodingError::Kind::dataCorrupted, "", "The given data was not valid JSON."});
  return fromJson(json);
}

Settings Settings::load(const KeyValueStore& from) {
  const auto bytes = from.data(std::string(storageKey));
  if (!bytes) return Settings{};
  auto decoded = decode(*bytes);
  if (!decoded) return Settings{};
  return std::move(*decoded);
}

void Settings::save(KeyValueStore& to) const {
  if (auto bytes = encoded()) to.setData(std::string(storageKey), std::move(*bytes));
}

}  // namespace orrery
