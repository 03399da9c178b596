#include "OrreryCore/sync/SyncState.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "OrreryCore/testing/LayoutBuilders.h"

namespace orrery {
namespace {

using nlohmann::json;
using testing::app;
using testing::folder;
using testing::layoutOf;

const Uuid kDevice = *Uuid::parse("e621e1f8-c36c-495a-93fc-0c247a3e6e5f");
const Uuid kOther = *Uuid::parse("0C247A3E-C36C-495A-93FC-E621E1F86E5F");

SharedSnapshot snapshot() {
  SharedSnapshot s;
  s.layout = layoutOf({app("com.a"), folder("Games", {"com.b", "com.c"})}, {"com.h"});
  s.settings.corner = Corner::topLeft;
  s.modified = dateFromReferenceSeconds(795'000'000.5);
  s.writer = kOther;
  return s;
}

SyncState everyField() {
  SyncState state;
  state.enabled = true;
  state.deviceID = kDevice;
  state.base = snapshot();
  state.userEdited = true;
  state.localModified = dateFromReferenceSeconds(795'000'100.25);
  state.lastSync = dateFromReferenceSeconds(795'000'200);
  state.engineState = std::vector<std::uint8_t>{0, 1, 2, 250, 255};
  state.writers = {{kOther, dateFromReferenceSeconds(795'000'000.5)}, {kDevice, dateFromReferenceSeconds(7)}};
  state.lastReportedCount = 42;
  return state;
}

TEST(SyncState, FreshRecordAndMissingKeys) {
  const SyncState a, b;
  EXPECT_NE(a.deviceID, b.deviceID);
  // Only what is set is written; every key is the field's name. Sync is off,
  // and the local arrangement counts as older than any other (1900).
  const json encoded = json::parse(a.encoded());
  EXPECT_EQ(encoded, (json{{"enabled", false},
                           {"deviceID", a.deviceID.text()},
                           {"userEdited", false},
                           {"localModified", -3'187'296'000.0},
                           {"writers", json::object()}}));
  EXPECT_EQ(SyncState::decode(a.encoded()), a);

  // Missing keys keep the fresh values, with an identity of its own.
  const auto empty = SyncState::decode("{}");
  ASSERT_TRUE(empty);
  EXPECT_FALSE(empty->deviceID.isNil());
  SyncState expected = a;
  expected.deviceID = empty->deviceID;
  EXPECT_EQ(*empty, expected);
  const auto some = SyncState::decode(R"({"enabled": true, "deviceID": "e621e1f8-c36c-495a-93fc-0c247a3e6e5f",
                                          "lastSync": null})");
  ASSERT_TRUE(some);
  EXPECT_TRUE(some->enabled);
  EXPECT_EQ(some->deviceID, kDevice);
  EXPECT_FALSE(some->lastSync);
}

TEST(SyncState, EveryFieldRoundTripsInItsWireForm) {
  const SyncState state = everyField();
  const std::string bytes = state.encoded();
  const auto decoded = SyncState::decode(bytes);
  ASSERT_TRUE(decoded);
  EXPECT_EQ(*decoded, state);

  const json encoded = json::parse(bytes);
  EXPECT_EQ(encoded["deviceID"], "E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
  EXPECT_EQ(encoded["localModified"], 795'000'100.25);
  EXPECT_EQ(encoded["engineState"], "AAEC+v8=");
  EXPECT_EQ(encoded["writers"]["0C247A3E-C36C-495A-93FC-E621E1F86E5F"], 795'000'000.5);
  EXPECT_EQ(encoded["base"]["writer"], "0C247A3E-C36C-495A-93FC-E621E1F86E5F");
  // Sorted keys, indented.
  EXPECT_LT(bytes.find("\"base\""), bytes.find("\"deviceID\""));
  EXPECT_LT(bytes.find("\"userEdited\""), bytes.find("\"writers\""));
  EXPECT_NE(bytes.find("\n  \"enabled\": true"), std::string::npos);
}

TEST(SyncState, StrictKeysFailTheRecord) {
  for (const char* bad :
       {R"({"enabled": "yes"})", R"({"enabled": 1})", R"({"deviceID": "not-a-uuid"})", R"({"deviceID": 5})",
        R"({"userEdited": "true"})", R"({"localModified": "2026-01-01"})", "[]", "{", ""}) {
    EXPECT_FALSE(SyncState::decode(bad)) << bad;
  }
}

TEST(SyncState, TolerantKeysAreDroppedAlone) {
  json document = json::parse(everyField().encoded());
  const auto decodeWith = [&](const char* key, json value) {
    json changed = document;
    changed[key] = std::move(value);
    const auto decoded = SyncState::decode(changed.dump());
    EXPECT_TRUE(decoded) << key;
    if (decoded) {
      EXPECT_TRUE(decoded->enabled);
      EXPECT_EQ(decoded->deviceID, kDevice);
    }
    return decoded.value_or(SyncState());
  };

  EXPECT_FALSE(decodeWith("base", json{{"layout", "unknown shape"}}).base);
  json newer = document["base"];
  newer["format"] = 2;
  EXPECT_FALSE(decodeWith("base", newer).base);
  EXPECT_FALSE(decodeWith("lastSync", "yesterday").lastSync);
  EXPECT_FALSE(decodeWith("engineState", "not base64!").engineState);
  EXPECT_FALSE(decodeWith("engineState", 12).engineState);
  EXPECT_FALSE(decodeWith("lastReportedCount", 1.5).lastReportedCount);
  EXPECT_FALSE(decodeWith("lastReportedCount", "12").lastReportedCount);
  EXPECT_EQ(decodeWith("lastReportedCount", 12.0).lastReportedCount, 12);
  EXPECT_TRUE(decodeWith("writers", json::array()).writers.empty());
  // One bad entry empties the whole map rather than keeping half of it.
  json writers = document["writers"];
  writers["not a uuid"] = 5;
  EXPECT_TRUE(decodeWith("writers", writers).writers.empty());
  writers = document["writers"];
  writers[kOther.text()] = "late";
  EXPECT_TRUE(decodeWith("writers", writers).writers.empty());
}

TEST(SyncState, Base64) {
  std::vector<std::uint8_t> bytes;
  for (int length = 0; length < 40; ++length) {
    const std::string text = encodeBase64(bytes);
    EXPECT_EQ(text.size() % 4, 0u);
    EXPECT_EQ(decodeBase64(text), bytes) << text;
    bytes.push_back(static_cast<std::uint8_t>(length * 37 + 11));
  }
  EXPECT_EQ(encodeBase64({'f', 'o', 'o', 'b'}), "Zm9vYg==");
  for (const char* bad : {"Zm9vYg=", "Zm9v Yg==", "Zm9vYg=a", "Z===", "Zm9-", "=Zm9"})
    EXPECT_FALSE(decodeBase64(bad)) << bad;
}

}  // namespace
}  // namespace orrery
