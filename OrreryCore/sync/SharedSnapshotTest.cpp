#include "OrreryCore/sync/SharedSnapshot.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "OrreryCore/testing/LayoutBuilders.h"

namespace orrery {
namespace {

using nlohmann::json;
using testing::app;
using testing::describe;
using testing::folder;
using testing::layoutOf;

const Uuid kLocal = *Uuid::parse("e621e1f8-c36c-495a-93fc-0c247a3e6e5f");
const Uuid kRemote = *Uuid::parse("0C247A3E-C36C-495A-93FC-E621E1F86E5F");

SharedSnapshot snapshot(Layout layout, double modified, Uuid writer) {
  SharedSnapshot s;
  s.layout = std::move(layout);
  s.modified = dateFromReferenceSeconds(modified);
  s.writer = writer;
  return s;
}

TEST(SharedSnapshot, RoundTripsInItsWireForm) {
  SharedSnapshot s = snapshot(layoutOf({app("com.a"), folder("Games", {"com.b", "com.c"})}, {"com.h"}),
                              795'000'000.75, kLocal);
  s.settings.hotKey = HotKey{49, 256};
  const std::string bytes = s.encoded();
  EXPECT_EQ(SharedSnapshot::decode(bytes), s);

  const json encoded = json::parse(bytes);
  EXPECT_EQ(encoded["format"], 1);
  EXPECT_EQ(encoded["modified"], 795'000'000.75);
  EXPECT_EQ(encoded["writer"], "E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
  EXPECT_EQ(encoded["layout"], s.layout.toJson());
  EXPECT_EQ(encoded["settings"], s.settings.toJson());
}

TEST(SharedSnapshot, UnreadableAndNewerFormatsDecodeToNothing) {
  const json good = json::parse(snapshot(layoutOf({app("com.a")}), 1, kLocal).encoded());
  const auto with = [&](const char* key, json value) {
    json changed = good;
    if (value.is_discarded()) {
      changed.erase(key);
    } else {
      changed[key] = std::move(value);
    }
    return SharedSnapshot::decode(changed.dump());
  };
  EXPECT_TRUE(with("format", 0));
  EXPECT_TRUE(with("format", 1));
  EXPECT_TRUE(with("writer", "e621e1f8-c36c-495a-93fc-0c247a3e6e5f"));
  EXPECT_FALSE(with("format", 2));
  EXPECT_FALSE(with("format", 17));
  EXPECT_FALSE(with("format", 1.5));
  const json missing(json::value_t::discarded);
  for (const char* key : {"format", "layout", "settings", "modified", "writer"}) {
    EXPECT_FALSE(with(key, missing)) << key;
    EXPECT_FALSE(with(key, nullptr)) << key;
  }
  EXPECT_FALSE(with("writer", "device-1"));
  EXPECT_FALSE(with("modified", "today"));
  EXPECT_FALSE(with("layout", json{{"version", 1}, {"items", json::array()}}));
  EXPECT_FALSE(with("settings", json{{"corner", "middle"}}));
  EXPECT_FALSE(SharedSnapshot::decode("{\"format\": 1"));
  EXPECT_FALSE(SharedSnapshot::decode(""));
}

TEST(SharedSnapshot, MergedFavoursTheRemoteSideOnEqualTimes) {
  const Layout baseLayout = layoutOf({app("a"), app("b"), app("c")});
  SharedSnapshot base = snapshot(baseLayout, 100, kRemote);
  Layout localLayout = baseLayout;
  localLayout.move(0, 2);  // b c a
  SharedSnapshot local = snapshot(localLayout, 200, kLocal);
  local.settings.solidColorHex = "#000000";
  local.settings.animations = false;
  Layout remoteLayout = baseLayout;
  remoteLayout.move(2, 0);  // c a b
  SharedSnapshot remote = snapshot(remoteLayout, 200, kRemote);
  remote.settings.solidColorHex = "#FFFFFF";
  remote.settings.corner = Corner::bottomRight;

  // Equal times: remote counts as newer in the arrangement and the settings;
  // one-sided changes survive either way.
  const SharedSnapshot tie = SharedSnapshot::merged(base, local, remote);
  EXPECT_EQ(describe(tie.layout), "c a b");
  EXPECT_EQ(tie.settings.solidColorHex, "#FFFFFF");
  EXPECT_EQ(tie.settings.corner, Corner::bottomRight);
  EXPECT_FALSE(tie.settings.animations);
  EXPECT_EQ(tie.format, SharedSnapshot::currentFormat);
  EXPECT_EQ(tie.modified, dateFromReferenceSeconds(200));
  EXPECT_EQ(tie.writer, kLocal);

  local.modified = dateFromReferenceSeconds(201);
  const SharedSnapshot localNewer = SharedSnapshot::merged(base, local, remote);
  EXPECT_EQ(describe(localNewer.layout), "b c a");
  EXPECT_EQ(localNewer.settings.solidColorHex, "#000000");
  EXPECT_EQ(localNewer.settings.corner, Corner::bottomRight);
  EXPECT_EQ(localNewer.modified, dateFromReferenceSeconds(201));
}

}  // namespace
}  // namespace orrery
