#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <iterator>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Orrery/catalog/ArrangementController.h"
#include "Orrery/overlay/ArrangementListModel.h"
#include "OrreryCore/storage/MemoryFileSystem.h"
#include "OrreryCore/testing/LayoutBuilders.h"
#include "OrreryCore/testing/RandomLayout.h"

namespace orrery::app {
namespace {

using orrery::testing::app;
using orrery::testing::appInfos;
using orrery::testing::describe;
using orrery::testing::folder;
using orrery::testing::layoutOf;

// A disk that can be made to stall: while closed, every new file waits at
// creation until the disk opens again, as a save stuck behind a slow flush.
class StallingFileSystem final : public FileSystem {
 public:
  void close() {
    std::lock_guard lock(mutex_);
    open_ = false;
  }
  void open() {
    {
      std::lock_guard lock(mutex_);
      open_ = true;
    }
    changed_.notify_all();
  }
  // Waits until a save is stuck on the closed disk.
  bool waitForStalledSave() {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(10), [this] { return stalled_ > 0; });
  }

  Expected<std::string, FileError> readFile(const std::filesystem::path& path) override {
    return memory.readFile(path);
  }
  Expected<std::unique_ptr<WritableFile>, FileError> createNew(const std::filesystem::path& path) override {
    {
      std::unique_lock lock(mutex_);
      ++stalled_;
      changed_.notify_all();
      changed_.wait(lock, [this] { return open_; });
      --stalled_;
    }
    return memory.createNew(path);
  }
  FileResult rename(const std::filesystem::path& from, const std::filesystem::path& to) override {
    return memory.rename(from, to);
  }
  FileResult renameNoReplace(const std::filesystem::path& from, const std::filesystem::path& to) override {
    return memory.renameNoReplace(from, to);
  }
  FileResult syncDirectory(const std::filesystem::path& path) override { return memory.syncDirectory(path); }
  Expected<std::vector<std::string>, FileError> listDirectory(const std::filesystem::path& path) override {
    return memory.listDirectory(path);
  }
  FileResult remove(const std::filesystem::path& path) override { return memory.remove(path); }
  FileResult createDirectories(const std::filesystem::path& path) override {
    return memory.createDirectories(path);
  }
  Expected<FileStatus, FileError> stat(const std::filesystem::path& path) override {
    return memory.stat(path);
  }

  MemoryFileSystem memory;

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool open_ = true;
  int stalled_ = 0;
};

class ArrangementControllerTest : public ::testing::Test {
 protected:
  void TearDown() override {
    disk.open();
    arrangement.reset();
  }

  ArrangementController& make(const Layout& initial = layoutOf({app("a"), app("b"), app("c")})) {
    disk.memory.writeFile(folderPath / "layout.json", initial.encoded());
    arrangement = std::make_unique<ArrangementController>(LayoutStore(folderPath, disk), false);
    return *arrangement;
  }

  std::optional<Layout> onDisk() {
    const auto bytes = disk.memory.contents(folderPath / "layout.json");
    if (!bytes) return std::nullopt;
    auto decoded = Layout::decode(*bytes);
    return decoded ? std::optional<Layout>(*decoded) : std::nullopt;
  }

  StallingFileSystem disk;
  const std::filesystem::path folderPath = "/home/user/.local/share/Orrery";
  std::unique_ptr<ArrangementController> arrangement;
};

TEST_F(ArrangementControllerTest, EditsDuringASlowSaveCollapseIntoOneMoreSaveOfTheLatest) {
  make();
  disk.close();
  arrangement->mutate([](Layout& layout) { layout.move(0, 1); });
  ASSERT_TRUE(disk.waitForStalledSave());

  // Every edit is in memory at once although the disk does not move.
  for (int i = 0; i < 50; ++i) arrangement->mutate([](Layout& layout) { layout.move(0, 2); });
  EXPECT_EQ(describe(arrangement->layout()), "c b a");  // "b a c", rotated 50 times
  EXPECT_EQ(arrangement->saver().savesStarted(), 1u);

  disk.open();
  arrangement->flush();
  EXPECT_LE(arrangement->saver().savesStarted(), 3u);
  EXPECT_EQ(onDisk(), arrangement->layout());
  EXPECT_EQ(arrangement->storageProblem(), std::nullopt);
}

TEST_F(ArrangementControllerTest, TenThousandEditsNeverWaitForABlockedDisk) {
  std::vector<LayoutItem> items;
  for (int i = 0; i < 200; ++i) items.push_back(app("app" + std::to_string(i)));
  make(layoutOf(items));
  disk.close();
  arrangement->mutate([](Layout& layout) { layout.hide("app0"); });
  ASSERT_TRUE(disk.waitForStalledSave());

  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 10'000; ++i) arrangement->mutate([i](Layout& layout) { layout.move(i % 199, 0); });
  const auto elapsed = std::chrono::steady_clock::now() - start;
  // Recorded for docs/benchmarks.md, not judged: timing depends on the machine.
  RecordProperty("tenThousandEditsMilliseconds",
                 static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count()));
  EXPECT_EQ(arrangement->saver().savesStarted(), 1u);

