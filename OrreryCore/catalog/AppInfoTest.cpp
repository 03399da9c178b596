#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "OrreryCore/catalog/AppInfo.h"

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
  using Kind = DecodingError::Kind;
  const struct {
    const char* json;
    Kind kind;
    const char* path;
  } rows[] = {
      {R"({"id": "a", "url": "file:///a"})", Kind::keyNotFound, "name"},
      {R"({"id": 7, "name": "A", "url": "file:///a"})", Kind::typeMismatch, "id"},
      {R"({"id": "a", "name": null, "url": "file:///a"})", Kind::valueNotFound, "name"},
      {R"({"id": "a", "name": "A", "url": "/a"})", Kind::dataCorrupted, "url"},
      {R"({"id": "a", "name": "A", "url": "file:///a", "modified": "yesterday"})", Kind::typeMismatch,
       "modified"},
  };
  for (const auto& row : rows) {
    const auto decoded = AppInfo::fromJson(nlohmann::json::parse(row.json));
    ASSERT_FALSE(decoded) << row.json;
    EXPECT_EQ(decoded.error().kind, row.kind) << row.json;
    EXPECT_EQ(decoded.error().path, row.path) << row.json;
  }
  EXPECT_FALSE(AppInfo::fromJson(nlohmann::json::parse(R"(["a", "A", "file:///a"])")));
}

}  // namespace
}  // namespace orrery
