// HotCornerMonitor: opens the overlay when the pointer rests in the chosen
// screen corner, by feeding HotCornerDetector from the desktop's pointer.
//
// While a corner is chosen it listens to pointer motion anywhere; each move
// reads the pointer, the displays, the modifiers and the buttons through
// four sources (by default those of the GlobalPointer, each replaceable so
// tests and the self-test can script them). Near the corner (within the
// tolerance plus 20 points) a 0.05 s timer keeps reading, so a dwell
// completes while the pointer rests and no motion arrives; away from the
// corner nothing runs. With no corner chosen it does not even listen.
//
// A button held near the corner blocks it (a drag that reaches the corner
// never fires) until the pointer has left the near zone again.
//
// Thread rules: main thread only; the clock's actions and the pointer's
// callback run there.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "Orrery/base/Clock.h"
#include "Orrery/triggers/GlobalPointer.h"
#include "OrreryCore/triggers/HotCornerDetector.h"

namespace orrery::app {

class HotCornerMonitor {
 public:
  static constexpr std::chrono::milliseconds pollInterval{50};

  using PointSource = std::function<Point()>;
  using ScreensSource = std::function<std::vector<Rect>()>;
  using ModifierSource = std::function<std::uint64_t()>;
  using ButtonsSource = std::function<std::uint32_t()>;

  // `clock` and `pointer` must outlive the monitor. `onTrigger` is called
  // each time the corner fires.
  HotCornerMonitor(Clock& clock, GlobalPointer& pointer, std::function<void()> onTrigger);
  ~HotCornerMonitor();
  HotCornerMonitor(const HotCornerMonitor&) = delete;
  HotCornerMonitor& operator=(const HotCornerMonitor&) = delete;

  // Starts over with a fresh detector for `corner` and `modifier`; listens
  // to motion only while the corner is not none.
  void apply(Corner corner, CornerModifier modifier);
  // One observation of the pointer; motion and the timer call it.
  void pointerMoved();

  void setPointSource(PointSource source) { pointSource_ = std::move(source); }
  void setScreensSource(ScreensSource source) { screensSource_ = std::move(source); }
  void setModifierSource(ModifierSource source) { modifierSource_ = std::move(source); }
  void setButtonsSource(ButtonsSource source) { buttonsSource_ = std::move(source); }

  const HotCornerDetector& detector() const { return detector_; }
  bool blockedUntilLeave() const { return blockedUntilLeave_; }
  bool isListening() const { return listening_; }
  bool isPolling() const { return timer_.isSet(); }

 private:
  HotCornerDetector freshDetector() const;
  void startTimer();

  Clock& clock_;
  GlobalPointer& pointer_;
  std::function<void()> onTrigger_;
  HotCornerDetector detector_;
  PointSource pointSource_;
  ScreensSource screensSource_;
  ModifierSource modifierSource_;
  ButtonsSource buttonsSource_;
  ScheduledAction timer_;
  bool listening_ = false;
  bool blockedUntilLeave_ = false;
};

}  // namespace orrery::app
