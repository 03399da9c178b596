#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Orrery/overlay/OverlayModel.h"
#include "Orrery/overlay/SwipeTracker.h"
#include "OrreryCore/storage/MemoryFileSystem.h"
#include "OrreryCore/testing/LayoutBuilders.h"

namespace orrery::app {
namespace {

using namespace std::chrono_literals;
using orrery::testing::app;
using orrery::testing::appInfo;
using orrery::testing::byID;
using orrery::testing::folder;
using orrery::testing::layoutOf;

// --- Wheel and touchpad -------------------------------------------------------------

WheelInput touch(WheelInput::Phase phase, double dx) { return {phase, dx, 0, 0ms}; }
WheelInput wheelClick(std::chrono::milliseconds at, double dy = -15) {
  return {WheelInput::Phase::none, 0, dy, at};
}

TEST(SwipeTracker, AGestureTurnsOnePageOnlyPastFiftyPointsAndMomentumNone) {
  using Phase = WheelInput::Phase;
  SwipeTracker tracker;
  EXPECT_EQ(tracker.pageDelta(touch(Phase::began, -20)), std::nullopt);
  EXPECT_EQ(tracker.pageDelta(touch(Phase::updated, -29)), std::nullopt);  // 49 in all
  EXPECT_EQ(tracker.pageDelta(touch(Phase::ended, 0)), std::nullopt);

  EXPECT_EQ(tracker.pageDelta(touch(Phase::began, -25)), std::nullopt);
  EXPECT_EQ(tracker.pageDelta(touch(Phase::updated, -26)), 1);  // 51: the next page
  // However long the fingers go on, and whatever the flick does after.
  for (int i = 0; i < 10; ++i) EXPECT_EQ(tracker.pageDelta(touch(Phase::updated, -80)), std::nullopt);
  EXPECT_EQ(tracker.pageDelta(touch(Phase::momentum, -300)), std::nullopt);

  // A new gesture the other way goes back.
  EXPECT_EQ(tracker.pageDelta(touch(Phase::began, 30)), std::nullopt);
  EXPECT_EQ(tracker.pageDelta(touch(Phase::updated, 30)), -1);
}

TEST(SwipeTracker, WheelClicksCloserThanAPauseTurnOnePage) {
  SwipeTracker close;
  EXPECT_EQ(close.pageDelta(wheelClick(1000ms)), 1);
  EXPECT_EQ(close.pageDelta(wheelClick(1200ms)), std::nullopt);

  SwipeTracker apart;
  EXPECT_EQ(apart.pageDelta(wheelClick(1000ms)), 1);
  EXPECT_EQ(apart.pageDelta(wheelClick(1400ms, 15)), -1);  // turned up: back again
  // A sideways wheel counts when it is the larger movement.
  EXPECT_EQ(apart.pageDelta({WheelInput::Phase::none, -30, 2, 2000ms}), 1);
  EXPECT_EQ(apart.pageDelta({WheelInput::Phase::none, 0, 0, 3000ms}), std::nullopt);
}

// --- The model ----------------------------------------------------------------------

class OverlayModelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    files.writeFile(folderPath / "layout.json", initial.encoded());
    arrangement = std::make_unique<ArrangementController>(LayoutStore(folderPath, files), false);
    model = std::make_unique<OverlayModel>(*arrangement);
    QObject::connect(model.get(), &OverlayModel::launchRequested,
                     [this](const AppInfo& chosen) { launched.push_back(chosen.id); });
    sync();
  }

  void sync() { model->sync(arrangement->layout(), apps, settings); }

  const std::filesystem::path folderPath = "/data/Orrery";
  const Layout initial = layoutOf(
      {app("firefox"), folder("Office", {"writer", "calc"}), app("files"), app("terminal"), app("firewall")});
  OverlayModel::AppMap apps =
      byID({appInfo("firefox", "Firefox"), appInfo("writer", "Writer"), appInfo("calc", "Calc"),
            appInfo("files", "Files"), appInfo("terminal", "Terminal"), appInfo("firewall", "Firewall")});
  Settings settings;
  MemoryFileSystem files;
  std::unique_ptr<ArrangementController> arrangement;
  std::unique_ptr<OverlayModel> model;
  std::vector<std::string> launched;
};

QString folderIDOf(const Layout& layout, std::size_t index) {
  return QString::fromStdString(layout.items[index].asFolder()->id.text());
}

