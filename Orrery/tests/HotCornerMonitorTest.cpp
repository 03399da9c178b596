// The hot-corner monitor over a scripted pointer and the manual clock: how
// motion and the near-corner timer drive the detector, what blocks it, and
// that nothing listens or polls when it need not.
#include <gtest/gtest.h>

#include <vector>

#include "Orrery/tests/ManualClock.h"
#include "Orrery/triggers/HotCornerMonitor.h"
#include "OrreryCore/triggers/EventFlags.h"

namespace orrery::app {
namespace {

using namespace std::chrono_literals;
using testing::ManualClock;

class ScriptedPointer final : public GlobalPointer {
 public:
  void watchMotion(std::function<void()> onMoved) override {
    onMoved_ = std::move(onMoved);
    ++watchCalls;
  }
  Point position() override { return point; }
  std::vector<Rect> screens() override { return frames; }
  std::uint64_t modifierFlags() override { return flags; }
  std::uint32_t buttons() override { return pressed; }

  // A move as the window system reports it: position first, then the event.
  void moveTo(Point to) {
    point = to;
    if (onMoved_) onMoved_();
  }
  bool listening() const { return static_cast<bool>(onMoved_); }

  Point point{700, 450};
  std::vector<Rect> frames{Rect{{0, 0}, {1440, 900}}};
  std::uint64_t flags = 0;
  std::uint32_t pressed = 0;
  int watchCalls = 0;

 private:
  std::function<void()> onMoved_;
};

constexpr Point kTopLeft{0, 900};
constexpr Point kAway{700, 450};

class HotCornerMonitorTest : public ::testing::Test {
 protected:
  ManualClock clock;
  ScriptedPointer pointer;
  int fired = 0;
  HotCornerMonitor monitor{clock, pointer, [this] { ++fired; }};
};

TEST_F(HotCornerMonitorTest, RestingFiresOncePerVisitAndSwipingThroughNever) {
  monitor.apply(Corner::topLeft, CornerModifier::none);
  pointer.moveTo(kTopLeft);
  clock.advance(100ms);
  pointer.moveTo(kAway);
  clock.advance(1s);
  EXPECT_EQ(fired, 0) << "through the corner and out within 0.15 s";

  // No motion arrives while the pointer rests: the timer completes the dwell.
  pointer.moveTo({1, 899});
  clock.advance(140ms);
  EXPECT_EQ(fired, 0);
  // The first tick at or after 0.15 s: 150 ms, or 200 ms where the
  // difference of the two uptimes rounds just below the dwell.
  clock.advance(60ms);
  EXPECT_EQ(fired, 1);
  clock.advance(3s);
  pointer.moveTo(kTopLeft);
  EXPECT_EQ(fired, 1) << "once per visit";

  pointer.moveTo(kAway);
  pointer.moveTo(kTopLeft);
  clock.advance(200ms);
  EXPECT_EQ(fired, 2) << "a new visit fires again";
}

TEST_F(HotCornerMonitorTest, AButtonHeldNearTheCornerBlocksItUntilThePointerLeaves) {
  monitor.apply(Corner::topLeft, CornerModifier::none);
  pointer.pressed = 1;
  pointer.moveTo({15, 885});  // dragging towards the corner
  EXPECT_TRUE(monitor.blockedUntilLeave());
  pointer.moveTo(kTopLeft);
  pointer.pressed = 0;  // dropped in the corner
  clock.advance(1s);
  EXPECT_EQ(fired, 0);

  pointer.moveTo({20, 880});  // still within 22 points on both axes
  clock.advance(1s);
  EXPECT_EQ(fired, 0);
  EXPECT_TRUE(monitor.blockedUntilLeave());

  pointer.moveTo({23, 877});
  EXPECT_FALSE(monitor.blockedUntilLeave());
  pointer.moveTo(kTopLeft);
  clock.advance(200ms);
  EXPECT_EQ(fired, 1);
}

TEST_F(HotCornerMonitorTest, TheModifierMustBeHeldForTheWholeDwell) {
  monitor.apply(Corner::topLeft, CornerModifier::option);
  pointer.moveTo(kTopLeft);
  clock.advance(500ms);
  EXPECT_EQ(fired, 0) << "resting without the key";

  pointer.flags = EventFlags::option;  // pressed while resting: the dwell starts now
  clock.advance(100ms);
  pointer.flags = 0;  // released before 0.15 s
  clock.advance(500ms);
  EXPECT_EQ(fired, 0);

  pointer.flags = EventFlags::option | EventFlags::shift;
  clock.advance(100ms);
  EXPECT_EQ(fired, 0);
  clock.advance(100ms);
  EXPECT_EQ(fired, 1);
}

TEST_F(HotCornerMonitorTest, CornersWhereDisplaysMeetNeverFire) {
  struct Case {
    const char* arrangement;
    Corner corner;
    std::vector<Rect> frames;
    Point shared;  // a corner of one display that touches the other
    Point outer;   // a real corner
  };
  const std::vector<Case> cases{
      {"side by side",
       Corner::topRight,
       {Rect{{0, 0}, {1440, 900}}, Rect{{1440, 0}, {1920, 1080}}},
       {1440, 900},
       {3360, 1080}},
      {"stacked",
       Corner::topLeft,
       {Rect{{0, 0}, {1440, 900}}, Rect{{0, 900}, {1440, 900}}},
       {0, 900},
       {0, 1800}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.arrangement);
    pointer.frames = c.frames;
    fired = 0;
    monitor.apply(c.corner, CornerModifier::none);
    pointer.moveTo(c.shared);
    clock.advance(1s);
    EXPECT_EQ(fired, 0);
    pointer.moveTo(kAway);
    pointer.moveTo(c.outer);
    clock.advance(200ms);
    EXPECT_EQ(fired, 1);
    pointer.moveTo(kAway);
  }
}

TEST_F(HotCornerMonitorTest, ListensOnlyWithACornerAndPollsOnlyNearIt) {
  monitor.apply(Corner::none, CornerModifier::none);
  EXPECT_FALSE(pointer.listening());
  EXPECT_EQ(pointer.watchCalls, 0) << "nothing was ever started";

  monitor.apply(Corner::bottomRight, CornerModifier::none);
  EXPECT_TRUE(pointer.listening());
  pointer.moveTo(kAway);
  EXPECT_EQ(clock.pendingCount(), 0U) << "no timer while the pointer is away";

  pointer.moveTo({1430, 10});
  EXPECT_TRUE(monitor.isPolling());
  EXPECT_EQ(clock.pendingCount(), 1U);
  clock.advance(1s);
  EXPECT_EQ(clock.pendingCount(), 1U) << "one timer at a time while resting near";
  EXPECT_EQ(fired, 0) << "near is not in";

  pointer.moveTo(kAway);
  EXPECT_EQ(clock.pendingCount(), 0U);

  // Changing the corner stops the timer; choosing none stops listening.
  pointer.moveTo({1439, 1});
  monitor.apply(Corner::topLeft, CornerModifier::none);
  EXPECT_EQ(clock.pendingCount(), 0U);
  const int calls = pointer.watchCalls;
  monitor.apply(Corner::topRight, CornerModifier::none);
  EXPECT_EQ(pointer.watchCalls, calls) << "listening is not restarted for another corner";
  monitor.apply(Corner::none, CornerModifier::none);
  EXPECT_FALSE(pointer.listening());
}

}  // namespace
}  // namespace orrery::app
