// The overlay's selection mode and the move to the Trash: the model, the
// flow and the catalog together, with a Trash that answers when the test
// says so.
#include <QQuickItem>
#include <QQuickView>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Orrery/catalog/AppCatalog.h"
#include "Orrery/overlay/OverlayController.h"
#include "Orrery/overlay/OverlayModel.h"
#include "Orrery/tests/FakeScanner.h"
#include "Orrery/tests/LogCapture.h"
#include "Orrery/tests/ManualClock.h"
#include "OrreryCore/storage/MemoryFileSystem.h"
#include "OrreryCore/testing/LayoutBuilders.h"

namespace orrery::app {
namespace {

using testing::FakeScanner;
using testing::LogCapture;
using testing::ManualClock;

// The platform's Trash as the flow sees it: it keeps each request until the
// test answers, then "moves" by taking the entries out of the folders the
// scanner reads.
class HeldTrash final : public TrashService {
 public:
  explicit HeldTrash(FakeScanner& scanner) : scanner_(scanner) {}

  void moveToTrash(std::vector<std::string> paths, Completion completion) override {
    requests.push_back({std::move(paths), std::move(completion)});
  }

  // Answers the oldest request; the paths in `failing` stay.
  void answer(const Failures& failing = {}) {
    ASSERT_FALSE(requests.empty());
    Request request = std::move(requests.front());
    requests.erase(requests.begin());
    std::vector<AppInfo> left = scanner_.apps();
    std::erase_if(left, [&](const AppInfo& app) {
      return std::ranges::find(request.paths, app.url) != request.paths.end() && !failing.contains(app.url);
    });
    scanner_.setApps(left);
    // From another thread, as the platform's answer comes.
    std::thread([&] { request.completion(failing); }).join();
  }

  struct Request {
    std::vector<std::string> paths;
    Completion completion;
  };
  std::vector<Request> requests;
  std::vector<std::string> everyPath() const {
    std::vector<std::string> all;
    for (const Request& request : requests) all.insert(all.end(), request.paths.begin(), request.paths.end());
    return all;
  }

 private:
  FakeScanner& scanner_;
};

AppInfo entry(const std::string& id, const std::string& name, const std::string& folder) {
  return AppInfo{id, name, folder + "/" + id, std::nullopt};
}

const std::string userApps = "/home/user/.local/share/applications";

class TrashFlowTest : public ::testing::Test {
 protected:
  void SetUp() override {
    scanner->setApps({
        entry("editor.desktop", "Editor", userApps),
        entry("notes.desktop", "Notes", userApps),
        entry("paint.desktop", "Paint", userApps),
        entry("firefox.desktop", "Firefox", "/usr/share/applications"),
        entry("org.gimp.GIMP.desktop", "GIMP", "/var/lib/flatpak/exports/share/applications"),
        entry("code_code.desktop", "Code", "/var/lib/snapd/desktop/applications"),
        entry("hello.desktop", "Hello", "/nix/store/abc-hello/share/applications"),
        entry("orrery.desktop", "Orrery", userApps),
    });
    arrangement = std::make_unique<ArrangementController>(
        LayoutStore(folderPath, files, [this] { return clock.now(); }), false);
    catalog = std::make_unique<AppCatalog>(scanner, *arrangement, clock);
    model = std::make_unique<OverlayModel>(*arrangement);
    const auto sync = [this] { model->sync(arrangement->layout(), catalog->apps(), settings); };
    QObject::connect(catalog.get(), &AppCatalog::changed, sync);
    QObject::connect(arrangement.get(), &ArrangementController::layoutChanged, sync);
    QObject::connect(model.get(), &OverlayModel::launchRequested,
                     [this](const AppInfo& app) { launched.push_back(app.id); });
    TrashFlow& flow = model->trashFlow();
    flow.setService(&trash);
    flow.setParentWritable([](const std::string& folder) { return folder == userApps; });
    flow.setRunningProbe([this](const std::vector<AppInfo>&) { return running; });
    flow.setOverlayShown([this] { return shown; });
    flow.setOnRemoved([this](const AppIDSet& ids) { catalog->removeIntentionally(ids); });
    flow.setStandaloneAlert([this](const QString& title, const QString& message) {
      standalone.push_back(title + "\n" + message);
    });
    catalog->start();
    settle();
  }

