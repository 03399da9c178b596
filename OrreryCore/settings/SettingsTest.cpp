#include <gtest/gtest.h>

#include <string>

#include <nlohmann/json.hpp>

#include "OrreryCore/settings/KeyValueStore.h"
#include "OrreryCore/settings/Settings.h"

namespace orrery {
namespace {

Settings loadFrom(const std::string& bytes) {
  MemoryKeyValueStore store;
  store.setData("settings", bytes);
  return Settings::load(store);
}

Settings withColumns(std::int64_t columns) {
  Settings settings;
  settings.columns = columns;
  return settings;
}

Settings nonDefault() {
  return Settings{9,
                  4,
                  64.5,
                  BackgroundStyle::solid,
                  "#ABCDEF",
                  Corner::bottomRight,
                  CornerModifier::option,
                  HotKey{49, HotKey::kCommand | HotKey::kShift},
                  false,
                  false,
                  true,
                  true,
                  LayoutMode::scroll};
}

TEST(SettingsStorage, RoundTripsAndFallsBackToDefaults) {
  MemoryKeyValueStore store;
  EXPECT_EQ(Settings::load(store), Settings());

  nonDefault().save(store);
  EXPECT_EQ(Settings::load(store), nonDefault());

  // A record that cannot be encoded (text that is not UTF-8) leaves the
  // stored one alone.
  Settings broken;
  broken.solidColorHex = "\xff\xfe";
  broken.save(store);
  EXPECT_EQ(store.writeCount(), 1u);
  EXPECT_EQ(Settings::load(store), nonDefault());
}

TEST(SettingsDecoding, MissingKeysAndNullsKeepTheirDefaults) {
  EXPECT_EQ(loadFrom("{}"), Settings());
  EXPECT_EQ(loadFrom(R"({"hotKey": null, "columns": null, "corner": null})"), Settings());
  Settings expected;
  expected.rows = 6;
  expected.animations = false;
  EXPECT_EQ(loadFrom(R"({"rows": 6, "animations": false})"), expected);
}

TEST(SettingsDecoding, NumbersAreClampedIntoTheirRanges) {
  const Settings low = loadFrom(R"({"columns": 30, "rows": 1, "iconSize": 10})");
  Settings expected = withColumns(12);
  expected.rows = 3;
  expected.iconSize = 48.0;
  EXPECT_EQ(low, expected);

  const Settings high = loadFrom(R"({"columns": -5, "rows": 99, "iconSize": 1e300})");
  EXPECT_EQ(high.columns, 4);
  EXPECT_EQ(high.rows, 8);
  EXPECT_EQ(high.iconSize, 160.0);

  // Integral floats count as integers; fractional icon sizes in range stay.
  const Settings inRange = loadFrom(R"({"columns": 9.0, "iconSize": 77.25})");
  EXPECT_EQ(inRange.columns, 9);
  EXPECT_EQ(inRange.iconSize, 77.25);
}

TEST(SettingsDecoding, LayoutModeAloneIsForgiving) {
  for (const char* mode : {R"("grid")", "3", "true", R"({"a": 1})", R"("Scroll")"})
    EXPECT_EQ(loadFrom(std::string(R"({"columns": 9, "layoutMode": )") + mode + "}"), withColumns(9)) << mode;
  EXPECT_EQ(loadFrom(R"({"layoutMode": "scroll"})").layoutMode, LayoutMode::scroll);
}

TEST(SettingsDecoding, AStrictKeyWithABadValueResetsEverything) {
  for (const char* record : {
           R"({"columns": 9, "corner": "middle"})",
           R"({"columns": 9, "background": "Glass"})",
           R"({"columns": 9, "cornerModifier": "fn"})",
           R"({"columns": 9, "hotKey": {"keyCode": 49}})",
           R"({"columns": 9, "hotKey": {"keyCode": -1, "carbonModifiers": 256}})",
           R"({"columns": 9, "hotKey": 49})",
           R"({"columns": "9"})",
           R"({"columns": 9.5})",
           R"({"columns": 9, "rows": 18446744073709551615})",
           R"({"columns": 9, "animations": 1})",
           R"({"columns": 9, "solidColorHex": 30})",
           R"([9])",
           "not json",
       })
    EXPECT_EQ(loadFrom(record), Settings()) << record;

  // The error names the first bad key, for the log.
  const auto decoded = Settings::decode(R"({"rows": "x", "corner": "middle"})");
  ASSERT_FALSE(decoded);
  EXPECT_EQ(decoded.error().kind, DecodingError::Kind::typeMismatch);
  EXPECT_EQ(decoded.error().path, "rows");
}

TEST(SettingsEncoding, WritesTheHotKeyOnlyWhenSet) {
  const nlohmann::json plain = Settings().toJson();
  EXPECT_FALSE(plain.contains("hotKey"));
  EXPECT_EQ(plain.size(), 12u);
  EXPECT_EQ(plain["background"], "blurredWallpaper");

  const nlohmann::json full = nonDefault().toJson();
  EXPECT_EQ(full["hotKey"], (nlohmann::json{{"keyCode", 49}, {"carbonModifiers", 0x300}}));
  EXPECT_EQ(full["cornerModifier"], "option");
}

}  // namespace
}  // namespace orrery
