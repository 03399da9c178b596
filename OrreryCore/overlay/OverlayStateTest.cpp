#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "overlay/OverlayState.h"
#include "testing/LayoutBuilders.h"

namespace orrery {
namespace {

using testing::app;
using testing::appInfo;
using testing::appInfos;
using testing::folder;
using testing::layoutOf;

Layout appsLayout(int count) {
  std::vector<LayoutItem> items;
  for (int i = 0; i < count; ++i) items.push_back(app("app" + std::to_string(i)));
  return layoutOf(std::move(items));
}

std::vector<std::string> ids(std::span<const LayoutItem> items) {
  std::vector<std::string> out;
  for (const LayoutItem& item : items) out.push_back(item.appID() ? *item.appID() : item.asFolder()->name);
  return out;
}

std::vector<std::string> ids(const std::vector<AppInfo>& apps) {
  std::vector<std::string> out;
  for (const AppInfo& info : apps) out.push_back(info.id);
  return out;
}

TEST(OverlayStatePaging, AnEmptyArrangementHasOneEmptyPage) {
  OverlayState state(Layout{}, {}, 7, 5);
  EXPECT_EQ(state.pageCount(), 1);
  EXPECT_TRUE(state.items(0).empty());
  state.goTo(5);
  EXPECT_EQ(state.page(), 0);
  state.goTo(-2);
  EXPECT_EQ(state.page(), 0);
}

TEST(OverlayStatePaging, PagesSplitTopLevelItems) {
  const OverlayState full(appsLayout(35), {}, 7, 5);
  EXPECT_EQ(full.perPage(), 35);
  EXPECT_EQ(full.pageCount(), 1);
  EXPECT_EQ(full.items(0).size(), 35u);

  OverlayState spill(appsLayout(36), {}, 7, 5);
  EXPECT_EQ(spill.pageCount(), 2);
  EXPECT_EQ(ids(spill.items(1)), std::vector<std::string>{"app35"});
  EXPECT_TRUE(spill.items(2).empty());
  EXPECT_TRUE(spill.items(-1).empty());
  spill.goTo(9);
  EXPECT_EQ(spill.page(), 1);

  // A folder takes one slot however many apps it holds.
  const OverlayState folders(layoutOf({folder("A", {"a", "b", "c"}), app("x"), app("y")}), {}, 1, 2);
  EXPECT_EQ(folders.pageCount(), 2);
  EXPECT_EQ(ids(folders.items(0)), (std::vector<std::string>{"A", "x"}));
}

TEST(OverlayStatePaging, BadCountsGiveOneSlotPerPage) {
  const OverlayState state(appsLayout(3), {}, 0, 0);
  EXPECT_EQ(state.perPage(), 1);
  EXPECT_EQ(state.pageCount(), 3);
  EXPECT_EQ(ids(state.items(2)), std::vector<std::string>{"app2"});
  EXPECT_EQ(OverlayState(appsLayout(3), {}, -4, 3).perPage(), 3);
}

TEST(OverlayStatePaging, UpdatePullsThePageBackOnlyWhenItVanished) {
  OverlayState state(appsLayout(100), {}, 7, 5);  // three pages
  state.goTo(2);
  state.setQuery("ma");
  state.update(appsLayout(200), {}, 7, 5);
  EXPECT_EQ(state.page(), 2);
  state.update(appsLayout(40), {}, 7, 5);
  EXPECT_EQ(state.page(), 1);
  state.update(appsLayout(40), {}, 12, 8);  // larger grid: everything on one page
  EXPECT_EQ(state.page(), 0);
  EXPECT_EQ(state.perPage(), 96);
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
  EXPECT_EQ(ids(state.searchResults()), (std::vector<std::string>{"mail", "maps", "music"}));

  state.setQuery("ma");
  EXPECT_EQ(ids(state.searchResults()), (std::vector<std::string>{"mail", "maps"}));
  EXPECT_EQ(state.searchResults().front().name, "Mail");  // the first record of an ID wins
  EXPECT_EQ(state.appToLaunchOnEnter()->id, "mail");

  state.setQuery("zzz");
  EXPECT_TRUE(state.searchResults().empty());
  EXPECT_EQ(state.appToLaunchOnEnter(), std::nullopt);
}

TEST(OverlayStateSearch, FollowsUpdates) {
  OverlayState state(layoutOf({app("a")}), {appInfo("a", "Safari")}, 7, 5);
  state.setQuery("saf");
  EXPECT_EQ(ids(state.searchResults()), std::vector<std::string>{"a"});

  // A renamed app (same ID, new record) is found under its new name only.
  state.update(layoutOf({app("a")}), {appInfo("a", "Firefox")}, 7, 5);
  EXPECT_TRUE(state.searchResults().empty());
  state.setQuery("fire");
  EXPECT_EQ(ids(state.searchResults()), std::vector<std::string>{"a"});

  // Hiding it removes it from the search.
  state.update(layoutOf({}, {"a"}), {appInfo("a", "Firefox")}, 7, 5);
  EXPECT_TRUE(state.searchResults().empty());
}

TEST(OverlayStateSearch, EqualityIgnoresTheDerivedIndex) {
  const Layout layout = layoutOf({app("a"), app("b")});
  OverlayState first(layout, appInfos({"a", "b"}), 7, 5);
  OverlayState second(layoutOf({app("b")}), appInfos({"b"}), 7, 5);
  EXPECT_NE(first, second);
  second.update(layout, appInfos({"a", "b"}), 7, 5);
  EXPECT_EQ(first, second);
  second.setQuery("a");
  EXPECT_NE(first, second);
}

}  // namespace
}  // namespace orrery
