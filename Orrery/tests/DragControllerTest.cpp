// Pointer gestures in the overlay: clicks against drags, long presses,
// previews, page flips, auto-scroll, folders and drops, driven with a manual
// clock and synthetic pointer events, without a window.
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "Orrery/drag/DragController.h"
#include "Orrery/overlay/OverlayModel.h"
#include "Orrery/tests/ManualClock.h"
#include "OrreryCore/storage/MemoryFileSystem.h"
#include "OrreryCore/testing/LayoutBuilders.h"
#include "OrreryCore/testing/RandomLayout.h"

namespace orrery::app {
namespace {

using namespace std::chrono_literals;
using orrery::testing::app;
using orrery::testing::appInfo;
using orrery::testing::appOccurrences;
using orrery::testing::describe;
using orrery::testing::folder;
using orrery::testing::layoutOf;

// 7 × 5 cells of 200 points, the grid at (100, 100), the overlay 1600 wide.
constexpr double gridX = 100;
constexpr double gridY = 100;
constexpr double cell = 200;

std::vector<LayoutItem> numberedApps(int count) {
  std::vector<LayoutItem> items;
  for (int i = 0; i < count; ++i) items.push_back(app("app" + std::to_string(i)));
  return items;
}

class DragControllerTest : public ::testing::Test {
 protected:
  void start(const Layout& initial) {
    model.reset();
    arrangement.reset();
    files.writeFile(folderPath / "layout.json", initial.encoded());
    arrangement = std::make_unique<ArrangementController>(LayoutStore(folderPath, files), false);
    apps.clear();
    for (const auto& [id, count] : appOccurrences(arrangement->layout())) apps.emplace(id, appInfo(id, id));
    model = std::make_unique<OverlayModel>(*arrangement, clock);
    QObject::connect(model.get(), &OverlayModel::launchRequested,
                     [this](const AppInfo& chosen) { launched.push_back(chosen.id); });
    QObject::connect(arrangement.get(), &ArrangementController::layoutChanged, model.get(),
                     [this] { sync(); });
    sync();
    drag().setGridFrame(QRectF(gridX, gridY, 7 * cell, 5 * cell));
    drag().setOverlayWidth(1600);
  }

  void sync() { model->sync(arrangement->layout(), apps, settings); }
  DragController& drag() { return model->drag(); }
  const Layout& layout() const { return arrangement->layout(); }

  // The centre of a slot of the shown page, in overlay coordinates.
  static Point centre(int slot) { return {gridX + (slot % 7 + 0.5) * cell, gridY + (slot / 7 + 0.5) * cell}; }
  static Point offset(Point p, double dx, double dy) { return {p.x + dx, p.y + dy}; }

  void move(Point to) { drag().pointerMoved(to.x, to.y, pressedAt.x, pressedAt.y); }
  void press(Point at) {
    pressedAt = at;
    move(at);
  }
  void release(Point at) { drag().pointerReleased(at.x, at.y, pressedAt.x, pressedAt.y); }
  // Presses `from`, lifts by moving, goes to `to` and lets go.
  void dragFromTo(Point from, Point to) {
    press(from);
    move(offset(from, 10, 0));
    move(to);
    release(to);
  }