TEST_F(OverlayModelTest, EscClosesAFolderFirstThenLeavesItToTheOverlay) {
  model->openFolder(folderIDOf(arrangement->layout(), 1));
  ASSERT_NE(model->openFolderID(), "");
  EXPECT_TRUE(model->handleEscape());
  EXPECT_EQ(model->openFolderID(), "");
  EXPECT_FALSE(model->handleEscape());

  // Esc never clears the search text.
  model->setQuery("term");
  EXPECT_FALSE(model->handleEscape());
  EXPECT_EQ(model->query(), "term");
}

TEST_F(OverlayModelTest, TypingWhileAFolderIsOpenClosesIt) {
  model->openFolder(folderIDOf(arrangement->layout(), 1));
  QSignalSpy closed(model.get(), &OverlayModel::openFolderIDChanged);
  model->setQuery("w");
  EXPECT_EQ(model->openFolderID(), "");
  EXPECT_EQ(closed.count(), 1);
  EXPECT_FALSE(model->canRearrange());
}

TEST_F(OverlayModelTest, ReturnLaunchesTheBestResultAndNothingWhenNothingMatches) {
  model->setQuery("writ");  // inside a folder, still found
  model->launchOnEnter();
  model->setQuery("zzz");
  model->launchOnEnter();
  EXPECT_EQ(launched, std::vector<std::string>{"writer"});

  model->launch("terminal");
  model->launch("not-installed");
  EXPECT_EQ(launched, (std::vector<std::string>{"writer", "terminal"}));
}

TEST_F(OverlayModelTest, ResultsKeepTheirRowsAndOnlyTheCountChangesAddOrRemove) {
  QAbstractItemModelTester tester(&model->searchResultsModel(),
                                  QAbstractItemModelTester::FailureReportingMode::Fatal);
  QSignalSpy resets(&model->searchResultsModel(), &QAbstractItemModel::modelReset);
  QSignalSpy removed(&model->searchResultsModel(), &QAbstractItemModel::rowsRemoved);
  QSignalSpy inserted(&model->searchResultsModel(), &QAbstractItemModel::rowsInserted);
  QSignalSpy changed(&model->searchResultsModel(), &QAbstractItemModel::dataChanged);

  const auto shown = [&] {
    std::vector<std::string> ids;
    for (const AppInfo& result : model->searchResultsModel().results()) ids.push_back(result.id);
    return ids;
  };
  const auto changedRows = [&] {
    std::vector<int> rows;
    for (const auto& signal : changed)
      for (int row = signal[0].toModelIndex().row(); row <= signal[1].toModelIndex().row(); ++row)
        rows.push_back(row);
    return rows;
  };
  model->setQuery("f");
  EXPECT_EQ(shown(), (std::vector<std::string>{"files", "firefox", "firewall"}));
  removed.clear();
  inserted.clear();
  changed.clear();

  // Files drops out: the rows below move up by data, and only the last row goes.
  model->setQuery("fir");
  EXPECT_EQ(shown(), (std::vector<std::string>{"firefox", "firewall"}));
  EXPECT_EQ(removed.count(), 1);
  EXPECT_EQ(inserted.count(), 0);
  EXPECT_EQ(changedRows(), (std::vector<int>{0, 1}));

  // The same results: nothing to announce.
  changed.clear();
  model->setQuery("fire");
  EXPECT_EQ(removed.count(), 1);
  EXPECT_TRUE(changed.empty());

  // Every result replaced, one fewer: the first row shows the new app.
  changed.clear();
  model->setQuery("calc");
  EXPECT_EQ(shown(), std::vector<std::string>{"calc"});
  EXPECT_EQ(removed.count(), 2);
  EXPECT_EQ(inserted.count(), 0);
  EXPECT_EQ(changedRows(), std::vector<int>{0});

  // One more than before: one row added at the end.
  changed.clear();
  model->setQuery("fire");
  EXPECT_EQ(shown(), (std::vector<std::string>{"firefox", "firewall"}));
  EXPECT_EQ(inserted.count(), 1);
  EXPECT_EQ(changedRows(), std::vector<int>{0});

  model->setQuery("");
  EXPECT_TRUE(shown().empty());
  EXPECT_EQ(resets.count(), 0);

  // A rename by a scan reaches a row that stays.
  model->setQuery("fire");
  apps["firefox"].name = "Firefox Nightly";
  sync();
  EXPECT_EQ(model->searchResultsModel().index(0).data(SearchResultsModel::NameRole).toString(),
            "Firefox Nightly");
}

