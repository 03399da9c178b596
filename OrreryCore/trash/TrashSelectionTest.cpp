#include <gtest/gtest.h>

#include <vector>

#include "OrreryCore/testing/LayoutBuilders.h"
#include "OrreryCore/trash/TrashSelection.h"

namespace orrery {
namespace {

AppInfo installed(const std::string& id, std::string url) {
  return AppInfo{id, id, std::move(url), std::nullopt};
}

const std::unordered_map<std::string, std::string> deletableApps = {
    {"pages", "/Applications/Pages.app"},
    {"chess", "/Applications/Chess.app"},
    {"notes", "/Applications/Notes.app"},
};

TEST(TrashSelection, SessionsStartWithAtMostThePreselectedApp) {
  TrashSelection selection;
  EXPECT_FALSE(selection.isActive);
  selection.toggle("pages");
  EXPECT_EQ(selection, TrashSelection{});  // inactive: nothing changes

  selection.enter(deletableApps, "pages");
  EXPECT_TRUE(selection.isActive);
  EXPECT_EQ(selection.session, 1);
  EXPECT_EQ(selection.selected, (AppIDSet{"pages"}));
  EXPECT_EQ(selection.url("chess"), "/Applications/Chess.app");
  EXPECT_FALSE(selection.url("safari"));

  selection.enter(deletableApps);
  EXPECT_EQ(selection.session, 2);
  EXPECT_EQ(selection.count(), 0U);

  selection.exit();
  selection.exit();
  EXPECT_EQ(selection.session, 4);
  EXPECT_FALSE(selection.isActive);
  EXPECT_TRUE(selection.deletable.empty());
  EXPECT_FALSE(selection.isDeletable("pages"));
}

TEST(TrashSelection, TogglingAndSelectingAll) {
  TrashSelection selection;
  selection.enter(deletableApps, "safari");  // preselected though it may not be moved
  selection.toggle("pages");
  selection.toggle("chess");
  selection.toggle("pages");
  EXPECT_EQ(selection.selected, (AppIDSet{"safari", "chess"}));
  EXPECT_TRUE(selection.contains("chess"));
  EXPECT_EQ(selection.deletableSelected(), (AppIDSet{"chess"}));

  const std::vector<std::string> everything = {"pages", "notes", "finder", "chess"};
  selection.selectAll(everything);
  EXPECT_EQ(selection.selected, (AppIDSet{"safari", "chess", "pages", "notes"}));
  EXPECT_EQ(selection.deletableSelected(), (AppIDSet{"chess", "pages", "notes"}));

  selection.exit();
  selection.selectAll(everything);
  EXPECT_EQ(selection.count(), 0U);
}

TEST(TrashSelection, RetainForgetsVanishedAndMovedApps) {
  TrashSelection selection;
  selection.enter(deletableApps, "safari");
  selection.selectAll(std::vector<std::string>{"pages", "chess", "notes"});
  const auto session = selection.session;

  selection.retain(testing::byID({
      installed("pages", "/Applications/Pages.app"),
      installed("chess", "/Applications/Games/Chess.app"),  // moved: another bundle now
      installed("safari", "/Applications/Safari.app"),
      // notes is gone
  }));
  EXPECT_EQ(selection.deletable,
            (std::unordered_map<std::string, std::string>{{"pages", "/Applications/Pages.app"}}));
  EXPECT_EQ(selection.selected, (AppIDSet{"pages", "safari"}));
  EXPECT_EQ(selection.session, session);
  EXPECT_TRUE(selection.isActive);

  selection.retain({});
  EXPECT_TRUE(selection.selected.empty());
  EXPECT_TRUE(selection.deletable.empty());
}

}  // namespace
}  // namespace orrery