  disk.open();
  arrangement->flush();
  EXPECT_EQ(arrangement->saver().savesStarted(), 2u);
  EXPECT_EQ(onDisk(), arrangement->layout());
}

TEST_F(ArrangementControllerTest, TheLastEditReachesTheDiskWhenTheOwnerGoesAway) {
  make();
  disk.close();
  arrangement->mutate([](Layout& layout) { layout.move(0, 1); });
  ASSERT_TRUE(disk.waitForStalledSave());
  arrangement->mutate([](Layout& layout) { layout.hide("c"); });

  std::thread opener([this] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    disk.open();
  });
  arrangement.reset();  // must wait for both saves
  opener.join();
  EXPECT_EQ(describe(*onDisk()), "b a | hidden: c");
}

// --- The list model the views read ------------------------------------------------------

// Replays every change into rows as the views see them, under Qt's model checks.
class ModelTracker {
 public:
  explicit ModelTracker(ArrangementController& arrangement)
      : model(arrangement), tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal) {
    QObject::connect(&model, &QAbstractItemModel::modelReset, [this] { ++resets; });
    QObject::connect(&model, &QAbstractItemModel::rowsMoved, [this] { ++moves; });
    QObject::connect(&model, &QAbstractItemModel::rowsInserted, [this] { ++insertions; });
  }

  // The rows' keys, read through the model's public interface.
  std::vector<std::string> keys() const {
    std::vector<std::string> result;
    for (int row = 0; row < model.rowCount(); ++row)
      result.push_back(model.index(row).data(ArrangementListModel::KeyRole).toString().toStdString());
    return result;
  }

  ArrangementListModel model;
  QAbstractItemModelTester tester;
  int resets = 0;
  int moves = 0;
  int insertions = 0;
};

std::vector<std::string> keysOf(const Layout& layout) {
  std::vector<std::string> keys;
  for (const LayoutItem& item : layout.items)
    keys.push_back(item.isApp() ? "app:" + *item.appID() : "folder:" + item.asFolder()->id.text());
  return keys;
}

TEST_F(ArrangementControllerTest, TheListModelFollowsRandomEditsRowByRow) {
  const std::vector<std::string> universe = orrery::testing::appUniverse(60);
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    orrery::testing::Random random(seed);
    make(orrery::testing::randomLayout(random, universe));
    ModelTracker tracker(*arrangement);
    // The second page of a grid of eight: items slide in and out of it.
    ModelTracker page(*arrangement);
    page.model.setWindow(8, 8);
    for (int step = 0; step < 60; ++step) {
      std::string operation;
      arrangement->mutate([&](Layout& layout) {
        operation = orrery::testing::applyRandomOperation(layout, random, universe);
      });
      ASSERT_EQ(tracker.model.items(), arrangement->layout().items) << "seed " << seed << ": " << operation;
      ASSERT_EQ(tracker.keys(), keysOf(arrangement->layout())) << "seed " << seed << ": " << operation;
      const std::vector<std::string> all = keysOf(arrangement->layout());
      const std::vector<std::string> second(all.begin() + std::min<std::ptrdiff_t>(8, std::ssize(all)),
                                            all.begin() + std::min<std::ptrdiff_t>(16, std::ssize(all)));
      ASSERT_EQ(page.keys(), second) << "seed " << seed << ": " << operation;
    }
    EXPECT_EQ(tracker.resets, 0);
    EXPECT_EQ(page.resets, 0);
    arrangement.reset();
  }
}

TEST_F(ArrangementControllerTest, OneDragIsOneMovedRowAndAFolderEditIsADataChange) {
  make(layoutOf({app("a"), folder("Tools", {"b", "c"}), app("d"), app("e")}));
  ModelTracker tracker(*arrangement);
  QSignalSpy dataChanged(&tracker.model, &QAbstractItemModel::dataChanged);

  arrangement->mutate([](Layout& layout) { layout.move(0, 3); });
  EXPECT_EQ(tracker.moves, 1);
  EXPECT_EQ(tracker.insertions, 0);

  const Uuid tools = arrangement->layout().items[0].asFolder()->id;
  arrangement->mutate([&](Layout& layout) { layout.renameFolder(tools, "Utilities"); });
  ASSERT_EQ(dataChanged.count(), 1);
  EXPECT_EQ(tracker.model.index(0).data(ArrangementListModel::FolderNameRole).toString(), "Utilities");

  // A scan that brings two apps adds two rows at the end in one range.
  arrangement->reconcile(appInfos({"a", "b", "c", "d", "e", "f", "g"}), {});
  EXPECT_EQ(tracker.insertions, 1);
  EXPECT_EQ(tracker.keys().back(), "app:g");
  EXPECT_EQ(tracker.resets, 0);
}

}  // namespace
}  // namespace orrery::app
