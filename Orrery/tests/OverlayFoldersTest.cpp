// Folders, hiding, context menus, the keyboard on tiles and sorting by
// name in the overlay's model and controller, without a window system.
#include <QAbstractItemModelTester>
#include <QKeyEvent>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include <QTest>

#include "Orrery/overlay/OverlayController.h"
#include "Orrery/overlay/OverlayModel.h"
#include "Orrery/overlay/PerfRun.h"
#include "Orrery/tests/ManualClock.h"
#include "OrreryCore/storage/MemoryFileSystem.h"
#include "OrreryCore/testing/LayoutBuilders.h"

namespace orrery::app {
namespace {

using orrery::testing::app;
using orrery::testing::appInfo;
using orrery::testing::appInfos;
using orrery::testing::byID;
using orrery::testing::describe;
using orrery::testing::folder;
using orrery::testing::layoutOf;
using Action = OverlayModel::MenuAction;

class OverlayFoldersTest : public ::testing::Test {
 protected:
  void SetUp() override { start(false); }

  void start(bool syncEnabled) {
    model.reset();
    files.writeFile(folderPath / "layout.json", initial.encoded());
    arrangement = std::make_unique<ArrangementController>(LayoutStore(folderPath, files), syncEnabled);
    model = std::make_unique<OverlayModel>(*arrangement);
    QObject::connect(model.get(), &OverlayModel::launchRequested,
                     [this](const AppInfo& chosen) { launched.push_back(chosen.id); });
    // As the program does: the model mirrors every change.
    QObject::connect(arrangement.get(), &ArrangementController::layoutChanged, model.get(),
                     [this] { sync(); });
    sync();
  }

  void sync() { model->sync(arrangement->layout(), apps, settings); }
  const Layout& layout() const { return arrangement->layout(); }
  QString officeID() const { return QString::fromStdString(layout().items[1].asFolder()->id.text()); }
  std::string saved() {
    arrangement->flush();
    return files.readFile(folderPath / "layout.json").value();
  }
  std::vector<QString> menuTitles() const {
    std::vector<QString> titles;
    for (const auto& entry : model->menu()) titles.push_back(entry.title);
    return titles;
  }
  int entry(Action action) const {
    const auto& menu = model->menu();
    for (std::size_t i = 0; i < menu.size(); ++i)
      if (menu[i].action == action) return static_cast<int>(i);
    return -1;
  }

