#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "catalog/AppInfo.h"

namespace orrery {
namespace {

TEST(AppInfo, JsonRoundTripLeavesOutAbsentDate) {
  const AppInfo plain{"com.example.mail", "Mail", "/Applications/Mail.app", std::nullopt};
  const nlohmann::json json = plain.toJson();
  EXPECT_EQ(json,
            nlohmann::json::parse(
                R"({"id": "com.example.mail", "name": "Mail", "url": "file:///Applications/Mail.app"})"));
  EXPECT_EQ(AppInfo::fromJson(json).value(), plain);

  AppInfo dated = plain;
  dated.modified = dateFromReferenceSeconds(815'000'000.25);
  EXPECT_DOUBLE_EQ(dated.toJson().at("modified").get<double>(), 815'000'000.25);
  EXPECT_EQ(AppInfo::fromJson(dated.toJson()).value(), dated);
  EXPECT_NE(std::hash<AppInfo>()(plain),
            std::hash<AppInfo>()(AppInfo{plain.id, plain.name, plain.url, Date{}}));

  // null is read as absent, as an optional field should be.
  nlohmann::json withNull = json;
  withNull["modified"] = nullptr;
  EXPECT_EQ(AppInfo::fromJson(withNull).value(), plain);
}

TEST(AppInfo, UrlsEncodeEveryByteAndComeBackExactly) {
  EXPECT_EQ(fileURL("/Applications/Visual Studio 100%.app"),
            "file:///Applications/Visual%20Studio%20100%25.app");
  EXPECT_EQ(fileURL("/Apps/Café#1?.app"), "file:///Apps/Caf%C3%A9%231%3F.app");

  // Linux file names may be any bytes; the JSON must still encode and the
  // path must come back unchanged.
  const std::string odd = std::string("/usr/share/applications/\xff\xfe name.desktop");
  const AppInfo app{"odd", "Odd", odd, std::nullopt};
  const std::string text = app.toJson().dump();
  EXPECT_EQ(AppInfo::fromJson(nlohmann::json::parse(text)).value().url, odd);

  EXPECT_EQ(pathFromFileURL("file:///Applications/Mail.app/"), "/Applications/Mail.app");
  EXPECT_EQ(pathFromFileURL("FILE://localhost/Applications/A%2fB.app"), "/Applications/A/B.app");
  EXPECT_EQ(pathFromFileURL("file:///"), "/");
  for (const char* bad :
       {"/Applications/Mail.app", "http:///Applications", "file://host/Applications", "file://Applications",
        "file:///a%2", "file:///a%zz", "file:///a%00b", "file:///a?b", "file:"})
    EXPECT_FALSE(pathFromFileURL(bad)) << bad;
}

TEST(AppInfo, DecodingNamesTheFaultyKey) {
  const auto decode = [](const char* text) { return AppInfo::fromJson(nlohmann::json::parse(text)); };
  const auto missing = decode(R"({"id": "a", "url": "file:///a"})");
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.error().kind, DecodingError::Kind::keyNotFound);
  EXPECT_EQ(missing.error().path, "name");

  const auto wrongType = decode(R"({"id": 7, "name": "A", "url": "file:///a"})");
  ASSERT_FALSE(wrongType);
  EXPECT_EQ(wrongType.error().kind, DecodingError::Kind::typeMismatch);
  EXPECT_EQ(wrongType.error().path, "id");

  const auto nullName = decode(R"({"id": "a", "name": null, "url": "file:///a"})");
  ASSERT_FALSE(nullName);
  EXPECT_EQ(nullName.error().kind, DecodingError::Kind::valueNotFound);

  const auto badUrl = decode(R"({"id": "a", "name": "A", "url": "/a"})");
  ASSERT_FALSE(badUrl);
  EXPECT_EQ(badUrl.error().path, "url");

  const auto badDate = decode(R"({"id": "a", "name": "A", "url": "file:///a", "modified": "yesterday"})");
  ASSERT_FALSE(badDate);
  EXPECT_EQ(badDate.error().path, "modified");

  EXPECT_FALSE(decode(R"(["a", "A", "file:///a"])"));
}

}  // namespace
}  // namespace orrery