  const std::filesystem::path folderPath = "/data/Orrery";
  testing::ManualClock clock;
  Settings settings;  // 7 columns, 5 rows
  OverlayModel::AppMap apps;
  MemoryFileSystem files;
  std::unique_ptr<ArrangementController> arrangement;
  std::unique_ptr<OverlayModel> model;
  std::vector<std::string> launched;
  Point pressedAt;
};

TEST_F(DragControllerTest, fourPointsIsAClickAndAnyFartherLifts) {
  start(layoutOf(numberedApps(10)));
  const Layout before = layout();

  press(centre(2));
  move(offset(centre(2), 4.0, 0));
  EXPECT_FALSE(drag().isLifted());
  release(offset(centre(2), 4.0, 0));
  EXPECT_EQ(launched, std::vector<std::string>{"app2"});

  press(centre(3));
  move(offset(centre(3), 4.01, 0));
  ASSERT_TRUE(drag().isLifted());
  EXPECT_EQ(drag().liftedKey(), "app:app3");
  // Grabbed off centre: the item keeps that offset under the pointer.
  EXPECT_EQ(drag().grabOffsetX(), 0);
  release(offset(centre(3), 4.01, 0));
  EXPECT_FALSE(drag().isLifted());
  EXPECT_EQ(launched.size(), 1u);  // a drop is no click
  EXPECT_EQ(layout(), before);     // dropped on its own place

  // Between the tiles lies the background: nothing to press.
  press({gridX + 1, gridY + 1});
  move({gridX + 30, gridY + 1});
  EXPECT_FALSE(drag().isLifted());
  release({gridX + 30, gridY + 1});
  EXPECT_EQ(launched.size(), 1u);
}

TEST_F(DragControllerTest, holdingStillLiftsAfterALongPressButAStaleOneNever) {
  start(layoutOf(numberedApps(10)));

  press(centre(1));
  clock.advance(299ms);
  EXPECT_FALSE(drag().isLifted());
  clock.advance(1ms);
  EXPECT_TRUE(drag().isLifted());
  release(centre(1));
  EXPECT_TRUE(launched.empty());

  // Released before the long press: a click. The next press begins at once,
  // and the first press's long press, due in between, lifts nothing.
  press(centre(4));
  clock.advance(100ms);
  release(centre(4));
  EXPECT_EQ(launched, std::vector<std::string>{"app4"});
  clock.advance(100ms);
  press(centre(5));
  clock.advance(150ms);  // past the first press's 300 ms
  EXPECT_FALSE(drag().isLifted());
  clock.advance(150ms);
  EXPECT_TRUE(drag().isLifted());
  release(centre(5));

  // A gesture whose release was lost: the next start ends it, and its long
  // press does not lift the new one early.
  press(centre(6));
  clock.advance(200ms);
  press(centre(8));
  clock.advance(200ms);
  EXPECT_FALSE(drag().isLifted());
  clock.advance(100ms);
  ASSERT_TRUE(drag().isLifted());
  EXPECT_EQ(drag().liftedKey(), "app:app8");
  release(centre(8));
}

TEST_F(DragControllerTest, theGapFollowsThePointerAndAHeldEdgeFlipsThePage) {
  start(layoutOf(numberedApps(40)));  // 35 on page 0, 5 on page 1
  press(centre(0));
  move(offset(centre(0), 10, 0));
  ASSERT_TRUE(drag().gridDragging());
  EXPECT_EQ(drag().draggedIndex(), 0);
  EXPECT_EQ(drag().gap(), 0);

  // After the third tile: the others close up before the gap.
  move(offset(centre(3), 80, 0));
  EXPECT_EQ(drag().gap(), 3);
  // Onto the centre of an app: a folder would be made there.
  move(centre(5));
  EXPECT_EQ(drag().mergeSlot(), 5);

  // Held at the overlay's right edge for 0.6 s: page 1.
  move({1600 - 20, 500});
  clock.advance(580ms);
  EXPECT_EQ(model->page(), 0);
  clock.advance(60ms);  // 0.6 s after the first tick that saw the edge
  EXPECT_EQ(model->page(), 1);
  EXPECT_EQ(drag().gap(), 39);  // over the empty part of page 1: the end
  // Before the third tile of page 1.
  move(offset(centre(2), -80, 0));
  release(offset(centre(2), -80, 0));

  std::vector<LayoutItem> expected;
  for (int i = 1; i <= 37; ++i) expected.push_back(app("app" + std::to_string(i)));
  expected.push_back(app("app0"));
  expected.push_back(app("app38"));
  expected.push_back(app("app39"));
  EXPECT_EQ(describe(layout()), describe(layoutOf(expected)));
  arrangement->flush();
  EXPECT_EQ(files.readFile(folderPath / "layout.json").value(), layout().encoded());
}

TEST_F(DragControllerTest, anAppDroppedOnAnotherMakesANamedFolderWithItsTitleReady) {
  start(layoutOf(numberedApps(5)));
  QSignalSpy rename(model.get(), &OverlayModel::renameRequestChanged);
  dragFromTo(centre(0), centre(3));

  ASSERT_EQ(layout().items.size(), 4u);
  const Folder* made = layout().items[2].asFolder();
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->name, Folder::defaultName());
  EXPECT_EQ(made->appIDs, (std::vector<std::string>{"app3", "app0"}));
  EXPECT_EQ(model->openFolderID().toStdString(), made->id.text());
  EXPECT_EQ(rename.count(), 1);