  void TearDown() override {
    scanner->release();
    model.reset();
    catalog.reset();
  }

  void settle() {
    ASSERT_TRUE(QTest::qWaitFor([this] { return !catalog->isScanning(); }, 10'000))
        << "a scan never finished";
  }
  // Lets the Trash's answer reach the main thread, and the rescan finish.
  void deliver() {
    QCoreApplication::processEvents();
    settle();
    QCoreApplication::processEvents();
  }
  std::vector<std::string> inGrid() const {
    std::vector<std::string> ids;
    for (const LayoutItem& item : arrangement->layout().items)
      if (item.appID()) ids.push_back(*item.appID());
    return ids;
  }
  bool inGrid(const std::string& id) const {
    const std::vector<std::string> ids = inGrid();
    return std::ranges::find(ids, id) != ids.end();
  }
  TrashFlow& flow() { return model->trashFlow(); }
  void tick(std::initializer_list<const char*> ids) {
    for (const char* id : ids) model->launch(QString::fromUtf8(id));
  }

  ManualClock clock;
  MemoryFileSystem files;
  const std::filesystem::path folderPath = "/home/user/.local/share/Orrery";
  std::shared_ptr<FakeScanner> scanner = std::make_shared<FakeScanner>();
  HeldTrash trash{*scanner};
  Settings settings;
  std::unique_ptr<ArrangementController> arrangement;
  std::unique_ptr<AppCatalog> catalog;
  std::unique_ptr<OverlayModel> model;
  AppIDSet running;
  bool shown = true;
  std::vector<std::string> launched;
  std::vector<QString> standalone;
  LogCapture log;
};

TEST_F(TrashFlowTest, ProtectedAppsCanNeitherBeTickedNorReachTheTrash) {
  model->enterSelection("firefox.desktop");
  EXPECT_TRUE(flow().selecting());
  EXPECT_EQ(flow().selectedCount(), 0) << "a system app is not preselected";
  tick({"editor.desktop", "firefox.desktop", "org.gimp.GIMP.desktop", "code_code.desktop", "hello.desktop",
        "orrery.desktop", "notes.desktop"});
  EXPECT_TRUE(launched.empty()) << "a click ticks while selecting";
  EXPECT_EQ(model->selection().selected, (AppIDSet{"editor.desktop", "notes.desktop"}));
  for (const char* id : {"firefox.desktop", "org.gimp.GIMP.desktop", "code_code.desktop", "hello.desktop"})
    EXPECT_EQ(flow().protectedReason(QString::fromUtf8(id)), QStringLiteral("Installed by the system")) << id;
  EXPECT_EQ(flow().protectedReason("orrery.desktop"), QStringLiteral("This is the launcher itself"));
  EXPECT_EQ(flow().protectedReason("editor.desktop"), QString());

  model->requestTrash();
  ASSERT_TRUE(flow().sheetShown());
  EXPECT_EQ(flow().sheetTitle(), QStringLiteral("Move 2 apps to the Trash?"));
  flow().finishSheet(true);
  EXPECT_EQ(trash.everyPath(),
            (std::vector<std::string>{userApps + "/editor.desktop", userApps + "/notes.desktop"}));
}

TEST_F(TrashFlowTest, MovedAppsLeaveTheGridAtOnceAndTheModeEnds) {
  running = {"notes.desktop"};
  model->enterSelection("editor.desktop");
  tick({"notes.desktop"});
  EXPECT_FALSE(model->canRearrange());
  model->requestTrash();
  EXPECT_TRUE(flow().sheetMessage().contains(QStringLiteral("Still open: Notes.")));
  flow().finishSheet(true);
  EXPECT_TRUE(model->isTrashing());
  EXPECT_EQ(flow().moveLabel(), QStringLiteral("Moving to Trash …"));

  trash.answer();
  deliver();
  // No 20 s of grace and no confirming scan 5 s later: the apps are gone now.
  EXPECT_FALSE(inGrid("editor.desktop"));
  EXPECT_FALSE(inGrid("notes.desktop"));
  EXPECT_TRUE(inGrid("paint.desktop"));
  EXPECT_FALSE(catalog->apps().contains("editor.desktop"));
  EXPECT_FALSE(model->isTrashing());
  EXPECT_FALSE(flow().selecting());
  EXPECT_TRUE(model->canRearrange());
  EXPECT_FALSE(flow().failureShown());
  EXPECT_TRUE(standalone.empty());
}

TEST_F(TrashFlowTest, ConfirmingWhileAMoveRunsDoesNothing) {
  model->enterSelection("editor.desktop");
  model->requestTrash();
  flow().finishSheet(true);
  ASSERT_EQ(trash.requests.size(), 1u);

  // A new session while the first move runs: no sheet, no second move.
  model->enterSelection("paint.desktop");
  model->requestTrash();
  EXPECT_FALSE(flow().sheetShown());
  flow().finishSheet(true);
  EXPECT_EQ(trash.requests.size(), 1u);

  // The first move's answer belongs to the session that ended: the new one
  // goes on, with its tick.
  trash.answer();
  deliver();
  EXPECT_FALSE(inGrid("editor.desktop"));
  EXPECT_TRUE(flow().selecting());
  EXPECT_TRUE(model->selection().contains("paint.desktop"));
  model->requestTrash();
  EXPECT_TRUE(flow().sheetShown()) << "once the move is over, the next may start";
}

TEST_F(TrashFlowTest, AMoveInWhichEveryAppFailedLeavesTheArrangementAndReports) {
  const std::vector<std::string> before = inGrid();
  model->enterSelection("editor.desktop");
  tick({"notes.desktop"});
  model->requestTrash();
  flow().finishSheet(true);
  trash.answer({{userApps + "/editor.desktop", {TrashFailure::Kind::other, "Its file system has no Trash."}},
                {userApps + "/notes.desktop", {TrashFailure::Kind::systemOwned, {}}}});
  deliver();

  EXPECT_EQ(inGrid(), before);
  EXPECT_EQ(catalog->apps().size(), 8u);
  ASSERT_TRUE(flow().failureShown());
  EXPECT_TRUE(flow().failureMessage().startsWith(
      QStringLiteral("Editor: Its file system has no Trash.\nNotes: Owned by the system.\n\n")));
  EXPECT_EQ(flow().failureTitle(), QStringLiteral("Not all apps could be moved to the Trash"));
  EXPECT_TRUE(
      log.containsPrefix("ch.lumenfold.orrery.trash: Papierkorb: Editor: Its file system has no Trash."));
  EXPECT_FALSE(flow().selecting());
  flow().dismissFailure();
  EXPECT_FALSE(flow().failureShown());
}

TEST_F(TrashFlowTest, FailuresAfterTheOverlayWentGetAWindowOfTheirOwn) {
  model->enterSelection("editor.desktop");
  tick({"paint.desktop"});
  model->requestTrash();
  flow().finishSheet(true);
  shown = false;
  trash.answer({{userApps + "/paint.desktop", {TrashFailure::Kind::other, "No."}}});
  deliver();
  EXPECT_FALSE(inGrid("editor.desktop")) << "what did move still leaves";
  EXPECT_TRUE(inGrid("paint.desktop"));
  EXPECT_FALSE(flow().failureShown());
  ASSERT_EQ(standalone.size(), 1u);
  EXPECT_EQ(standalone.front(), QStringLiteral("Not all apps could be moved to the Trash\nPaint: No."));
}

TEST_F(TrashFlowTest, EscReturnAndTheSheetsCancelAsTheUserExpects) {
  model->enterSelection("editor.desktop");
  model->launchOnEnter();
  EXPECT_TRUE(launched.empty());
  model->requestTrash();
  flow().finishSheet(false);
  EXPECT_TRUE(trash.requests.empty());
  EXPECT_TRUE(flow().selecting()) << "Cancel keeps the ticks";
  EXPECT_TRUE(model->handleEscape());
  EXPECT_FALSE(flow().selecting());
  EXPECT_FALSE(model->handleEscape());

  // Nothing ticked, nothing asked; and nothing is asked while hidden.
  model->enterSelection();
  model->requestTrash();
  EXPECT_FALSE(flow().sheetShown());
  tick({"editor.desktop"});
  shown = false;
  model->requestTrash();
  EXPECT_FALSE(flow().sheetShown());
}

TEST_F(TrashFlowTest, MakeFolderGathersTheTickedAppsAndOpensTheFolder) {
  model->enterSelection("editor.desktop");
  EXPECT_FALSE(model->canMoveSelectionToFolder());
  tick({"paint.desktop"});
  EXPECT_TRUE(model->canMoveSelectionToFolder());
  model->makeFolderFromSelection();
  EXPECT_FALSE(flow().selecting());
  EXPECT_FALSE(inGrid("editor.desktop"));
  const Folder* made = nullptr;
  for (const LayoutItem& item : arrangement->layout().items)
    if (item.asFolder()) made = item.asFolder();
  ASSERT_NE(made, nullptr);
  const std::string madeID = made->id.text();
  EXPECT_EQ(made->appIDs, (std::vector<std::string>{"editor.desktop", "paint.desktop"}));
  EXPECT_EQ(model->openFolderID().toStdString(), made->id.text());
  const QVariantList folders = model->foldersByName();
  ASSERT_EQ(folders.size(), 1);
  EXPECT_EQ(folders.front().toMap().value("name").toString(), QStringLiteral("New Folder"));

  // "Move to Trash …" on an app of the open folder: the folder stays open
  // and the app is ticked there.
  model->openFolderAppMenu(1, 0, 0);
  ASSERT_EQ(model->menu().back().action, OverlayModel::MenuAction::moveToTrash);
  model->chooseMenuEntry(static_cast<int>(model->menu().size()) - 1);
  EXPECT_TRUE(flow().selecting());
  EXPECT_EQ(model->selection().selected, AppIDSet{"paint.desktop"});
  EXPECT_EQ(model->openFolderID().toStdString(), madeID);
  EXPECT_TRUE(model->handleEscape());
  EXPECT_TRUE(model->openFolderID().isEmpty()) << "Esc closes the folder first";
  EXPECT_TRUE(flow().selecting());
}

TEST_F(TrashFlowTest, TickedAppsMoveIntoAnExistingFolder) {
  model->enterSelection("editor.desktop");
  tick({"paint.desktop"});
  model->makeFolderFromSelection();
  const QString folderID = model->foldersByName().front().toMap().value("id").toString();
  model->closeFolder();

  model->enterSelection("notes.desktop");
  flow().moveSelectionToFolder(folderID);
  EXPECT_FALSE(flow().selecting());
  const Folder* folder = nullptr;
  for (const LayoutItem& item : arrangement->layout().items)
    if (item.asFolder()) folder = item.asFolder();
  ASSERT_NE(folder, nullptr);
  EXPECT_EQ(folder->appIDs, (std::vector<std::string>{"editor.desktop", "paint.desktop", "notes.desktop"}));
  EXPECT_FALSE(inGrid("notes.desktop"));

  // A folder that is gone by then changes nothing.
  model->enterSelection("orrery.desktop");
  tick({"notes.desktop"});
  const Layout before = arrangement->layout();
  flow().moveSelectionToFolder(QStringLiteral("0f6a0b8e-3f7c-4c57-9d1e-000000000000"));
  EXPECT_EQ(arrangement->layout(), before);
}

TEST_F(TrashFlowTest, TheSheetsHangSixtyPointsBelowTheSearchField) {
  // The view tells the model where the search field is while it is built;
  // the sheets' place must follow that first answer too.
  OverlayController controller(*model, clock);
  const auto* sheet = controller.window()->rootObject()->findChild<QQuickItem*>(QStringLiteral("trashSheet"));
  ASSERT_NE(sheet, nullptr);
  EXPECT_GT(model->searchTop(), 0);
  EXPECT_EQ(sheet->property("sheetTop").toDouble(), model->searchTop() + 60);
  model->setSearchTop(100);
  EXPECT_EQ(sheet->property("sheetTop").toDouble(), 160);
}

}  // namespace
}  // namespace orrery::app