  const std::filesystem::path folderPath = "/data/Orrery";
  const Layout initial = layoutOf(
      {app("terminal"), folder("Office", {"writer", "calc"}), app("files"), app("firefox"), app("zed")});
  OverlayModel::AppMap apps =
      byID({appInfo("firefox", "Firefox"), appInfo("writer", "Writer"), appInfo("calc", "Calc"),
            appInfo("files", "Files"), appInfo("terminal", "Terminal"), appInfo("zed", "Zed")});
  Settings settings;
  MemoryFileSystem files;
  std::unique_ptr<ArrangementController> arrangement;
  std::unique_ptr<OverlayModel> model;
  std::vector<std::string> launched;
};

TEST_F(OverlayFoldersTest, TheTitleCommitsTrimmedOrAsTheDefaultNameAndClosingCommitsIt) {
  model->openFolder(officeID());
  EXPECT_EQ(model->folderNameDraft(), "Office");

  model->setFolderNameDraft(" \t  ");
  model->commitFolderName();
  EXPECT_EQ(layout().items[1].asFolder()->name, Folder::defaultName());
  EXPECT_EQ(model->folderNameDraft(), QString::fromStdString(Folder::defaultName()));

  // Closing without Return keeps what was typed, trimmed, on disk too.
  model->setFolderNameDraft("  Work  ");
  model->closeFolder();
  EXPECT_EQ(model->openFolderID(), "");
  EXPECT_EQ(layout().items[1].asFolder()->name, "Work");
  EXPECT_NE(saved().find("\"name\": \"Work\""), std::string::npos);

  // A draft that normalizes to the stored name changes nothing.
  QSignalSpy edits(arrangement.get(), &ArrangementController::userChanged);
  model->openFolder(officeID());
  model->setFolderNameDraft("Work ");
  model->closeFolder();
  EXPECT_EQ(edits.count(), 0);

  // Opening another folder first closes, and so commits, the open one.
  arrangement->mutate([](Layout& edited) { edited.makeFolder(3, 4, "Two"); });
  model->openFolder(officeID());
  model->setFolderNameDraft("Paper");
  model->openFolder(QString::fromStdString(layout().items[3].asFolder()->id.text()));
  EXPECT_EQ(layout().items[1].asFolder()->name, "Paper");
  EXPECT_EQ(model->folderNameDraft(), "Two");
}

TEST_F(OverlayFoldersTest, ThePanelFollowsEditsOfItsFolderRowByRow) {
  QAbstractItemModelTester tester(&model->folderAppsModel(),
                                  QAbstractItemModelTester::FailureReportingMode::Fatal);
  QSignalSpy resets(&model->folderAppsModel(), &QAbstractItemModel::modelReset);
  QSignalSpy inserted(&model->folderAppsModel(), &QAbstractItemModel::rowsInserted);
  QSignalSpy moved(&model->folderAppsModel(), &QAbstractItemModel::rowsMoved);
  QSignalSpy removed(&model->folderAppsModel(), &QAbstractItemModel::rowsRemoved);
  const Uuid office = layout().items[1].asFolder()->id;

  model->openFolder(officeID());
  EXPECT_EQ(model->folderAppsModel().appIDs(), (std::vector<std::string>{"writer", "calc"}));
  EXPECT_EQ(model->folderAppsModel().index(1).data(FolderAppsModel::NameRole).toString(), "Calc");
  EXPECT_EQ(model->folderColumns(), 2);

  arrangement->mutate([&](Layout& edited) { edited.move("files", office); });
  arrangement->mutate([&](Layout& edited) { edited.moveInFolder(office, 2, 0); });
  EXPECT_EQ(model->folderAppsModel().appIDs(), (std::vector<std::string>{"files", "writer", "calc"}));
  EXPECT_EQ(model->folderColumns(), 3);
  inserted.clear();
  model->removeFromFolder("writer");
  EXPECT_EQ(model->folderAppsModel().appIDs(), (std::vector<std::string>{"files", "calc"}));
  EXPECT_EQ(describe(layout()), "terminal [Office: files calc] writer firefox zed");
  EXPECT_EQ(inserted.count(), 0);
  EXPECT_EQ(moved.count(), 1);
  EXPECT_EQ(resets.count(), 0);

  // Apps in a folder launch like any other, from the mouse or the keyboard.
  EXPECT_TRUE(model->moveFocus(1, 0));  // any arrow enters an open folder
  EXPECT_TRUE(model->moveFocus(1, 0));
  EXPECT_TRUE(model->activateFocused());
  EXPECT_EQ(launched, std::vector<std::string>{"calc"});
}

TEST_F(OverlayFoldersTest, HidingAnAppOfAFolderOfTwoLeavesTheOtherInItsPlace) {
  model->openFolder(officeID());
  model->openFolderAppMenu(1, 10, 10);  // calc
  EXPECT_EQ(menuTitles(), (std::vector<QString>{"Open", "Hide", "Remove from Folder", "Move to Trash …"}));
  model->chooseMenuEntry(entry(Action::hide));

  EXPECT_EQ(describe(layout()), "terminal writer files firefox zed | hidden: calc");
  EXPECT_EQ(model->openFolderID(), "");  // nothing left to show
  EXPECT_FALSE(model->menuOpen());
  model->setQuery("calc");
  EXPECT_EQ(model->resultCount(), 0);
  const std::string file = saved();
  EXPECT_NE(file.find("\"hidden\": [\n    \"calc\"\n  ]"), std::string::npos) << file;
}

TEST_F(OverlayFoldersTest, MenusOfferWhatFitsTheItemAndDoIt) {
  model->openItemMenu(0, 5, 6);
  EXPECT_EQ(menuTitles(), (std::vector<QString>{"Open", "Hide", "Move to Trash …"}));
  EXPECT_FALSE(model->menu()[2].enabled);
  EXPECT_EQ(model->menuX(), 5);
  model->chooseMenuEntry(entry(Action::moveToTrash));  // cannot be chosen yet
  EXPECT_EQ(layout(), initial);
  model->openItemMenu(0, 0, 0);
  model->chooseMenuEntry(entry(Action::open));
  EXPECT_EQ(launched, std::vector<std::string>{"terminal"});

  QSignalSpy renames(model.get(), &OverlayModel::renameRequestChanged);
  model->openItemMenu(1, 0, 0);
  EXPECT_EQ(menuTitles(), (std::vector<QString>{"Open", "Rename", "Dissolve Folder"}));
  model->chooseMenuEntry(entry(Action::rename));
  EXPECT_EQ(model->openFolderID(), officeID());
  EXPECT_EQ(renames.count(), 1);
  EXPECT_TRUE(model->handleEscape());  // the folder
  model->openItemMenu(1, 0, 0);
  EXPECT_TRUE(model->handleEscape());  // a menu goes first
  EXPECT_FALSE(model->menuOpen());
  model->openItemMenu(1, 0, 0);
  model->chooseMenuEntry(entry(Action::dissolveFolder));
  EXPECT_EQ(describe(layout()), "terminal writer calc files firefox zed");

  QSignalSpy sortAsked(model.get(), &OverlayModel::sortRequested);
  model->openGridMenu(0, 0);
  EXPECT_EQ(menuTitles(), std::vector<QString>{"Sort by Name …"});
  model->chooseMenuEntry(0);
  EXPECT_EQ(sortAsked.count(), 1);
  EXPECT_EQ(layout().items[0], app("terminal"));  // the controller asks first

  // Typing closes a menu; no grid menu while searching, but results have
  // theirs, and hiding one takes it out of the results.
  model->openItemMenu(0, 0, 0);
  model->setQuery("fi");  // Files, Firefox
  EXPECT_FALSE(model->menuOpen());
  model->openGridMenu(0, 0);
  EXPECT_FALSE(model->menuOpen());
  model->openMenuAtFocus();  // the result Return would open
  ASSERT_EQ(menuTitles(), (std::vector<QString>{"Open", "Hide", "Move to Trash …"}));
  const std::string best = model->searchResultsModel().results()[0].id;
  model->chooseMenuEntry(entry(Action::hide));
  EXPECT_TRUE(layout().hidden.contains(best));
  ASSERT_EQ(model->resultCount(), 1);
  EXPECT_NE(model->searchResultsModel().results()[0].id, best);
}

TEST_F(OverlayFoldersTest, SortingOffersUndoOnlyWhileNothingElseChangedTheArrangement) {
  const std::string before = saved();
  EXPECT_TRUE(model->canSortByName());
  model->sortByName();
  EXPECT_EQ(describe(layout()), "[Office: calc writer] files firefox terminal zed");
  EXPECT_TRUE(model->canUndoSort());
  model->undoSort();
  EXPECT_EQ(layout(), initial);
  EXPECT_EQ(saved(), before);  // the very bytes
  EXPECT_FALSE(model->canUndoSort());

  // Sorted, then one icon moved: the offer lapses and stays gone.
  QSignalSpy offer(model.get(), &OverlayModel::canUndoSortChanged);
  model->sortByName();
  arrangement->mutate([](Layout& edited) { edited.move(1, 2); });
  EXPECT_FALSE(model->canUndoSort());
  EXPECT_EQ(offer.count(), 2);
  arrangement->mutate([](Layout& edited) { edited.move(2, 1); });  // back to the sorted order
  EXPECT_FALSE(model->canUndoSort());
  const Layout moved = layout();
  model->undoSort();
  EXPECT_EQ(layout(), moved);

  // Sorted, then a scan brings a new app: undoing would lose it.
  model->sortByName();
  ASSERT_TRUE(model->canUndoSort());
  std::vector<AppInfo> installed;
  for (const auto& [id, known] : apps) installed.push_back(known);
  installed.push_back(appInfo("new", "New"));
  arrangement->reconcile(installed, {});
  EXPECT_FALSE(model->canUndoSort());
  model->undoSort();
  EXPECT_EQ(layout().items.back(), app("new"));

  // Nothing to sort while searching.
  model->setQuery("x");
  EXPECT_FALSE(model->canSortByName());
}

TEST_F(OverlayFoldersTest, TheKeyboardWalksThePageAndOpensTheFocusedTile) {
  settings.columns = 2;
  settings.rows = 2;  // terminal Office / files firefox | zed
  sync();
  EXPECT_FALSE(model->moveFocus(1, 0));  // no tile focused: the arrows turn pages
  EXPECT_FALSE(model->moveFocus(0, -1));
  EXPECT_TRUE(model->moveFocus(0, 1));
  EXPECT_EQ(model->focusedIndex(), 0);
  model->moveFocus(0, 1);
  model->moveFocus(1, 0);
  EXPECT_EQ(model->focusedIndex(), 3);
  model->moveFocus(0, 1);  // the bottom of the page holds
  EXPECT_EQ(model->focusedIndex(), 3);
  model->moveFocus(1, 0);  // onto the next page
  EXPECT_EQ(model->focusedIndex(), 4);
  EXPECT_EQ(model->page(), 1);
  model->moveFocus(0, -1);  // up from the top row: back to the search field
  EXPECT_EQ(model->focusedIndex(), -1);

  model->goTo(0);
  model->moveFocus(0, 1);
  model->moveFocus(1, 0);
  EXPECT_TRUE(model->activateFocused());
  EXPECT_EQ(model->openFolderID(), officeID());
  EXPECT_EQ(model->focusedIndex(), -1);

  // Turning the page elsewhere leaves the focus behind.
  model->closeFolder();
  model->moveFocus(0, 1);
  model->goTo(1);
  EXPECT_EQ(model->focusedIndex(), -1);
  EXPECT_FALSE(model->activateFocused());
}

// --- The controller: keys and the sort's confirmation --------------------------------

class OverlayFoldersControllerTest : public OverlayFoldersTest {
 protected:
  void SetUp() override {
    OverlayFoldersTest::SetUp();
    makeController();
  }
  void makeController() {
    controller = std::make_unique<OverlayController>(*model, clock);
    controller->show();
  }
  bool press(int code, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    return controller->handleKey(QKeyEvent(QEvent::KeyPress, code, modifiers));
  }

