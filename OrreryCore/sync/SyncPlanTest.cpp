#include "OrreryCore/sync/SyncPlan.h"

#include <gtest/gtest.h>

#include "OrreryCore/sync/FirstSync.h"
#include "OrreryCore/sync/SyncAvailability.h"
#include "OrreryCore/testing/LayoutBuilders.h"

namespace orrery {
namespace {

using std::chrono::seconds;
using testing::app;
using testing::describe;
using testing::folder;
using testing::layoutOf;
using Kind = SyncPlan::Incoming::Kind;

const Uuid kHere = *Uuid::parse("E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
const Uuid kThere = *Uuid::parse("0C247A3E-C36C-495A-93FC-E621E1F86E5F");
const Date kNow = dateFromReferenceSeconds(800'000'000);

SharedSnapshot snapshot(Layout layout, double modified, Uuid writer = kThere) {
  SharedSnapshot s;
  s.layout = std::move(layout);
  s.modified = dateFromReferenceSeconds(modified);
  s.writer = writer;
  return s;
}

AppIDSet apps(std::size_t count) {
  AppIDSet ids;
  for (std::size_t i = 0; i < count; ++i) ids.insert("app" + std::to_string(i));
  return ids;
}

TEST(SyncPlanIncoming, WithoutABaseAskOrAdopt) {
  const SharedSnapshot local = snapshot(layoutOf({app("a")}), 500, kHere);
  const SharedSnapshot remote = snapshot(layoutOf({app("b")}), 100);
  // Adopted even though the local snapshot is newer.
  EXPECT_EQ(SyncPlan::incoming(std::nullopt, local, remote, false), SyncPlan::Incoming::adoptRemote(remote));
  EXPECT_EQ(SyncPlan::incoming(std::nullopt, local, remote, true), SyncPlan::Incoming::ask(remote));
  EXPECT_EQ(SyncPlan::Incoming::ask(remote).snapshot(), remote);
  EXPECT_FALSE(SyncPlan::Incoming::ask(remote).sendBack());
}

TEST(SyncPlanIncoming, WithABaseMergeAndSendBackOnlyWhatDiffers) {
  const Layout agreed = layoutOf({app("a"), app("b"), app("c")});
  const SharedSnapshot base = snapshot(agreed, 100);

  // Nothing changed since the base: merge, nothing to send.
  const auto unchanged = SyncPlan::incoming(base, snapshot(agreed, 100, kHere), snapshot(agreed, 150), false);
  EXPECT_EQ(unchanged.kind(), Kind::merge);
  EXPECT_FALSE(unchanged.sendBack());
  EXPECT_EQ(unchanged.snapshot().modified, dateFromReferenceSeconds(150));
  EXPECT_EQ(unchanged.snapshot().writer, kHere);

  // Only the remote side changed: its content, nothing to send back.
  Layout remoteLayout = agreed;
  remoteLayout.hide("b");
  const auto remoteOnly =
      SyncPlan::incoming(base, snapshot(agreed, 100, kHere), snapshot(remoteLayout, 200), true);
  EXPECT_FALSE(remoteOnly.sendBack());
  EXPECT_EQ(remoteOnly.snapshot().layout, remoteLayout);

  // Both changed: the merged result goes back; a settings change alone too.
  Layout localLayout = agreed;
  localLayout.move(0, 2);
  const auto both =
      SyncPlan::incoming(base, snapshot(localLayout, 300, kHere), snapshot(remoteLayout, 200), true);
  EXPECT_TRUE(both.sendBack());
  EXPECT_EQ(describe(both.snapshot().layout), "c a | hidden: b");
  EXPECT_EQ(both.snapshot().format, 1);
  EXPECT_EQ(both.snapshot().modified, dateFromReferenceSeconds(300));
  SharedSnapshot settingsOnly = snapshot(agreed, 300, kHere);
  settingsOnly.settings.animations = false;
  EXPECT_TRUE(SyncPlan::incoming(base, settingsOnly, snapshot(agreed, 200), false).sendBack());
}

TEST(SyncPlan, SameContentIgnoresFormatTimeAndWriter) {
  SharedSnapshot a = snapshot(layoutOf({app("a")}, {"h"}), 100, kHere);
  SharedSnapshot b = snapshot(layoutOf({app("a")}, {"h"}), 900, kThere);
  b.format = 0;
  EXPECT_TRUE(SyncPlan::sameContent(a, b));
  b.layout.version = 2;
  EXPECT_FALSE(SyncPlan::sameContent(a, b));
  b.layout.version = 1;
  b.settings.corner = Corner::topLeft;
  EXPECT_FALSE(SyncPlan::sameContent(a, b));
}

TEST(SyncPlan, RemoteWinsConflictOnlyWhenTheTieBreakDecidedSomething) {
  const Layout agreed = layoutOf({app("a"), app("b"), app("c")});
  const SharedSnapshot base = snapshot(agreed, 100);
  Layout localLayout = agreed;
  localLayout.move(0, 2);  // b c a
  Layout remoteLayout = agreed;
  remoteLayout.move(2, 0);  // c a b
  Layout remoteHid = agreed;
  remoteHid.hide("b");

  // Both reordered: the remote order overrides the local one.
  EXPECT_TRUE(
      SyncPlan::remoteWinsConflict(base, snapshot(localLayout, 200, kHere), snapshot(remoteLayout, 200)));
  // The local side is newer: never.
  EXPECT_FALSE(
      SyncPlan::remoteWinsConflict(base, snapshot(localLayout, 201, kHere), snapshot(remoteLayout, 200)));
  // Changes that do not touch each other: no conflict.
  EXPECT_FALSE(
      SyncPlan::remoteWinsConflict(base, snapshot(localLayout, 100, kHere), snapshot(remoteHid, 200)));
  // Only one side changed: whichever side counts as newer, the merge is the same.
  EXPECT_FALSE(SyncPlan::remoteWinsConflict(base, snapshot(agreed, 100, kHere), snapshot(remoteLayout, 200)));
  EXPECT_FALSE(SyncPlan::remoteWinsConflict(base, snapshot(localLayout, 100, kHere), snapshot(agreed, 200)));
}

TEST(SyncPlan, KeepingLocalArrangementKeepsOtherMachinesApps) {
  // "x" and "y" are installed elsewhere only; here the user reordered.
  const Layout remote = layoutOf({app("a"), app("x"), folder("F", {"b", "y"}), app("c")});
  const Layout localVisible = layoutOf({app("c"), app("b"), app("a")});
  const Layout kept = SyncPlan::keepingLocalArrangement(remote, localVisible, {"a", "b", "c"});
  EXPECT_EQ(describe(kept), "c [F: b y] a x");
}

TEST(SyncPlan, MaySendShared) {
  const SharedSnapshot base = snapshot(layoutOf({}), 1);
  EXPECT_TRUE(SyncPlan::maySendShared(std::nullopt, SyncPlan::RemoteShared::none));
  EXPECT_TRUE(SyncPlan::maySendShared(base, SyncPlan::RemoteShared::none));
  EXPECT_FALSE(SyncPlan::maySendShared(std::nullopt, SyncPlan::RemoteShared::readable));
  EXPECT_TRUE(SyncPlan::maySendShared(base, SyncPlan::RemoteShared::readable));
  EXPECT_FALSE(SyncPlan::maySendShared(base, SyncPlan::RemoteShared::unreadable));
}

TEST(SyncPlanReports, WhenToUpload) {
  const DeviceReport last{kHere, apps(20), kNow - seconds(3600)};
  const DeviceReport dayOld{kHere, apps(20), kNow - SyncPlan::reportRefresh};
  using Decision = SyncPlan::ReportDecision;

  EXPECT_FALSE(SyncPlan::shouldUploadReport(last, {}, kNow));
  EXPECT_FALSE(SyncPlan::shouldUploadReport(std::nullopt, {}, kNow));
  EXPECT_TRUE(SyncPlan::shouldUploadReport(std::nullopt, apps(1), kNow));
  EXPECT_TRUE(SyncPlan::shouldUploadReport(last, apps(21), kNow));
  EXPECT_FALSE(SyncPlan::shouldUploadReport(last, apps(20), kNow));
  EXPECT_TRUE(SyncPlan::shouldUploadReport(dayOld, apps(20), kNow));

  struct Case {
    std::optional<std::int64_t> previousCount;
    std::size_t installed;
    bool confirmed;
    Decision expected;
  };
  for (const Case& c : {Case{20, 9, false, Decision::needsConfirmation}, Case{19, 9, false, Decision::upload},
                        Case{20, 10, false, Decision::upload}, Case{20, 9, true, Decision::upload},
                        Case{500, 1, true, Decision::upload}, Case{std::nullopt, 1, false, Decision::upload},
                        Case{500, 0, true, Decision::skip}}) {
    EXPECT_EQ(SyncPlan::reportDecision(std::nullopt, c.previousCount, apps(c.installed), c.confirmed, kNow),
              c.expected)
        << c.previousCount.value_or(-1) << " then " << c.installed;
  }
  EXPECT_EQ(SyncPlan::reportDecision(last, 20, apps(20), false, kNow), Decision::skip);
  EXPECT_EQ(SyncPlan::reportDecision(dayOld, 20, apps(20), false, kNow), Decision::upload);
}

TEST(SyncPlanPruning, OnlyWhenEveryActiveMachineReported) {
  const Layout shared = layoutOf({app("mine"), folder("F", {"theirs", "dead"}), app("gone")}, {"ghost"});
  const DeviceReport theirReport{kThere, {"theirs"}, kNow - seconds(3600)};
  const Writers writers{{kHere, kNow - seconds(60)}, {kThere, kNow - seconds(10 * 86'400)}};
  const AppIDSet mine{"mine"};

  EXPECT_EQ(SyncPlan::pruned(std::nullopt, {theirReport}, mine, writers, kHere, kNow), std::nullopt);
  // The other machine wrote 10 days ago and has no report within 30 days.
  const DeviceReport stale{kThere, {"theirs"}, kNow - DeviceReports::window};
  EXPECT_EQ(SyncPlan::pruned(shared, {stale}, mine, writers, kHere, kNow), std::nullopt);
  EXPECT_EQ(SyncPlan::pruned(shared, {}, mine, writers, kHere, kNow), std::nullopt);

  // With its report: what neither it nor this machine lists goes; F keeps one
  // app and becomes that app.
  const auto pruned = SyncPlan::pruned(shared, {theirReport}, mine, writers, kHere, kNow);
  ASSERT_TRUE(pruned);
  EXPECT_EQ(describe(*pruned), "mine theirs");
  // Once its last write is 30 days old, its missing report no longer blocks
  // (then only this machine's apps and live reports count).
  const Writers oldWriters{{kThere, kNow - DeviceReports::window}};
  EXPECT_EQ(SyncPlan::pruned(shared, {DeviceReport{kHere, {"mine", "theirs"}, kNow}}, mine, oldWriters, kHere,
                             kNow),
            pruned);
  // Without any counting report nothing is pruned, even with no writers.
  EXPECT_EQ(SyncPlan::pruned(shared, {}, mine, {}, kHere, kNow), std::nullopt);
  // Nothing to remove: nothing.
  EXPECT_EQ(SyncPlan::pruned(*pruned, {theirReport}, mine, writers, kHere, kNow), std::nullopt);
}

TEST(FirstSync, Decide) {
  EXPECT_EQ(decideFirstSync(false, false), FirstSync::uploadLocal);
  EXPECT_EQ(decideFirstSync(false, true), FirstSync::uploadLocal);
  EXPECT_EQ(decideFirstSync(true, false), FirstSync::adoptRemote);
  EXPECT_EQ(decideFirstSync(true, true), FirstSync::ask);
}

TEST(SyncAvailability, DecideInOrder) {
  EXPECT_EQ(decideSyncAvailability(false, true, false), SyncAvailability::unavailableInBuild);
  EXPECT_EQ(decideSyncAvailability(true, std::nullopt, false), SyncAvailability::noAccount);
  EXPECT_EQ(decideSyncAvailability(true, false, true), SyncAvailability::noAccount);
  EXPECT_EQ(decideSyncAvailability(true, true, true), SyncAvailability::restricted);
  EXPECT_EQ(decideSyncAvailability(true, true, false), SyncAvailability::available);
  EXPECT_EQ(availabilityText(SyncAvailability::available), std::nullopt);  // nothing to explain
}

}  // namespace
}  // namespace orrery
