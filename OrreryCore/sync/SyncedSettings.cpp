#include "OrreryCore/sync/SyncedSettings.h"

#include <nlohmann/json.hpp>

#include "OrreryCore/settings/Settings.h"
#include "OrreryCore/settings/SettingsCoding.h"

namespace orrery {

namespace {

template <typename T>
const T& mergedField(const T& base, const T& local, const T& remote, bool localIsNewer) {
  if (local == base) return remote;
  if (remote == base || local == remote) return local;
  return localIsNewer ? local : remote;
}

// Reads a required key with `read`, or says what is missing.
template <typename T, typename Reader>
Expected<T, DecodingError> required(const nlohmann::json& object, const char* key, Reader read) {
  const auto found = object.find(key);
  if (found == object.end())
    return Unexpected(DecodingError{DecodingError::Kind::keyNotFound, key,
                                    std::string("No value associated with key \"") + key + "\"."});
  if (found->is_null())
    return Unexpected(
        DecodingError{DecodingError::Kind::valueNotFound, key, "Expected a value but found null instead."});
  return read(*found, key);
}

}  // namespace

SyncedSettings SyncedSettings::merge(const SyncedSettings& base, const SyncedSettings& local,
                                     const SyncedSettings& remote, bool localIsNewer) {
  const auto field = [&](auto SyncedSettings::*member) {
    return mergedField(base.*member, local.*member, remote.*member, localIsNewer);
  };
  SyncedSettings merged;
  merged.background = field(&SyncedSettings::background);
  merged.solidColorHex = field(&SyncedSettings::solidColorHex);
  merged.corner = field(&SyncedSettings::corner);
  merged.cornerModifier = field(&SyncedSettings::cornerModifier);
  merged.hotKey = field(&SyncedSettings::hotKey);
  merged.animations = field(&SyncedSettings::animations);
  merged.showMenuBarIcon = field(&SyncedSettings::showMenuBarIcon);
  merged.layoutMode = field(&SyncedSettings::layoutMode);
  return merged;
}

nlohmann::json SyncedSettings::toJson() const {
  nlohmann::json json = {
      {"background", caseName(background)}, {"solidColorHex", solidColorHex},
      {"corner", caseName(corner)},         {"cornerModifier", caseName(cornerModifier)},
      {"animations", animations},           {"showMenuBarIcon", showMenuBarIcon},
      {"layoutMode", caseName(layoutMode)},
  };
  if (hotKey) json["hotKey"] = hotKey->toJson();
  return json;
}

Expected<SyncedSettings, DecodingError> SyncedSettings::fromJson(const nlohmann::json& json) {
  namespace coding = settingsCoding;
  if (!json.is_object())
    return Unexpected(DecodingError{
        DecodingError::Kind::typeMismatch, "",
        "Expected to decode a keyed container but found " + std::string(json.type_name()) + " instead."});
  SyncedSettings settings;

  const auto background = required<BackgroundStyle>(json, "background", coding::backgroundStyle);
  if (!background) return Unexpected(background.error());
  settings.background = *background;

  auto solidColorHex = required<std::string>(json, "solidColorHex", coding::string);
  if (!solidColorHex) return Unexpected(solidColorHex.error());
  settings.solidColorHex = std::move(*solidColorHex);

  const auto corner = required<Corner>(json, "corner", coding::corner);
  if (!corner) return Unexpected(corner.error());
  settings.corner = *corner;

  const auto cornerModifier = required<CornerModifier>(json, "cornerModifier", coding::cornerModifier);
  if (!cornerModifier) return Unexpected(cornerModifier.error());
  settings.cornerModifier = *cornerModifier;

  // Optional: a missing key or null means no hot key.
  if (const auto found = json.find("hotKey"); found != json.end() && !found->is_null()) {
    const auto hotKey = coding::hotKey(*found, "hotKey");
    if (!hotKey) return Unexpected(hotKey.error());
    settings.hotKey = *hotKey;
  }

  const auto animations = required<bool>(json, "animations", coding::boolean);
  if (!animations) return Unexpected(animations.error());
  settings.animations = *animations;

  const auto showMenuBarIcon = required<bool>(json, "showMenuBarIcon", coding::boolean);
  if (!showMenuBarIcon) return Unexpected(showMenuBarIcon.error());
  settings.showMenuBarIcon = *showMenuBarIcon;

  const auto layoutMode = required<LayoutMode>(json, "layoutMode", coding::layoutMode);
  if (!layoutMode) return Unexpected(layoutMode.error());
  settings.layoutMode = *layoutMode;

  return settings;
}

// Settings' side of the split lives here, so settings need not know about sync.
SyncedSettings Settings::synced() const {
  return SyncedSettings{
      .background = background,
      .solidColorHex = solidColorHex,
      .corner = corner,
      .cornerModifier = cornerModifier,
      .hotKey = hotKey,
      .animations = animations,
      .showMenuBarIcon = showMenuBarIcon,
      .layoutMode = layoutMode,
  };
}

Settings Settings::applying(const SyncedSettings& shared) const {
  Settings result = *this;
  result.background = shared.background;
  result.solidColorHex = shared.solidColorHex;
  result.corner = shared.corner;
  result.cornerModifier = shared.cornerModifier;
  result.hotKey = shared.hotKey;
  result.animations = shared.animations;
  result.showMenuBarIcon = shared.showMenuBarIcon;
  result.layoutMode = shared.layoutMode;
  return result;
}

}  // namespace orrery