  testing::ManualClock clock;
  std::unique_ptr<OverlayController> controller;
};

TEST_F(OverlayFoldersControllerTest, SortByNameAsksFirstAndTheAnswerDecides) {
  model->setSearchTop(48);
  EXPECT_EQ(controller->sheetTop(), 108);
  EXPECT_EQ(OverlayController::sortSheetMessage(), "Sort all apps and folders by name?");
  EXPECT_EQ(controller->sortSheetText(),
            "Folders come first, then apps, each from A to Z. You can undo it right afterwards.");

  EXPECT_TRUE(press(Qt::Key_Menu));  // nothing focused: the grid's menu
  EXPECT_TRUE(press(Qt::Key_Return));
  ASSERT_TRUE(controller->sortSheetShown());
  EXPECT_TRUE(press(Qt::Key_Down));  // the sheet takes every key
  EXPECT_EQ(model->focusedIndex(), -1);
  EXPECT_TRUE(press(Qt::Key_Escape));
  EXPECT_FALSE(controller->sortSheetShown());
  EXPECT_TRUE(controller->isVisible());
  EXPECT_EQ(layout(), initial);

  controller->confirmSortByName();
  EXPECT_TRUE(press(Qt::Key_Return));
  EXPECT_EQ(describe(layout()), "[Office: calc writer] files firefox terminal zed");
  EXPECT_TRUE(press(Qt::Key_Z, Qt::ControlModifier));
  EXPECT_EQ(layout(), initial);

  // Hidden, the overlay asks nothing.
  controller->hide();
  controller->confirmSortByName();
  EXPECT_FALSE(controller->sortSheetShown());
}

TEST_F(OverlayFoldersControllerTest, WithSyncOnTheSheetSaysOtherMachinesFollow) {
  controller.reset();
  start(true);
  makeController();
  EXPECT_EQ(controller->sortSheetText(),
            "Folders come first, then apps, each from A to Z. You can undo it right afterwards.\n\n"
            "The arrangement also changes on your other computers.");
}

TEST_F(OverlayFoldersControllerTest, EverythingWorksWithoutAMouse) {
  // Down to the first tile, right to the folder, open it, hide its first app.
  press(Qt::Key_Down);
  press(Qt::Key_Right);
  EXPECT_TRUE(press(Qt::Key_Space));
  ASSERT_EQ(model->openFolderID(), officeID());
  press(Qt::Key_Down);
  EXPECT_TRUE(press(Qt::Key_Menu));
  ASSERT_TRUE(model->menuOpen());
  EXPECT_TRUE(model->menuAtFocus());
  press(Qt::Key_Down);  // "Hide"
  press(Qt::Key_Return);
  EXPECT_EQ(describe(layout()), "terminal calc files firefox zed | hidden: writer");

  // The disabled trash entry is skipped; Esc closes the menu before all else.
  press(Qt::Key_Down);
  press(Qt::Key_Menu);
  press(Qt::Key_Down);
  press(Qt::Key_Down);
  EXPECT_EQ(model->menuIndex(), 0);
  EXPECT_TRUE(press(Qt::Key_Escape));
  EXPECT_FALSE(model->menuOpen());
  EXPECT_TRUE(controller->isVisible());
  EXPECT_TRUE(press(Qt::Key_Return));
  EXPECT_EQ(launched, std::vector<std::string>{"terminal"});
}

TEST_F(OverlayFoldersControllerTest, HidingTheOverlayClosesTheFolderAndKeepsItsTitle) {
  model->openFolder(officeID());
  model->setFolderNameDraft("Papers");
  controller->hide();
  EXPECT_EQ(model->openFolderID(), "");
  EXPECT_EQ(layout().items[1].asFolder()->name, "Papers");
}

// The performance run times the first frame of the largest folder's panel.
TEST_F(OverlayFoldersControllerTest, ThePerformanceRunOpensTheLargestFolder) {
  controller->hide();
  clock.advance(OverlayController::fadeDuration);
  std::vector<std::string> opened;
  QObject::connect(model.get(), &OverlayModel::openFolderIDChanged, [&] {
    if (!model->openFolderID().isEmpty()) opened.push_back(model->openFolderID().toStdString());
  });
  PerfRun run(*controller, *model, QStringLiteral("w"), 2);
  QSignalSpy finished(&run, &PerfRun::finished);
  run.start();
  for (int round = 0; round < 1000 && finished.isEmpty(); ++round) {
    QTest::qWait(10);
    clock.advance(OverlayController::fadeDuration);
  }
  ASSERT_EQ(finished.size(), 1) << "the run did not end";
  std::size_t measured = 0;
  for (const PerfRun::Step& step : run.steps()) measured += step.name == "open folder of 2" ? 1u : 0u;
  EXPECT_EQ(measured, 2u);
  EXPECT_EQ(opened, std::vector<std::string>(2, officeID().toStdString()));
  EXPECT_EQ(model->openFolderID(), "");
}

}  // namespace
}  // namespace orrery::app
