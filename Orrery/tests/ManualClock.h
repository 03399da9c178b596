// ManualClock: a Clock whose time only moves when a test says so.
//
// advance() moves both wall and monotonic time forward and runs, in order of
// their due time, the actions that come due on the way, each with the clock
// showing its due time. Actions scheduled by those actions run too when they
// fall inside the step.
//
// Thread rules: test code, main thread. Handles must not outlive the clock.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>

#include "Orrery/base/Clock.h"

namespace orrery::app::testing {

class ManualClock final : public Clock {
 public:
  explicit ManualClock(Date start = dateFromReferenceSeconds(800'000'000)) : now_(start) {}

  Date now() const override { return now_; }
  MonotonicTime monotonicNow() const override { return monotonic_; }

  ScheduledAction runAfter(std::chrono::milliseconds delay, std::function<void()> action) override {
    const Key key{monotonic_ + std::max(delay, std::chrono::milliseconds(0)), next_++};
    pending_.emplace(key, std::move(action));
    return ScheduledAction([this, key] { pending_.erase(key); });
  }

  void advance(std::chrono::milliseconds step) {
    const MonotonicTime target = monotonic_ + step;
    while (!pending_.empty() && pending_.begin()->first.first <= target) {
      auto due = pending_.extract(pending_.begin());
      moveTo(due.key().first);
      due.mapped()();
    }
    moveTo(target);
  }

  // Actions scheduled and neither run nor cancelled.
  std::size_t pendingCount() const { return pending_.size(); }

 private:
  using Key = std::pair<MonotonicTime, std::uint64_t>;

  void moveTo(MonotonicTime time) {
    now_ += std::chrono::duration_cast<Date::duration>(time - monotonic_);
    monotonic_ = time;
  }

  Date now_;
  MonotonicTime monotonic_{};
  std::uint64_t next_ = 0;
  std::map<Key, std::function<void()>> pending_;
};

}  // namespace orrery::app::testing
