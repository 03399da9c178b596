#include <gtest/gtest.h>

#include <string>

#include <nlohmann/json.hpp>

#include "settings/KeyValueStore.h"
#include "settings/Settings.h"
#include "sync/SyncedSettings.h"

namespace orrery {
namespace {

Settings loadFrom(const std::string& bytes) {
  MemoryKeyValueStore store;
  store.setData("settings", bytes);
  return Settings::load(store);
}

Settings nonDefault() {
  Settings settings;
  settings.columns = 9;
  settings.rows = 4;
  settings.iconSize = 64.5;
  settings.background = BackgroundStyle::solid;
  settings.solidColorHex = "#ABCDEF";
  settings.corner = Corner::bottomRight;
  settings.cornerModifier = CornerModifier::option;
  settings.hotKey = HotKey{49, HotKey::kCommand | HotKey::kShift};
  settings.animations = false;
  settings.showMenuBarIcon = false;
  settings.launchAtLogin = true;
  settings.firstRunDone = true;
  settings.layoutMode = LayoutMode::scroll;
  return settings;
}

TEST(SettingsStorage, EmptyStoreLoadsTheDefaults) {
  const MemoryKeyValueStore store;
  const Settings loaded = Settings::load(store);
  EXPECT_EQ(loaded, Settings());
  EXPECT_EQ(loaded.columns, 7);
  EXPECT_EQ(loaded.rows, 5);
  EXPECT_EQ(loaded.iconSize, 116.0);
  EXPECT_EQ(loaded.background, BackgroundStyle::blurredWallpaper);
  EXPECT_EQ(loaded.solidColorHex, "#1E1E1E");
  EXPECT_EQ(loaded.corner, Corner::none);
  EXPECT_EQ(loaded.cornerModifier, CornerModifier::none);
  EXPECT_FALSE(loaded.hotKey.has_value());
  EXPECT_TRUE(loaded.animations);
  EXPECT_TRUE(loaded.showMenuBarIcon);
  EXPECT_FALSE(loaded.launchAtLogin);
  EXPECT_FALSE(loaded.firstRunDone);
  EXPECT_EQ(loaded.layoutMode, LayoutMode::paged);
}

TEST(SettingsStorage, SaveThenLoadKeepsEveryField) {
  MemoryKeyValueStore store;
  nonDefault().save(store);
  EXPECT_EQ(store.writeCount(), 1u);
  EXPECT_EQ(Settings::load(store), nonDefault());
  ASSERT_TRUE(store.data("settings"));
  EXPECT_TRUE(nlohmann::json::parse(*store.data("settings")).is_object());
}

TEST(SettingsStorage, UnencodableRecordLeavesTheStoredValueAlone) {
  MemoryKeyValueStore store;
  nonDefault().save(store);
  Settings broken;
  broken.solidColorHex = "\xff\xfe";
  EXPECT_FALSE(broken.encoded());
  broken.save(store);
  EXPECT_EQ(store.writeCount(), 1u);
  EXPECT_EQ(Settings::load(store), nonDefault());
}

TEST(SettingsDecoding, MissingKeysAndNullsKeepTheirDefaults) {
  EXPECT_EQ(loadFrom("{}"), Settings());
  EXPECT_EQ(loadFrom(R"({"hotKey": null, "columns": null, "corner": null})"), Settings());

  const Settings partial = loadFrom(R"({"rows": 6, "animations": false})");
  Settings expected;
  expected.rows = 6;
  expected.animations = false;
  EXPECT_EQ(partial, expected);
}

TEST(SettingsDecoding, NumbersAreClampedIntoTheirRanges) {
  const Settings low = loadFrom(R"({"columns": 30, "rows": 1, "iconSize": 10})");
  Settings expected;
  expected.columns = 12;
  expected.rows = 3;
  expected.iconSize = 48.0;
  EXPECT_EQ(low, expected);

  const Settings high = loadFrom(R"({"columns": -5, "rows": 99, "iconSize": 1e300})");
  EXPECT_EQ(high.columns, 4);
  EXPECT_EQ(high.rows, 8);
  EXPECT_EQ(high.iconSize, 160.0);

  // In range, fractional icon sizes and integral floats for counts survive.
  const Settings inRange = loadFrom(R"({"columns": 9.0, "iconSize": 77.25})");
  EXPECT_EQ(inRange.columns, 9);
  EXPECT_EQ(inRange.iconSize, 77.25);

  // Clamping is a decoding rule; memory holds what it is given.
  Settings assigned;
  assigned.columns = 40;
  EXPECT_EQ(assigned.columns, 40);
}

TEST(SettingsDecoding, LayoutModeAloneIsForgiving) {
  for (const char* mode : {R"("grid")", "3", "true", R"({"a": 1})", R"("Scroll")"}) {
    const Settings loaded = loadFrom(std::string(R"({"columns": 9, "layoutMode": )") + mode + "}");
    EXPECT_EQ(loaded.columns, 9) << mode;
    EXPECT_EQ(loaded.layoutMode, LayoutMode::paged) << mode;
  }
  EXPECT_EQ(loadFrom(R"({"layoutMode": "scroll"})").layoutMode, LayoutMode::scroll);
}

TEST(SettingsDecoding, AStrictKeyWithABadValueResetsEverything) {
  const char* const records[] = {
      R"({"columns": 9, "corner": "middle"})",
      R"({"columns": 9, "background": "Glass"})",
      R"({"columns": 9, "cornerModifier": "fn"})",
      R"({"columns": 9, "hotKey": {"keyCode": 49}})",
      R"({"columns": 9, "hotKey": {"carbonModifiers": 256}})",
      R"({"columns": 9, "hotKey": {"keyCode": -1, "carbonModifiers": 256}})",
      R"({"columns": 9, "hotKey": 49})",
      R"({"columns": "9"})",
      R"({"columns": 9.5})",
      R"({"columns": 9, "rows": 18446744073709551615})",
      R"({"columns": 9, "iconSize": "big"})",
      R"({"columns": 9, "animations": 1})",
      R"({"columns": 9, "solidColorHex": 30})",
      R"([9])",
      "not json",
      "",
  };
  for (const char* record : records) EXPECT_EQ(loadFrom(record), Settings()) << record;
}

TEST(SettingsDecoding, ErrorsNameTheFirstBadKey) {
  const auto decoded = Settings::decode(R"({"rows": "x", "corner": "middle", "hotKey": {"keyCode": 1}})");
  ASSERT_FALSE(decoded);
  EXPECT_EQ(decoded.error().kind, DecodingError::Kind::typeMismatch);
  EXPECT_EQ(decoded.error().path, "rows");

  const auto hotKey = Settings::decode(R"({"hotKey": {"keyCode": 1}})");
  ASSERT_FALSE(hotKey);
  EXPECT_EQ(hotKey.error().kind, DecodingError::Kind::keyNotFound);
  EXPECT_EQ(hotKey.error().path, "hotKey.carbonModifiers");
}

TEST(SettingsEncoding, WritesEveryKeyAndTheHotKeyOnlyWhenSet) {
  const nlohmann::json plain = Settings().toJson();
  EXPECT_FALSE(plain.contains("hotKey"));
  EXPECT_EQ(plain.size(), 12u);
  EXPECT_EQ(plain["background"], "blurredWallpaper");
  EXPECT_EQ(plain["layoutMode"], "paged");
  EXPECT_EQ(plain["iconSize"], 116.0);

  const nlohmann::json full = nonDefault().toJson();
  EXPECT_EQ(full.size(), 13u);
  EXPECT_EQ(full["hotKey"], (nlohmann::json{{"keyCode", 49}, {"carbonModifiers", 0x300}}));
  EXPECT_EQ(full["corner"], "bottomRight");
  EXPECT_EQ(full["cornerModifier"], "option");
  EXPECT_EQ(full["background"], "solid");
}

TEST(SettingsEnums, CaseNamesRoundTripInOrder) {
  for (const BackgroundStyle style : allBackgroundStyles)
    EXPECT_EQ(backgroundStyleFromCaseName(caseName(style)), style);
  for (const LayoutMode mode : allLayoutModes) EXPECT_EQ(layoutModeFromCaseName(caseName(mode)), mode);
  EXPECT_EQ(caseName(allBackgroundStyles.front()), "blurredWallpaper");
  EXPECT_EQ(caseName(allLayoutModes.back()), "scroll");
  EXPECT_EQ(backgroundStyleFromCaseName("solid "), std::nullopt);
  EXPECT_EQ(layoutModeFromCaseName(""), std::nullopt);
}

TEST(SettingsSharing, SyncedPartRoundTripsAndPerMachineFieldsStay) {
  EXPECT_EQ(Settings().synced(), SyncedSettings());

  const Settings local = Settings();
  const Settings remote = nonDefault();
  const Settings applied = local.applying(remote.synced());
  EXPECT_EQ(applied.synced(), remote.synced());
  EXPECT_EQ(applied.columns, local.columns);
  EXPECT_EQ(applied.rows, local.rows);
  EXPECT_EQ(applied.iconSize, local.iconSize);
  EXPECT_EQ(applied.launchAtLogin, local.launchAtLogin);
  EXPECT_EQ(applied.firstRunDone, local.firstRunDone);
  EXPECT_EQ(remote.applying(remote.synced()), remote);

  // A hot key removed on another machine is removed here too.
  Settings withoutKey = nonDefault();
  withoutKey.hotKey.reset();
  EXPECT_FALSE(nonDefault().applying(withoutKey.synced()).hotKey);
}

}  // namespace
}  // namespace orrery
