#include "Orrery/base/QtClock.h"

#include <QPointer>
#include <QTimer>

#include <algorithm>

namespace orrery::app {

Date QtClock::now() const { return std::chrono::system_clock::now(); }

Clock::MonotonicTime QtClock::monotonicNow() const { return std::chrono::steady_clock::now(); }

ScheduledAction QtClock::runAfter(std::chrono::milliseconds delay, std::function<void()> action) {
  auto* timer = new QTimer(&timers_);
  timer->setSingleShot(true);
  timer->setTimerType(Qt::PreciseTimer);
  QObject::connect(timer, &QTimer::timeout, timer, [timer, action = std::move(action)] {
    // Deleted once control is back in the event loop: the action may cancel
    // its own handle, which must find the timer still there.
    timer->deleteLater();
    action();
  });
  timer->start(std::max(delay, std::chrono::milliseconds(0)));
  return ScheduledAction([timer = QPointer<QTimer>(timer)] {
    if (!timer) return;
    timer->stop();
    timer->deleteLater();
  });
}

}  // namespace orrery::app
