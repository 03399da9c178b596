// Clock: "now" and one-shot timers for the services of the application.
//
// Services never read the system clock or start a timer on their own; they
// ask the Clock they were given. The program passes a QtClock; tests pass a
// manual clock and move time by hand, so a 20-second grace period costs a
// test no real time. Wall time (`now`) is what dates are compared with;
// monotonic time is what intervals are measured in, since the wall clock
// may jump.
//
// A timer is a ScheduledAction: the action runs once, on the main thread,
// unless the handle is cancelled or destroyed first. An owner that keeps its
// handles as members can never be called back after it is gone.
//
// Thread rules: main thread only; actions run on the main thread.
#pragma once

#include <chrono>
#include <functional>

#include "OrreryCore/base/Date.h"

namespace orrery::app {

class ScheduledAction {
 public:
  ScheduledAction() = default;
  // `cancel` stops the action; it is called at most once.
  explicit ScheduledAction(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
  ScheduledAction(ScheduledAction&& other) noexcept;
  ScheduledAction& operator=(ScheduledAction&& other) noexcept;
  ScheduledAction(const ScheduledAction&) = delete;
  ScheduledAction& operator=(const ScheduledAction&) = delete;
  ~ScheduledAction() { cancel(); }

  // Makes sure the action does not run (any more). Harmless after it ran.
  void cancel();
  // Whether the handle still refers to an action (ran or not).
  bool isSet() const { return static_cast<bool>(cancel_); }

 private:
  std::function<void()> cancel_;
};

class Clock {
 public:
  using MonotonicTime = std::chrono::steady_clock::time_point;

  virtual ~Clock() = default;

  virtual Date now() const = 0;
  virtual MonotonicTime monotonicNow() const = 0;
  // Runs `action` once after `delay` (a negative one counts as zero).
  [[nodiscard]] virtual ScheduledAction runAfter(std::chrono::milliseconds delay,
                                                 std::function<void()> action) = 0;

 protected:
  Clock() = default;
  Clock(const Clock&) = default;
  Clock& operator=(const Clock&) = default;
};

}  // namespace orrery::app
