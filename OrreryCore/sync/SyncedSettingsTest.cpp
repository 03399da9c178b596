#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "settings/Settings.h"
#include "sync/SyncedSettings.h"

namespace orrery {
namespace {

SyncedSettings changed(void (*edit)(SyncedSettings&)) {
  SyncedSettings settings;
  edit(settings);
  return settings;
}

TEST(SyncedSettingsMerge, AChangeOnOneSideAlwaysSurvives) {
  const SyncedSettings base;
  const SyncedSettings remote = changed([](SyncedSettings& s) { s.corner = Corner::topLeft; });
  const SyncedSettings local = changed([](SyncedSettings& s) { s.animations = false; });

  for (const bool localIsNewer : {false, true}) {
    const SyncedSettings merged = SyncedSettings::merge(base, local, remote, localIsNewer);
    EXPECT_EQ(merged.corner, Corner::topLeft) << localIsNewer;
    EXPECT_FALSE(merged.animations) << localIsNewer;
    EXPECT_EQ(merged.layoutMode, LayoutMode::paged);
  }
}

TEST(SyncedSettingsMerge, ConflictingChangesGoToTheNewerSide) {
  const SyncedSettings base;
  const SyncedSettings local = changed([](SyncedSettings& s) {
    s.layoutMode = LayoutMode::scroll;
    s.solidColorHex = "#000000";
  });
  const SyncedSettings remote = changed([](SyncedSettings& s) { s.solidColorHex = "#FFFFFF"; });

  const SyncedSettings localWins = SyncedSettings::merge(base, local, remote, true);
  EXPECT_EQ(localWins.solidColorHex, "#000000");
  EXPECT_EQ(localWins.layoutMode, LayoutMode::scroll);
  // Equal times are passed as "local is not newer": the remote side wins.
  const SyncedSettings remoteWins = SyncedSettings::merge(base, local, remote, false);
  EXPECT_EQ(remoteWins.solidColorHex, "#FFFFFF");
  EXPECT_EQ(remoteWins.layoutMode, LayoutMode::scroll);  // only local changed it

  // The same change on both sides is no conflict.
  EXPECT_EQ(SyncedSettings::merge(base, local, local, false), local);
}

TEST(SyncedSettingsMerge, HotKeyIsMergedAsAWhole) {
  SyncedSettings base;
  base.hotKey = HotKey{49, HotKey::kCommand};
  SyncedSettings local = base;
  local.hotKey = HotKey{49, HotKey::kOption};  // other modifiers
  SyncedSettings remote = base;
  remote.hotKey = HotKey{36, HotKey::kCommand};  // other key

  // Never a mix of the two: one side's shortcut or the other's.
  EXPECT_EQ(SyncedSettings::merge(base, local, remote, true).hotKey, local.hotKey);
  EXPECT_EQ(SyncedSettings::merge(base, local, remote, false).hotKey, remote.hotKey);

  // Removing the shortcut on one machine is a change like any other.
  SyncedSettings removed = base;
  removed.hotKey.reset();
  EXPECT_EQ(SyncedSettings::merge(base, base, removed, true).hotKey, std::nullopt);
  EXPECT_EQ(SyncedSettings::merge(base, removed, base, false).hotKey, std::nullopt);
  // Absent on all three stays absent.
  EXPECT_EQ(SyncedSettings::merge({}, {}, {}, true).hotKey, std::nullopt);
}

TEST(SyncedSettingsCoding, RoundTripsWithTheSettingsKeys) {
  Settings settings;
  settings.background = BackgroundStyle::glass;
  settings.corner = Corner::topRight;
  settings.cornerModifier = CornerModifier::control;
  settings.hotKey = HotKey{0, HotKey::kControl};
  settings.layoutMode = LayoutMode::scroll;
  const SyncedSettings synced = settings.synced();

  const nlohmann::json json = synced.toJson();
  EXPECT_EQ(json.size(), 8u);
  // Each shared key is spelled and coded exactly as in the full record.
  const nlohmann::json full = settings.toJson();
  for (const auto& [key, value] : json.items()) EXPECT_EQ(value, full.at(key)) << key;

  const auto decoded = SyncedSettings::fromJson(json);
  ASSERT_TRUE(decoded);
  EXPECT_EQ(*decoded, synced);

  const nlohmann::json plain = SyncedSettings().toJson();
  EXPECT_FALSE(plain.contains("hotKey"));
  EXPECT_EQ(SyncedSettings::fromJson(plain).value(), SyncedSettings());
}

TEST(SyncedSettingsCoding, IsStrictExceptForTheHotKey) {
  const nlohmann::json good = SyncedSettings().toJson();

  nlohmann::json nullKey = good;
  nullKey["hotKey"] = nullptr;
  EXPECT_TRUE(SyncedSettings::fromJson(nullKey));

  nlohmann::json missing = good;
  missing.erase("animations");
  ASSERT_FALSE(SyncedSettings::fromJson(missing));
  EXPECT_EQ(SyncedSettings::fromJson(missing).error().kind, DecodingError::Kind::keyNotFound);
  EXPECT_EQ(SyncedSettings::fromJson(missing).error().path, "animations");

  nlohmann::json newerMode = good;
  newerMode["layoutMode"] = "carousel";  // no forgiveness here: the snapshot is unreadable as a whole
  EXPECT_FALSE(SyncedSettings::fromJson(newerMode));

  nlohmann::json nullValue = good;
  nullValue["corner"] = nullptr;
  ASSERT_FALSE(SyncedSettings::fromJson(nullValue));
  EXPECT_EQ(SyncedSettings::fromJson(nullValue).error().kind, DecodingError::Kind::valueNotFound);

  nlohmann::json brokenKey = good;
  brokenKey["hotKey"] = {{"keyCode", 3}};
  EXPECT_FALSE(SyncedSettings::fromJson(brokenKey));

  EXPECT_FALSE(SyncedSettings::fromJson(nlohmann::json::array()));
}

}  // namespace
}  // namespace orrery