TEST_F(OverlayModelTest, ResultsFillOnePageBestFirst) {
  settings.columns = 1;
  settings.rows = 2;
  sync();
  model->setQuery("fi");  // Firefox, Files, Firewall
  EXPECT_EQ(model->resultCount(), 2);
  model->launchOnEnter();
  ASSERT_EQ(launched.size(), 1u);
  EXPECT_EQ(launched[0], model->searchResultsModel().results()[0].id);
}

TEST_F(OverlayModelTest, SyncAnnouncesOnlyWhatChanged) {
  QSignalSpy grid(model.get(), &OverlayModel::gridChanged);
  QSignalSpy pages(model.get(), &OverlayModel::pageCountChanged);
  QSignalSpy page(model.get(), &OverlayModel::pageChanged);
  QSignalSpy names(&model->itemsModel(), &QAbstractItemModel::dataChanged);
  sync();
  EXPECT_EQ(grid.count() + pages.count() + page.count() + names.count(), 0);

  // Two items a page: three pages; go to the last, then the grid grows.
  settings.columns = 1;
  settings.rows = 2;
  sync();
  EXPECT_EQ(grid.count(), 1);
  EXPECT_EQ(model->pageCount(), 3);
  model->goTo(7);
  EXPECT_EQ(model->page(), 2);
  settings.columns = 5;
  sync();
  EXPECT_EQ(model->pageCount(), 1);
  EXPECT_EQ(model->page(), 0);  // pulled back to the last page there is

  // An app renamed by a scan: one row's name, nothing else.
  names.clear();
  apps["files"].name = "Dateien";
  sync();
  ASSERT_EQ(names.count(), 1);
  EXPECT_EQ(model->itemsModel().index(2).data(ArrangementListModel::NameRole).toString(), "Dateien");
}

TEST_F(OverlayModelTest, PageModelsFollowTheGridSizeAndTheApps) {
  settings.columns = 2;
  settings.rows = 1;
  sync();
  auto& second = model->pageItemsModel(1);
  QAbstractItemModelTester tester(&second, QAbstractItemModelTester::FailureReportingMode::Fatal);
  const auto names = [&] {
    std::vector<std::string> shown;
    for (int row = 0; row < second.rowCount(); ++row)
      shown.push_back(second.index(row).data(ArrangementListModel::NameRole).toString().toStdString());
    return shown;
  };
  EXPECT_EQ(names(), (std::vector<std::string>{"Files", "Terminal"}));
  EXPECT_EQ(&model->pageItemsModel(1), &second);  // one model per page, kept

  // Three to a page: the second page starts one item later.
  settings.columns = 3;
  sync();
  EXPECT_EQ(names(), (std::vector<std::string>{"Terminal", "Firewall"}));

  apps.at("firewall").name = "Brandmauer";
  sync();
  EXPECT_EQ(names(), (std::vector<std::string>{"Terminal", "Brandmauer"}));
}

TEST_F(OverlayModelTest, AFolderThatGoesAwayCloses) {
  model->openFolder(folderIDOf(arrangement->layout(), 1));
  const Uuid office = arrangement->layout().items[1].asFolder()->id;
  arrangement->mutate([&](Layout& layout) { layout.dissolveFolder(office); });
  sync();
  EXPECT_EQ(model->openFolderID(), "");
}

TEST_F(OverlayModelTest, ScrollingStaysWithinTheContent) {
  settings.layoutMode = LayoutMode::scroll;
  sync();
  EXPECT_TRUE(model->scrollMode());
  model->setViewport(500, 1200);
  model->scroll(model->scrollPageStep() * 3, true);
  EXPECT_EQ(model->scrollOffset(), 700);
  EXPECT_TRUE(model->scrollAnimated());
  model->scroll(-10'000, false);
  EXPECT_EQ(model->scrollOffset(), 0);
  model->scroll(300, false);
  model->setViewport(1000, 1200);  // a taller window leaves less to scroll
  EXPECT_EQ(model->scrollOffset(), 200);
  model->resetScroll();
  EXPECT_EQ(model->scrollOffset(), 0);
}

}  // namespace
}  // namespace orrery::app