  // An app onto the folder joins it; the folder itself never merges.
  model->closeFolder();
  dragFromTo(centre(0), centre(2));  // app1 onto the folder
  EXPECT_EQ(layout().items[1].asFolder()->appIDs, (std::vector<std::string>{"app3", "app0", "app1"}));
  dragFromTo(centre(1), centre(0));
  EXPECT_EQ(
      describe(layout()),
      describe(layoutOf({folder(made->id, made->name, {"app3", "app0", "app1"}), app("app2"), app("app4")})));
}

class DragFolderTest : public DragControllerTest {
 protected:
  void SetUp() override {
    start(layoutOf({app("terminal"), folder("Office", {"writer", "calc", "draw"}), app("files")}));
    office = layout().items[1].asFolder()->id;
    model->openFolder(QString::fromStdString(office.text()));
    // Three apps of 200 points side by side, the panel around them.
    drag().setFolderGridFrame(QRectF(500, 400, 600, 200));
    drag().setFolderPanelFrame(QRectF(470, 320, 660, 310));
  }
  static Point inFolder(int index) { return {500 + (index + 0.5) * cell, 500}; }

  Uuid office;
};

TEST_F(DragFolderTest, appsReorderInsideTheFolderAndAClickLaunches) {
  press(inFolder(0));
  release(inFolder(0));
  EXPECT_EQ(launched, std::vector<std::string>{"writer"});

  dragFromTo(inFolder(0), offset(inFolder(2), 80, 0));
  EXPECT_EQ(layout().items[1].asFolder()->appIDs, (std::vector<std::string>{"calc", "draw", "writer"}));
  EXPECT_EQ(model->openFolderID().toStdString(), office.text());
}

TEST_F(DragFolderTest, draggedOutOfTheFolderItContinuesOverTheGrid) {
  const Layout before = layout();
  press(inFolder(1));
  move(offset(inFolder(1), 10, 0));
  ASSERT_TRUE(drag().folderDragging());
  move({300, 900});  // below the panel
  EXPECT_TRUE(drag().folderHidden());
  ASSERT_TRUE(drag().gridDragging());
  EXPECT_EQ(drag().draggedIndex(), -1);

  // Back onto its own folder: nothing changes, the folder closes.
  move(centre(1));
  release(centre(1));
  EXPECT_EQ(layout(), before);
  EXPECT_TRUE(model->openFolderID().isEmpty());
  EXPECT_FALSE(drag().folderHidden());

  // Out again and after the last app: it leaves the folder.
  model->openFolder(QString::fromStdString(office.text()));
  dragFromTo(inFolder(1), offset(centre(3), 80, 0));
  EXPECT_EQ(describe(layout()),
            describe(layoutOf(
                {app("terminal"), folder(office, "Office", {"writer", "draw"}), app("files"), app("calc")})));
}

TEST_F(DragFolderTest, escapeCancelsTheDragFirstAndItsReleaseIsNoClick) {
  const Layout before = layout();
  press(inFolder(2));
  move(offset(inFolder(2), -150, 0));
  ASSERT_TRUE(drag().isLifted());
  EXPECT_TRUE(model->handleEscape());
  EXPECT_FALSE(drag().isLifted());
  EXPECT_FALSE(model->openFolderID().isEmpty());
  move(inFolder(2));
  clock.advance(1s);
  release(inFolder(2));
  EXPECT_FALSE(drag().isLifted());
  EXPECT_TRUE(launched.empty());
  EXPECT_EQ(layout(), before);

  EXPECT_TRUE(model->handleEscape());
  EXPECT_TRUE(model->openFolderID().isEmpty());
  EXPECT_FALSE(model->handleEscape());
}

TEST_F(DragControllerTest, aDropOntoAReplacedArrangementChangesNothing) {
  start(layoutOf(numberedApps(6)));
  press(centre(0));
  move(offset(centre(4), 80, 0));
  ASSERT_TRUE(drag().isLifted());

  // A sync brings another arrangement while the item is held.
  const Layout replaced =
      layoutOf({app("app5"), app("app4"), app("app3"), app("app2"), app("app1"), app("app0")});
  arrangement->applyShared(replaced);
  release(offset(centre(4), 80, 0));
  EXPECT_EQ(layout(), replaced);

  // Typing a search drops the item; its release is no click.
  press(centre(1));
  move(offset(centre(3), 80, 0));
  ASSERT_TRUE(drag().isLifted());
  model->setQuery("app");
  EXPECT_FALSE(drag().isLifted());
  release(offset(centre(3), 80, 0));
  EXPECT_EQ(layout(), replaced);
  EXPECT_TRUE(launched.empty());
}

TEST_F(DragControllerTest, heldNearTheTopInScrollModeTheGridScrollsUp) {
  settings.layoutMode = LayoutMode::scroll;
  start(layoutOf(numberedApps(200)));  // 29 rows of 200 points
  model->setViewport(5 * cell, 29 * cell);
  model->scroll(2000, false);
  ASSERT_EQ(model->scrollOffset(), 2000);

  press(centre(17));
  move(offset(centre(17), 10, 0));
  ASSERT_TRUE(drag().isLifted());
  // The press addressed the scrolled content: row 10 + row 2.
  EXPECT_EQ(drag().draggedIndex(), 10 * 7 + 17);

  move({700, gridY + 30});
  clock.advance(160ms);  // ten ticks at 700 points per second
  EXPECT_NEAR(model->scrollOffset(), 2000 - 700 * 0.16, 1e-6);
  release({700, gridY + 30});
}

// Random gestures over random arrangements: whatever happens, every app is
// still there exactly once, and the arrangement is what the preview shown
// at the release said.
TEST_F(DragControllerTest, randomGesturesDropWhatThePreviewShowed) {
  std::mt19937_64 random(20261124);
  const std::vector<std::string> universe = orrery::testing::appUniverse(160);
  int changed = 0;
  int flipped = 0;
  for (int round = 0; round < 150; ++round) {
    start(orrery::testing::randomLayout(random, universe));
    const Layout before = layout();
    const auto occurrences = appOccurrences(before);
    model->goTo(static_cast<int>(random() % 3));
    const int firstPage = model->page();

    auto randomPoint = [&] {
      std::uniform_real_distribution<double> x(0, 1600), y(0, 1300);
      return Point{x(random), y(random)};
    };
    press(random() % 2 == 0 ? centre(static_cast<int>(random() % 35)) : randomPoint());
    if (random() % 2 == 0) clock.advance(300ms);
    Point at = pressedAt;
    const int steps = static_cast<int>(random() % 6) + 1;
    for (int step = 0; step < steps; ++step) {
      // Now and then towards an edge, held long enough to flip.
      const bool toEdge = random() % 3 == 0;
      at = toEdge ? Point{random() % 2 == 0 ? 10.0 : 1590.0, at.y} : randomPoint();
      move(at);
      clock.advance(std::chrono::milliseconds(random() % 800 + (toEdge ? 500 : 0)));
    }
    if (model->page() != firstPage) ++flipped;
    Layout predicted = before;
    if (drag().grid()) drag().grid()->apply(predicted);
    release(at);

    ASSERT_EQ(appOccurrences(layout()), occurrences) << "round " << round;
    for (const auto& [id, count] : appOccurrences(layout())) ASSERT_EQ(count, 1) << id;
    // A new folder's id is random; everything else must match.
    ASSERT_EQ(describe(layout()), describe(predicted)) << "round " << round << ": " << describe(before);
    if (layout() != before) ++changed;
  }
  // The gestures did rearrange and flip, or the checks above proved little.
  EXPECT_GT(changed, 30);
  EXPECT_GT(flipped, 10);
}

}  // namespace
}  // namespace orrery::app
