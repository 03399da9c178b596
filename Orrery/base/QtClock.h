// QtClock: the Clock of the running program. Wall time from the system
// clock, monotonic time from the steady clock, timers as one-shot QTimers on
// the main thread's event loop.
//
// The timers are precise: they are rare one-shot timers (a confirmation in
// 5 s, a recheck in 20.5 s, a 1 s gathering window), and Qt's coarse timers
// could move them by 5 %. No timer repeats, so an idle program sleeps.
//
// Thread rules: main thread only. Timers still pending when the clock is
// destroyed are destroyed with it.
#pragma once

#include <QObject>

#include "Orrery/base/Clock.h"

namespace orrery::app {

class QtClock final : public Clock {
 public:
  QtClock() = default;

  Date now() const override;
  MonotonicTime monotonicNow() const override;
  ScheduledAction runAfter(std::chrono::milliseconds delay, std::function<void()> action) override;

 private:
  QObject timers_;  // parent of the pending timers
};

}  // namespace orrery::app
