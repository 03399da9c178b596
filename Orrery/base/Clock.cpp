#include "Orrery/base/Clock.h"

#include <utility>

namespace orrery::app {

ScheduledAction::ScheduledAction(ScheduledAction&& other) noexcept
    : cancel_(std::exchange(other.cancel_, {})) {}

ScheduledAction& ScheduledAction::operator=(ScheduledAction&& other) noexcept {
  if (this != &other) {
    cancel();
    cancel_ = std::exchange(other.cancel_, {});
  }
  return *this;
}

void ScheduledAction::cancel() {
  // Taken out first: the canceller may destroy what owns this handle.
  if (auto cancel = std::exchange(cancel_, {})) cancel();
}

}  // namespace orrery::app
