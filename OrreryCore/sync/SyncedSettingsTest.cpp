#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "OrreryCore/settings/Settings.h"
#include "OrreryCore/sync/SyncedSettings.h"

namespace orrery {
namespace {

TEST(SettingsSharing, ApplyingReplacesOnlyTheSharedFields) {
  Settings changed;
  changed.columns = 9;
  changed.background = BackgroundStyle::solid;
  changed.corner = Corner::bottomRight;
  changed.hotKey = HotKey{49, HotKey::kCommand | HotKey::kShift};
  changed.layoutMode = LayoutMode::scroll;
  changed.launchAtLogin = true;
  EXPECT_EQ(Settings().synced(), SyncedSettings());

  const Settings applied = Settings().applying(changed.synced());
  EXPECT_EQ(applied.synced(), changed.synced());
  // Columns and launch at login stay this machine's own.
  EXPECT_EQ(applied.columns, Settings().columns);
  EXPECT_FALSE(applied.launchAtLogin);
  EXPECT_EQ(changed.applying(Settings().synced()).columns, 9);
}

TEST(SyncedSettingsMerge, AChangeOnOneSideAlwaysSurvives) {
  const SyncedSettings base;
  SyncedSettings remote;
  remote.corner = Corner::topLeft;
  SyncedSettings local;
  local.animations = false;

  for (const bool localIsNewer : {false, true}) {
    const SyncedSettings merged = SyncedSettings::merge(base, local, remote, localIsNewer);
    EXPECT_EQ(merged.corner, Corner::topLeft) << localIsNewer;
    EXPECT_FALSE(merged.animations) << localIsNewer;
  }
}

TEST(SyncedSettingsMerge, ConflictingChangesGoToTheNewerSide) {
  const SyncedSettings base;
  SyncedSettings local;
  local.layoutMode = LayoutMode::scroll;
  local.solidColorHex = "#000000";
  SyncedSettings remote;
  remote.layoutMode = LayoutMode::scroll;
  remote.solidColorHex = "#FFFFFF";

  EXPECT_EQ(SyncedSettings::merge(base, local, remote, true).solidColorHex, "#000000");
  // Equal times are passed as "local is not newer": the remote side wins.
  EXPECT_EQ(SyncedSettings::merge(base, local, remote, false).solidColorHex, "#FFFFFF");
  // The same change on both sides is no conflict.
  EXPECT_EQ(SyncedSettings::merge(base, local, remote, false).layoutMode, LayoutMode::scroll);
}

TEST(SyncedSettingsMerge, HotKeyIsMergedAsAWhole) {
  SyncedSettings base;
  base.hotKey = HotKey{49, HotKey::kCommand};
  SyncedSettings local = base;
  local.hotKey = HotKey{49, HotKey::kOption};
  SyncedSettings remote = base;
  remote.hotKey = HotKey{36, HotKey::kCommand};

  // One side's shortcut or the other's, never key of one and modifiers of the other.
  EXPECT_EQ(SyncedSettings::merge(base, local, remote, true).hotKey, local.hotKey);
  EXPECT_EQ(SyncedSettings::merge(base, local, remote, false).hotKey, remote.hotKey);

  // Removing the shortcut on one machine is a change like any other.
  SyncedSettings removed = base;
  removed.hotKey.reset();
  EXPECT_EQ(SyncedSettings::merge(base, base, removed, true).hotKey, std::nullopt);
  EXPECT_EQ(SyncedSettings::merge(base, removed, base, false).hotKey, std::nullopt);
}

TEST(SyncedSettingsCoding, UsesTheSettingsKeysAndRoundTrips) {
  Settings settings;
  settings.background = BackgroundStyle::glass;
  settings.cornerModifier = CornerModifier::control;
  settings.hotKey = HotKey{0, HotKey::kControl};
  const SyncedSettings synced = settings.synced();

  const nlohmann::json json = synced.toJson();
  EXPECT_EQ(json.size(), 8u);
  const nlohmann::json full = settings.toJson();
  for (const auto& [key, value] : json.items()) EXPECT_EQ(value, full.at(key)) << key;
  EXPECT_EQ(SyncedSettings::fromJson(json).value(), synced);
  EXPECT_FALSE(SyncedSettings().toJson().contains("hotKey"));
  EXPECT_EQ(SyncedSettings::fromJson(SyncedSettings().toJson()).value(), SyncedSettings());
}

TEST(SyncedSettingsCoding, IsStrictExceptForTheHotKey) {
  const nlohmann::json good = SyncedSettings().toJson();
  const auto with = [&](const char* key, nlohmann::json value) {
    nlohmann::json json = good;
    if (value.is_discarded())
      json.erase(key);
    else
      json[key] = std::move(value);
    return SyncedSettings::fromJson(json);
  };
  EXPECT_TRUE(with("hotKey", nullptr));

  const auto missing = with("animations", nlohmann::json(nlohmann::json::value_t::discarded));
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.error().kind, DecodingError::Kind::keyNotFound);
  EXPECT_EQ(missing.error().path, "animations");
  // Unlike the local record, an unknown layout mode makes the shared one unreadable.
  EXPECT_FALSE(with("layoutMode", "carousel"));
  EXPECT_FALSE(with("corner", nullptr));
  EXPECT_FALSE(with("hotKey", {{"keyCode", 3}}));
  EXPECT_FALSE(SyncedSettings::fromJson(nlohmann::json::array()));
}

}  // namespace
}  // namespace orrery
