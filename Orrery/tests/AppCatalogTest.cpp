#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Orrery/catalog/AppCatalog.h"
#include "Orrery/tests/FakeScanner.h"
#include "Orrery/tests/LogCapture.h"
#include "Orrery/tests/ManualClock.h"
#include "OrreryCore/storage/MemoryFileSystem.h"
#include "OrreryCore/testing/LayoutBuilders.h"

namespace orrery::app {
namespace {

using namespace std::chrono_literals;
using orrery::testing::app;
using orrery::testing::appInfo;
using orrery::testing::appInfos;
using orrery::testing::describe;
using orrery::testing::folder;
using orrery::testing::layoutOf;
using testing::FakeScanner;
using testing::LogCapture;
using testing::ManualClock;

// Apps "app01" … "appNN".
std::vector<AppInfo> numberedApps(int count) {
  std::vector<AppInfo> apps;
  for (int i = 1; i <= count; ++i) apps.push_back(appInfo((i < 10 ? "app0" : "app") + std::to_string(i)));
  return apps;
}

struct Applied {
  AppIDSet installed;
  bool confirming = false;
};

class AppCatalogTest : public ::testing::Test {
 protected:
  void TearDown() override {
    // A scan still held would keep the catalog's pool from finishing.
    scanner->release();
    catalog.reset();
    arrangement.reset();
  }

  AppCatalog& make(bool syncEnabled = false) {
    arrangement = std::make_unique<ArrangementController>(
        LayoutStore(folderPath, files, [this] { return clock.now(); }), syncEnabled);
    catalog = std::make_unique<AppCatalog>(scanner, *arrangement, clock);
    QObject::connect(catalog.get(), &AppCatalog::scanApplied,
                     [this](const AppIDSet& installed, bool confirming) {
                       applied.push_back({installed, confirming});
                     });
    return *catalog;
  }

