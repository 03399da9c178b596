#include <QCoreApplication>
#include <QQuickView>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "Orrery/overlay/PerfRun.h"
#include "Orrery/tests/ManualClock.h"
#include "OrreryCore/storage/MemoryFileSystem.h"
#include "OrreryCore/testing/LayoutBuilders.h"

namespace orrery::app {
namespace {

using namespace std::chrono_literals;
using orrery::testing::app;
using orrery::testing::appInfo;
using orrery::testing::byID;
using orrery::testing::layoutOf;
using testing::ManualClock;

// The run draws real frames (offscreen, software renderer); only the fade
// of a hide waits for the manual clock, which the wait below moves on.
TEST(PerfRunTest, HideAndShowCyclesEndTheRunWithOneMeasuredShowEach) {
  MemoryFileSystem files;
  std::vector<LayoutItem> items;
  std::vector<AppInfo> apps;
  for (int i = 0; i < 50; ++i) {
    items.push_back(app("app" + std::to_string(i)));
    apps.push_back(appInfo("app" + std::to_string(i), "App " + std::to_string(i)));
  }
  files.writeFile("/data/Orrery/layout.json", layoutOf(items).encoded());
  ArrangementController arrangement(LayoutStore("/data/Orrery", files), false);
  OverlayModel model(arrangement);
  model.sync(arrangement.layout(), byID(apps), Settings());
  ASSERT_TRUE(model.animations());
  ASSERT_GT(model.pageCount(), 1);
  ManualClock clock;
  OverlayController overlay(model, clock);

  PerfRun run(overlay, model, QStringLiteral("ap"), 3);
  QSignalSpy finished(&run, &PerfRun::finished);
  run.start();
  for (int round = 0; round < 1000 && finished.isEmpty(); ++round) {
    QTest::qWait(10);
    clock.advance(OverlayController::fadeDuration);
  }
  ASSERT_EQ(finished.size(), 1) << "the run did not end";

  std::vector<QString> names;
  for (const PerfRun::Step& step : run.steps()) names.push_back(step.name);
  const auto count = [&](const QString& name) { return std::count(names.begin(), names.end(), name); };
  EXPECT_EQ(names.front(), QStringLiteral("show"));
  EXPECT_EQ(count(QStringLiteral("show again")), 3);
  EXPECT_EQ(count(QStringLiteral("hide")), 0);  // no frame to time it by
  EXPECT_EQ(names.back(), QStringLiteral("show again"));
  EXPECT_EQ(count(QStringLiteral("type \"ap\"")), 1);
  EXPECT_EQ(names.size(), 1 + static_cast<std::size_t>(model.pageCount()) + 2 + 2 + 3);
  EXPECT_TRUE(overlay.window()->isVisible());
}

}  // namespace
}  // namespace orrery::app
