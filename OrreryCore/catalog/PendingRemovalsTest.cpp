#include <gtest/gtest.h>

#include "OrreryCore/catalog/PendingRemovals.h"
#include "OrreryCore/testing/LayoutBuilders.h"

namespace orrery {
namespace {

using std::chrono::seconds;
using testing::appInfo;
using testing::byID;
using testing::idsOf;

const Date t0 = dateFromReferenceSeconds(800'000'000);

AppInfo at(std::string id, std::string url) {
  AppInfo app = appInfo(std::move(id));
  app.url = std::move(url);
  return app;
}

TEST(PendingRemovals, AMissingAppStaysForTheDelayThenLeaves) {
  PendingRemovals pending;
  const auto previous = byID(testing::appInfos({"a", "b", "c"}));

  auto outcome = pending.evaluate(testing::appInfos({"b", "a"}), previous, {}, t0);
  EXPECT_EQ(idsOf(outcome.installed), (std::vector<std::string>{"b", "a", "c"}));
  EXPECT_EQ(outcome.installed.back(), previous.at("c"));  // its last known record
  EXPECT_EQ(outcome.keep, (AppIDSet{"c"}));
  EXPECT_EQ(outcome.nextCheck, t0 + seconds(20));

  // Later misses keep the first date.
  outcome = pending.evaluate(testing::appInfos({"a", "b"}), previous, {}, t0 + seconds(19));
  EXPECT_EQ(outcome.keep, (AppIDSet{"c"}));
  EXPECT_EQ(outcome.nextCheck, t0 + seconds(20));

  outcome = pending.evaluate(testing::appInfos({"a", "b"}), previous, {}, t0 + seconds(20));
  EXPECT_EQ(outcome, (PendingRemovals::Outcome{testing::appInfos({"a", "b"}), {}, std::nullopt}));
  EXPECT_TRUE(pending.missingSince.empty());
}

TEST(PendingRemovals, AnAppThatComesBackIsForgottenAndStartsAfreshNextTime) {
  PendingRemovals pending;
  const auto previous = byID(testing::appInfos({"a", "b"}));
  pending.evaluate(testing::appInfos({"a"}), previous, {}, t0);

  AppInfo updated = appInfo("b", "B 2");
  auto outcome = pending.evaluate({appInfo("a"), updated}, previous, {}, t0 + seconds(5));
  EXPECT_EQ(outcome.installed, (std::vector<AppInfo>{appInfo("a"), updated}));
  EXPECT_TRUE(outcome.keep.empty());
  EXPECT_FALSE(outcome.nextCheck);
  EXPECT_TRUE(pending.missingSince.empty());

  outcome = pending.evaluate(testing::appInfos({"a"}), previous, {}, t0 + seconds(30));
  EXPECT_EQ(outcome.keep, (AppIDSet{"b"}));
  EXPECT_EQ(outcome.nextCheck, t0 + seconds(50));
}

TEST(PendingRemovals, PendingAppsFollowTheScanInIDOrderWithTheEarliestDue) {
  PendingRemovals pending;
  const auto previous = byID(testing::appInfos({"m", "z", "b", "k"}));
  pending.evaluate(testing::appInfos({"m", "b", "k"}), previous, {}, t0);  // z goes missing first
  // "ghost" is only in the arrangement: kept, but there is no record to list.
  const auto outcome =
      pending.evaluate(testing::appInfos({"m", "new"}), previous, {"ghost", "m"}, t0 + seconds(4));
  EXPECT_EQ(idsOf(outcome.installed), (std::vector<std::string>{"m", "new", "b", "k", "z"}));
  EXPECT_EQ(outcome.keep, (AppIDSet{"b", "ghost", "k", "z"}));
  EXPECT_EQ(outcome.nextCheck, t0 + seconds(20));
}

TEST(PendingRemovals, AppsTrashedOnPurposeLeaveAtOnceWhileTheMarkIsFresh) {
  PendingRemovals pending;
  const auto previous = byID(testing::appInfos({"a", "fresh", "stale", "present"}));
  pending.markIntentionallyRemoved({"fresh", "present"}, t0 - seconds(10));
  pending.markIntentionallyRemoved({"stale"}, t0 - seconds(30));

  auto outcome = pending.evaluate(testing::appInfos({"a", "present"}), previous, {}, t0);
  EXPECT_EQ(idsOf(outcome.installed), (std::vector<std::string>{"a", "present", "stale"}));
  EXPECT_EQ(outcome.keep, (AppIDSet{"stale"}));
  // The used mark is gone, the expired one dropped, the unused fresh one kept.
  EXPECT_EQ(pending.intentionallyRemoved, (std::map<std::string, Date>{{"present", t0 - seconds(10)}}));

  // A newer mark replaces an older one, and a mark also cuts a running delay short.
  pending.markIntentionallyRemoved({"present", "stale"}, t0 + seconds(1));
  EXPECT_EQ(pending.intentionallyRemoved.at("present"), t0 + seconds(1));
  outcome =
      pending.evaluate(testing::appInfos({"a", "present"}), byID(outcome.installed), {}, t0 + seconds(2));
  EXPECT_EQ(idsOf(outcome.installed), (std::vector<std::string>{"a", "present"}));
  EXPECT_TRUE(outcome.keep.empty());
  EXPECT_TRUE(pending.missingSince.empty());
}

// While an installer rewrites /Applications/Tool.app its Info.plist may be
// unreadable for a moment, and the scan names the bundle by its path.
TEST(PendingRemovals, APathNamedBundleAtThePlaceOfAPendingAppIsHeldBack) {
  const std::string path = "/Applications/Tool.app";
  const auto previous = byID({at("com.tool", path), appInfo("a")});

  for (const std::string& url : {path, path + "/", std::string("/Applications/./Tool.app")}) {
    PendingRemovals pending;
    const auto outcome = pending.evaluate({appInfo("a"), at(path, url)}, previous, {}, t0);
    EXPECT_EQ(idsOf(outcome.installed), (std::vector<std::string>{"a", "com.tool"})) << url;
    EXPECT_EQ(outcome.keep, (AppIDSet{"com.tool"}));
  }

  // A new identifier at that place is simply a new app.
  PendingRemovals pending;
  auto outcome = pending.evaluate({appInfo("a"), at("com.tool.v2", path)}, previous, {}, t0);
  EXPECT_EQ(idsOf(outcome.installed), (std::vector<std::string>{"a", "com.tool.v2", "com.tool"}));

  // A path-named app the catalog already knows is not held back, nor one at
  // another place.
  PendingRemovals other;
  outcome =
      other.evaluate({appInfo("a"), at(path, path), at("/Applications/Else.app", "/Applications/Else.app")},
                     previous, {path}, t0);
  EXPECT_EQ(idsOf(outcome.installed),
            (std::vector<std::string>{"a", path, "/Applications/Else.app", "com.tool"}));

  // Once the removal is confirmed, the path-named bundle takes the place.
  outcome = pending.evaluate({appInfo("a"), at(path, path)}, previous, {}, t0 + seconds(5));
  EXPECT_EQ(idsOf(outcome.installed), (std::vector<std::string>{"a", "com.tool"}));
  outcome = pending.evaluate({appInfo("a"), at(path, path)}, previous, {}, t0 + seconds(25));
  EXPECT_EQ(idsOf(outcome.installed), (std::vector<std::string>{"a", path}));
  EXPECT_TRUE(outcome.keep.empty());
}

}  // namespace
}  // namespace orrery