  // Lets every requested scan run and deliver its result.
  void settle() {
    ASSERT_TRUE(QTest::qWaitFor([this] { return !catalog->isScanning(); }, 10'000))
        << "a scan never finished";
    arrangement->flush();
  }

  AppCatalog& started(std::vector<AppInfo> apps, bool syncEnabled = false) {
    scanner->setApps(std::move(apps));
    make(syncEnabled).start();
    settle();
    return *catalog;
  }

  // What layout.json holds once every save has finished.
  std::optional<Layout> savedLayout() {
    arrangement->flush();
    const auto bytes = files.contents(folderPath / "layout.json");
    if (!bytes) return std::nullopt;
    auto decoded = Layout::decode(*bytes);
    if (!decoded) return std::nullopt;
    return *decoded;
  }

  // Whether layout.json was replaced since the journal was last cleared.
  bool savedSinceClear() {
    arrangement->flush();
    for (const auto& event : files.journal()) {
      if (event.operation == FileOperation::rename && !event.failed) return true;
    }
    return false;
  }

  // The storage problem once every save has finished.
  std::optional<std::string> problem() {
    arrangement->flush();
    return arrangement->storageProblem();
  }

  void writeLayout(const Layout& layout) { files.writeFile(folderPath / "layout.json", layout.encoded()); }

  ManualClock clock;
  MemoryFileSystem files;
  const std::filesystem::path folderPath = "/home/user/.local/share/Orrery";
  std::shared_ptr<FakeScanner> scanner = std::make_shared<FakeScanner>();
  std::vector<Applied> applied;
  LogCapture log;
  std::unique_ptr<ArrangementController> arrangement;
  std::unique_ptr<AppCatalog> catalog;
};

// --- Scheduling of scans --------------------------------------------------------

TEST_F(AppCatalogTest, ChangesDuringAScanCollapseIntoOneFollowUp) {
  started(appInfos({"a", "b", "c"}));
  ASSERT_EQ(scanner->started(), 1);

  scanner->hold();
  catalog->foldersChanged();
  ASSERT_TRUE(scanner->waitUntilStarted(2));
  for (int i = 0; i < 10; ++i) catalog->foldersChanged();
  scanner->release();
  settle();

  EXPECT_EQ(scanner->started(), 3);  // the first, the one held, exactly one follow-up
  ASSERT_EQ(applied.size(), 3u);
  EXPECT_FALSE(applied.back().confirming);
}

TEST_F(AppCatalogTest, AConfirmingRequestDuringAScanMakesTheFollowUpConfirming) {
  started(appInfos({"a", "b", "c"}));

  scanner->hold();
  catalog->requestConfirmingScan();
  catalog->foldersChanged();
  ASSERT_TRUE(scanner->waitUntilStarted(2));
  clock.advance(5s);  // the confirmation comes due while the scan runs
  catalog->foldersChanged();
  scanner->release();
  settle();

  EXPECT_EQ(scanner->started(), 3);
  ASSERT_EQ(applied.size(), 3u);
  EXPECT_FALSE(applied[1].confirming);
  EXPECT_TRUE(applied[2].confirming);
}

TEST_F(AppCatalogTest, DestroyingTheCatalogWhileItScansDropsTheResult) {
  scanner->setApps(appInfos({"a"}));
  make().start();
  catalog.reset();  // waits for the scan, whose result must go nowhere
  QCoreApplication::processEvents();
  EXPECT_TRUE(applied.empty());
  EXPECT_FALSE(files.exists(folderPath / "layout.json"));
}

// --- Scan safety ------------------------------------------------------------------

TEST_F(AppCatalogTest, AShortScanIsHeldAndConfirmedFiveSecondsLater) {
  started(numberedApps(40));
  const Layout full = arrangement->layout();
  ASSERT_EQ(full.items.size(), 40u);
  applied.clear();

  const std::vector<AppInfo> fifteen = numberedApps(15);
  scanner->setApps(fifteen);
  catalog->foldersChanged();
  settle();
  EXPECT_TRUE(
      log.contains("ch.lumenfold.orrery.catalog: Scan fand nur 15 von 40 Apps; Bestätigungsscan in 5 s"));
  EXPECT_TRUE(applied.empty());
  EXPECT_EQ(catalog->apps().size(), 40u);
  EXPECT_EQ(arrangement->layout(), full);

  clock.advance(4999ms);
  EXPECT_FALSE(catalog->isScanning());
  clock.advance(1ms);
  EXPECT_TRUE(catalog->isScanning());
  settle();
  EXPECT_EQ(scanner->started(), 3);
  EXPECT_TRUE(log.contains("ch.lumenfold.orrery.catalog: Bestätigungsscan bestätigt: 15 Apps statt 40"));
  ASSERT_EQ(applied.size(), 1u);
  EXPECT_TRUE(applied[0].confirming);
  // Applied, yet the missing apps keep their places for the grace period.
  EXPECT_EQ(arrangement->layout(), full);
  EXPECT_TRUE(log.contains(
      "ch.lumenfold.orrery.catalog: 25 bekannte App(s) fehlen im Scan; Entfernen erst nach Bestätigung"));

  // At the recheck the loss is still more than half, so it is confirmed once
  // more before the apps leave.
  clock.advance(20500ms);
  settle();
  clock.advance(5s);
  settle();
  EXPECT_EQ(catalog->apps().size(), 15u);
  EXPECT_EQ(arrangement->layout().items.size(), 15u);
  EXPECT_EQ(savedLayout(), arrangement->layout());
}

TEST_F(AppCatalogTest, HalfOfTheKnownAppsIsAppliedAtOnce) {
  started(numberedApps(40));
  applied.clear();

  scanner->setApps(numberedApps(20));
  catalog->foldersChanged();
  settle();
  ASSERT_EQ(applied.size(), 1u);
  EXPECT_FALSE(applied[0].confirming);
  EXPECT_FALSE(log.containsPrefix("ch.lumenfold.orrery.catalog: Scan fand nur"));

  clock.advance(5s);  // no confirmation was asked for
  EXPECT_FALSE(catalog->isScanning());

  clock.advance(15500ms);  // the recheck removes the other twenty
  settle();
  EXPECT_EQ(arrangement->layout().items.size(), 20u);
}

TEST_F(AppCatalogTest, ADeletedAppStaysTwentySecondsAndLeavesAtTheRecheck) {
  started(appInfos({"a", "b", "c"}));
  QSignalSpy appsChanged(catalog.get(), &AppCatalog::changed);

  scanner->setApps(appInfos({"a", "b"}));
  catalog->foldersChanged();
  settle();
  EXPECT_EQ(describe(arrangement->layout()), "a b c");
  EXPECT_TRUE(catalog->apps().contains("c"));
  EXPECT_EQ(appsChanged.count(), 0);

  clock.advance(20499ms);
  EXPECT_FALSE(catalog->isScanning());
  EXPECT_EQ(describe(arrangement->layout()), "a b c");

  clock.advance(1ms);
  EXPECT_TRUE(catalog->isScanning());
  settle();
  EXPECT_EQ(describe(arrangement->layout()), "a b");
  EXPECT_FALSE(catalog->apps().contains("c"));
  EXPECT_EQ(describe(*savedLayout()), "a b");
  EXPECT_EQ(appsChanged.count(), 1);
}

TEST_F(AppCatalogTest, AnAppBackBeforeTheRecheckKeepsItsPlace) {
  writeLayout(layoutOf({app("c"), folder("Tools", {"a", "b"})}));
  started(appInfos({"a", "b", "c"}));

  scanner->setApps(appInfos({"a", "c"}));
  catalog->foldersChanged();
  settle();
  scanner->setApps(appInfos({"a", "b", "c"}));
  clock.advance(10s);
  catalog->foldersChanged();
  settle();
  clock.advance(20s);  // the recheck finds nothing to remove
  settle();
  EXPECT_EQ(describe(arrangement->layout()), "c [Tools: a b]");
}

TEST_F(AppCatalogTest, AnEmptyScanIsDroppedAndWritesNothing) {
  started(appInfos({"a", "b", "c"}));
  files.clearJournal();

  scanner->setApps({});
  catalog->foldersChanged();
  settle();
  EXPECT_TRUE(log.contains(
      "ch.lumenfold.orrery.catalog: Scan fand keine Apps; Ergebnis verworfen, Layout bleibt unverändert"));
  EXPECT_EQ(describe(arrangement->layout()), "a b c");
  EXPECT_EQ(catalog->apps().size(), 3u);
  EXPECT_FALSE(savedSinceClear());
  EXPECT_EQ(clock.pendingCount(), 0u);
}

TEST_F(AppCatalogTest, AScanThatChangesNothingWritesNothing) {
  started(appInfos({"a", "b"}));
  files.clearJournal();
  QSignalSpy appsChanged(catalog.get(), &AppCatalog::changed);
  catalog->foldersChanged();
  settle();
  EXPECT_FALSE(savedSinceClear());
  EXPECT_EQ(appsChanged.count(), 0);
  EXPECT_EQ(applied.size(), 2u);  // still reported as applied
}

// --- Edits and saving -------------------------------------------------------------

TEST_F(AppCatalogTest, AUserEditSavesAtOnceAndSignalsOnlyRealChanges) {
  started(appInfos({"a", "b", "c"}));
  QSignalSpy userChanged(arrangement.get(), &ArrangementController::userChanged);
  files.clearJournal();

  arrangement->mutate([](Layout& layout) { layout.move(0, 2); });
  EXPECT_EQ(describe(arrangement->layout()), "b c a");
  EXPECT_EQ(arrangement->shared(), arrangement->layout());
  EXPECT_EQ(savedLayout(), arrangement->layout());
  EXPECT_EQ(userChanged.count(), 1);

  files.clearJournal();
  arrangement->mutate([](Layout& layout) { layout.move(1, 1); });
  EXPECT_TRUE(savedSinceClear());
  EXPECT_EQ(userChanged.count(), 1);
}

TEST_F(AppCatalogTest, AFailedSaveSetsTheProblemAndTheNextGoodSaveClearsIt) {
  started(appInfos({"a", "b", "c"}));
  QSignalSpy problemChanged(arrangement.get(), &ArrangementController::storageProblemChanged);

  files.inject(MemoryFileSystem::Fault::error(FileError::Code::accessDenied, 1,
                                              MemoryFileSystem::Persistence::fromThenOn)
                   .only(FileOperation::read)
                   .onPath(folderPath / "layout.json"));
  arrangement->mutate([](Layout& layout) { layout.hide("a"); });
  EXPECT_EQ(problem(), "layout.json can't be read (check access permissions).");
  EXPECT_TRUE(log.contains(
      "ch.lumenfold.orrery.catalog: Layout konnte nicht gespeichert werden: layout.json can't be read (check "
      "access permissions)."));
  EXPECT_EQ(describe(arrangement->layout()), "b c | hidden: a");  // kept in memory
  arrangement->mutate([](Layout& layout) { layout.hide("b"); });
  arrangement->flush();
  EXPECT_EQ(problemChanged.count(), 1);  // the same text is not announced twice

  files.clearFaults();
  arrangement->mutate([](Layout&) {});
  EXPECT_EQ(problem(), std::nullopt);
  EXPECT_EQ(problemChanged.count(), 2);
  EXPECT_EQ(describe(*savedLayout()), "c | hidden: a b");

  // A full disk shows the file system's own sentence.
  files.inject(MemoryFileSystem::Fault::error(FileError::Code::noSpace).only(FileOperation::write));
  arrangement->mutate([](Layout& layout) { layout.move(0, 0); });
  const std::optional<std::string> fullDisk = problem();
  ASSERT_TRUE(fullDisk.has_value());
  EXPECT_NE(fullDisk->find("enough space"), std::string::npos) << *fullDisk;
}

TEST_F(AppCatalogTest, AnUnreadableFileAtStartIsReportedAndNeverOverwritten) {
  writeLayout(layoutOf({app("b"), app("a")}));
  files.inject(MemoryFileSystem::Fault::error(FileError::Code::accessDenied, 1,
                                              MemoryFileSystem::Persistence::fromThenOn)
                   .only(FileOperation::read)
                   .onPath(folderPath / "layout.json"));
  make();
  EXPECT_EQ(problem(), "layout.json can't be read (check access permissions).");
  EXPECT_TRUE(log.contains(
      "ch.lumenfold.orrery.catalog: layout.json nicht lesbar; Anordnung kann nicht gespeichert werden"));

  scanner->setApps(appInfos({"a", "b", "c"}));
  catalog->start();
  settle();
  arrangement->mutate([](Layout& layout) { layout.move(0, 1); });
  arrangement->flush();
  files.clearFaults();
  EXPECT_EQ(describe(*savedLayout()), "b a");
}

// --- Sync mode ----------------------------------------------------------------------

TEST_F(AppCatalogTest, WithSyncOnOtherMachinesAppsStayInTheSharedArrangement) {
  writeLayout(layoutOf({app("x"), app("a"), folder("Work", {"b", "y"})}));
  started(appInfos({"a", "b", "c"}), /*syncEnabled=*/true);

  EXPECT_EQ(describe(arrangement->layout()), "a b c");
  EXPECT_EQ(describe(arrangement->shared()), "x a [Work: b y] c");
  EXPECT_EQ(savedLayout(), arrangement->shared());

  arrangement->mutate([](Layout& layout) { layout.move(2, 0); });
  EXPECT_EQ(describe(arrangement->layout()), "c a b");
  const Layout shared = arrangement->shared();
  for (const char* id : {"x", "y"}) EXPECT_TRUE(shared.referencedAppIDs().contains(id)) << id;
  EXPECT_EQ(savedLayout(), shared);

  // An app of this machine that is deleted leaves this machine's view only.
  scanner->setApps(appInfos({"a", "c"}));
  catalog->foldersChanged();
  settle();
  clock.advance(20500ms);
  settle();
  EXPECT_EQ(describe(arrangement->layout()), "c a");
  EXPECT_TRUE(arrangement->shared().referencedAppIDs().contains("b"));
}

TEST_F(AppCatalogTest, WithSyncOnTheFirstScanIsNotMeasuredAgainstOtherMachinesApps) {
  std::vector<LayoutItem> items;
  for (const AppInfo& other : numberedApps(30)) items.push_back(app(other.id));
  writeLayout(layoutOf(items));

  started(appInfos({"a", "b", "c"}), /*syncEnabled=*/true);
  EXPECT_FALSE(log.containsPrefix("ch.lumenfold.orrery.catalog: Scan fand nur"));
  EXPECT_EQ(describe(arrangement->layout()), "a b c");
  EXPECT_EQ(arrangement->shared().items.size(), 33u);
}

TEST_F(AppCatalogTest, ASharedArrangementFromElsewhereIsProjectedOntoThisMachine) {
  make(/*syncEnabled=*/true);
  arrangement->applyShared(layoutOf({app("x"), app("a")}));
  EXPECT_EQ(describe(arrangement->layout()), "x a");  // no scan yet: shown as received

  scanner->setApps(appInfos({"a", "b"}));
  catalog->start();
  settle();
  QSignalSpy layoutChanged(arrangement.get(), &ArrangementController::layoutChanged);
  arrangement->applyShared(layoutOf({app("b"), app("q"), app("a"), app("x")}));
  EXPECT_EQ(describe(arrangement->layout()), "b a");
  EXPECT_EQ(layoutChanged.count(), 1);
  EXPECT_EQ(describe(*savedLayout()), "b q a x");
}

}  // namespace
}  // namespace orrery::app
