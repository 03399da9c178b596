#include <QCoreApplication>
#include <QTest>

#include <gtest/gtest.h>

#include <vector>

#include "Orrery/base/QtClock.h"

namespace orrery::app {
namespace {

using namespace std::chrono_literals;

TEST(QtClock, RunsDueActionsOnceAndNeverCancelledOnes) {
  QtClock clock;
  std::vector<int> ran;
  ScheduledAction first = clock.runAfter(0ms, [&] { ran.push_back(1); });
  ScheduledAction cancelled = clock.runAfter(0ms, [&] { ran.push_back(2); });
  ScheduledAction dropped = clock.runAfter(-5ms, [&] { ran.push_back(3); });
  ScheduledAction last = clock.runAfter(0ms, [&] { ran.push_back(4); });
  cancelled.cancel();
  dropped = ScheduledAction();

  ASSERT_TRUE(QTest::qWaitFor([&] { return ran.size() >= 2; }, 5000));
  QCoreApplication::processEvents();
  EXPECT_EQ(ran, (std::vector<int>{1, 4}));
  first.cancel();  // after it ran: harmless
}

TEST(QtClock, AnActionMayCancelItsOwnHandle) {
  QtClock clock;
  int runs = 0;
  ScheduledAction handle;
  handle = clock.runAfter(0ms, [&] {
    ++runs;
    handle = ScheduledAction();
  });
  ASSERT_TRUE(QTest::qWaitFor([&] { return runs == 1; }, 5000));
  QCoreApplication::processEvents();
  EXPECT_EQ(runs, 1);
  EXPECT_FALSE(handle.isSet());
}

TEST(QtClock, PendingActionsDieWithTheClock) {
  int runs = 0;
  ScheduledAction handle;
  {
    QtClock clock;
    handle = clock.runAfter(0ms, [&] { ++runs; });
  }
  QCoreApplication::processEvents();
  handle.cancel();  // the timer is gone already
  EXPECT_EQ(runs, 0);
}

}  // namespace
}  // namespace orrery::app
