#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "OrreryCore/overlay/OverlayState.h"
#include "OrreryCore/testing/LayoutBuilders.h"

namespace orrery {
namespace {

using testing::app;
using testing::appInfo;
using testing::appInfos;
using testing::folder;
using testing::layoutOf;
using Ids = std::vector<std::string>;

Layout appsLayout(int count) {
  std::vector<LayoutItem> items;
  for (int i = 0; i < count; ++i) items.push_back(app("app" + std::to_string(i)));
  return layoutOf(std::move(items));
}

Ids ids(std::span<const LayoutItem> items) {
  Ids out;
  for (const LayoutItem& item : items) out.push_back(item.appID() ? *item.appID() : item.asFolder()->name);
  return out;
}

Ids ids(const AppSearch::Results& apps) {
  Ids out;
  for (const AppInfo& info : apps) out.push_back(info.id);
  return out;
}

TEST(OverlayStatePaging, PagesSplitTopLevelItems) {
  OverlayState empty(Layout{}, {}, 7, 5);
  EXPECT_EQ(empty.pageCount(), 1);
  EXPECT_TRUE(empty.items(0).empty());
  empty.goTo(5);
  EXPECT_EQ(empty.page(), 0);

  EXPECT_EQ(OverlayState(appsLayout(35), {}, 7, 5).pageCount(), 1);
  OverlayState spill(appsLayout(36), {}, 7, 5);
  EXPECT_EQ(spill.pageCount(), 2);
  EXPECT_EQ(ids(spill.items(1)), Ids{"app35"});
  EXPECT_TRUE(spill.items(2).empty());
  EXPECT_TRUE(spill.items(-1).empty());
  spill.goTo(9);
  EXPECT_EQ(spill.page(), 1);
  spill.goTo(-2);
  EXPECT_EQ(spill.page(), 0);

  // A folder takes one slot however many apps it holds; bad counts give one
  // slot per row and column.
  const OverlayState folders(layoutOf({folder("A", {"a", "b", "c"}), app("x"), app("y")}), {}, 1, 2);
  EXPECT_EQ(ids(folders.items(0)), (Ids{"A", "x"}));
  EXPECT_EQ(OverlayState(appsLayout(3), {}, 0, 0).pageCount(), 3);
}

TEST(OverlayStatePaging, UpdatePullsThePageBackOnlyWhenItVanished) {
  OverlayState state(appsLayout(100), {}, 7, 5);  // three pages
  state.goTo(2);
  state.setQuery("ma");
  state.update(appsLayout(200), {}, 7, 5);
  EXPECT_EQ(state.page(), 2);
  state.update(appsLayout(40), {}, 7, 5);
  EXPECT_EQ(state.page(), 1);
  state.update(appsLayout(40), {}, 12, 8);  // everything fits on one page now
  EXPECT_EQ(state.page(), 0);
  EXPECT_EQ(state.query(), "ma");
}

TEST(OverlayStateDeathTest, PageSizeOverflowStopsTheProgram) {
  const std::int64_t big = std::int64_t{1} << 40;
  EXPECT_DEATH(OverlayState(Layout{}, {}, big, big), "overflow");
}

TEST(OverlayStateSearch, SearchesEveryVisibleInstalledAppOnce) {
  const Layout layout =
      layoutOf({app("mail"), folder("Work", {"maps", "ghost", "mail"}), app("shy"), app("music")}, {"shy"});
  const std::vector<AppInfo> installed = {appInfo("mail", "Mail"),     appInfo("maps", "Maps"),
                                          appInfo("music", "Music"),   appInfo("shy", "Mastodon"),
                                          appInfo("loose", "Mahjong"), appInfo("mail", "Mail (old copy)")};
  OverlayState state(layout, installed, 7, 5);

  // Blank query: arrangement order, folder contents at the folder's place;
  // the hidden app, the one not installed ("ghost"), the one standing
  // nowhere ("loose") and the second "mail" are left out.
  EXPECT_EQ(ids(state.searchResults()), (Ids{"mail", "maps", "music"}));

  state.setQuery("ma");
  EXPECT_EQ(ids(state.searchResults()), (Ids{"mail", "maps"}));
  EXPECT_EQ(state.appToLaunchOnEnter()->name, "Mail");  // the first record of an ID wins

  state.setQuery("zzz");
  EXPECT_EQ(state.appToLaunchOnEnter(), std::nullopt);
}

TEST(OverlayStateSearch, FollowsUpdates) {
  OverlayState state(layoutOf({app("a")}), {appInfo("a", "Safari")}, 7, 5);
  state.setQuery("saf");
  const AppSearch::Results before = state.searchResults();

  // A renamed app (same ID, new record) is found under its new name only.
  state.update(layoutOf({app("a")}), {appInfo("a", "Firefox")}, 7, 5);
  EXPECT_TRUE(state.searchResults().empty());
  state.setQuery("fire");
  EXPECT_EQ(ids(state.searchResults()), Ids{"a"});
  // Results taken earlier still read the records they found.
  EXPECT_EQ(before.front().name, "Safari");

  // Hiding it removes it from the search.
  state.update(layoutOf({}, {"a"}), {appInfo("a", "Firefox")}, 7, 5);
  EXPECT_TRUE(state.searchResults().empty());

  // Equality is about what is shown; the search index is derived.
  OverlayState other(layoutOf({app("b")}), appInfos({"b"}), 7, 5);
  other.setQuery("fire");
  other.update(layoutOf({}, {"a"}), {appInfo("a", "Firefox")}, 7, 5);
  EXPECT_EQ(other, state);
}

}  // namespace
}  // namespace orrery
