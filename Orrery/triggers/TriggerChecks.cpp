#include "Orrery/triggers/TriggerChecks.h"

#include <map>
#include <set>
#include <utility>

#include "Orrery/base/Logging.h"
#include "Orrery/triggers/GlobalHotKey.h"
#include "Orrery/triggers/HotCornerMonitor.h"
#include "OrreryCore/triggers/EventFlags.h"

namespace orrery::app {

namespace {

using namespace std::chrono_literals;

// Time that moves only when the test says; due actions run on the way.
class SteppedClock final : public Clock {
 public:
  Date now() const override {
    return Date{} + std::chrono::duration_cast<Date::duration>(monotonic_.time_since_epoch());
  }
  MonotonicTime monotonicNow() const override { return monotonic_; }
  ScheduledAction runAfter(std::chrono::milliseconds delay, std::function<void()> action) override {
    const Key key{monotonic_ + std::max(delay, 0ms), next_++};
    pending_.emplace(key, std::move(action));
    return ScheduledAction([this, key] { pending_.erase(key); });
  }
  void advance(std::chrono::milliseconds step) {
    const MonotonicTime target = monotonic_ + step;
    while (!pending_.empty() && pending_.begin()->first.first <= target) {
      auto due = pending_.extract(pending_.begin());
      monotonic_ = due.key().first;
      due.mapped()();
    }
    monotonic_ = target;
  }

 private:
  using Key = std::pair<MonotonicTime, std::uint64_t>;
  MonotonicTime monotonic_{};
  std::uint64_t next_ = 0;
  std::map<Key, std::function<void()>> pending_;
};

// A desktop of one 1440 × 900 display whose pointer the checks place.
class ScriptedPointer final : public GlobalPointer {
 public:
  void watchMotion(std::function<void()> onMoved) override { onMoved_ = std::move(onMoved); }
  Point position() override { return point; }
  std::vector<Rect> screens() override { return frames; }
  std::uint64_t modifierFlags() override { return flags; }
  std::uint32_t buttons() override { return pressed; }

  void moveTo(Point to) {
    point = to;
    if (onMoved_) onMoved_();
  }
  bool listening() const { return static_cast<bool>(onMoved_); }

  Point point{700, 450};
  std::vector<Rect> frames{Rect{{0, 0}, {1440, 900}}};
  std::uint64_t flags = 0;
  std::uint32_t pressed = 0;

 private:
  std::function<void()> onMoved_;
};

// Grabs in the process only: a combination can be held by "another app",
// and presses are simulated.
class SimulatedGrabs final : public KeyGrabService {
 public:
  Result grab(const HotKey& key) override {
    ++grabCalls;
    if (takenElsewhere.contains(key)) return {Outcome::taken, 0, 10};
    const GrabId id = next_++;
    held[id] = key;
    return {Outcome::grabbed, id, 0};
  }
  void release(GrabId id) override { held.erase(id); }
  void press(const HotKey& key) const {
    for (const auto& [id, heldKey] : held)
      if (heldKey == key) pressed(id);
  }

  struct Less {
    bool operator()(const HotKey& a, const HotKey& b) const {
      return std::pair(a.keyCode, a.carbonModifiers) < std::pair(b.keyCode, b.carbonModifiers);
    }
  };
  std::set<HotKey, Less> takenElsewhere;
  std::map<GrabId, HotKey> held;
  int grabCalls = 0;

 private:
  GrabId next_ = 1;
};

constexpr Point kTopLeft{0, 900};
constexpr Point kMiddle{700, 450};

}  // namespace

std::vector<TriggerChecks::Result> TriggerChecks::run() {
  std::vector<Result> results;
  const auto check = [&results](const std::string& name, bool passed) {
    results.push_back({name, passed});
    if (passed)
      qCInfo(triggerLog, "trigger-test: %s: ok", name.c_str());
    else
      qCWarning(triggerLog, "trigger-test: %s: FEHLER", name.c_str());
  };

  // The corner detector alone.
  {
    HotCornerDetector detector(Corner::topLeft, 2.0, 0.15);
    const std::vector<Rect> screen{Rect{{0, 0}, {1440, 900}}};
    const bool early = detector.update(kTopLeft, screen, false, 10.0);
    const bool late = detector.update(kTopLeft, screen, false, 10.2);
    check("corner detector fires after the dwell", !early && late);
    const std::vector<Rect> sideBySide{Rect{{0, 0}, {1440, 900}}, Rect{{1440, 0}, {1440, 900}}};
    HotCornerDetector shared(Corner::topRight, 2.0, 0.15);
    shared.update({1440, 900}, sideBySide, false, 1.0);
    check("shared corner of side-by-side displays never fires",
          !shared.update({1440, 900}, sideBySide, false, 2.0));
  }

  // The monitor, fed by scripted sources.
  {
    SteppedClock clock;
    ScriptedPointer pointer;
    int fired = 0;
    const bool wasVisible = overlayVisible_();
    HotCornerMonitor monitor(clock, pointer, [&] {
      ++fired;
      toggleOverlay_();
    });
    monitor.apply(Corner::none, CornerModifier::none);
    check("no corner: nothing listens", !pointer.listening());
    monitor.apply(Corner::topLeft, CornerModifier::none);
    check("a corner: motion is listened to", pointer.listening());

    pointer.moveTo(kTopLeft);
    clock.advance(100ms);
    pointer.moveTo(kMiddle);
    clock.advance(500ms);
    check("swipe-through does not trigger", fired == 0 && !monitor.isPolling());

    pointer.moveTo(kTopLeft);
    clock.advance(200ms);
    check("corner dwell opens overlay", fired == 1 && overlayVisible_() != wasVisible);
    clock.advance(2s);
    check("corner fires once per visit", fired == 1);
    pointer.moveTo(kMiddle);
    if (overlayVisible_() != wasVisible) toggleOverlay_();

    monitor.setButtonsSource([] { return 1U; });
    pointer.moveTo({10, 890});
    monitor.setButtonsSource([] { return 0U; });
    pointer.moveTo(kTopLeft);
    clock.advance(500ms);
    const bool blocked = fired == 1 && monitor.blockedUntilLeave();
    pointer.moveTo(kMiddle);
    pointer.moveTo(kTopLeft);
    clock.advance(200ms);
    check("drag into the corner blocks it until the pointer leaves", blocked && fired == 2);
    pointer.moveTo(kMiddle);
    if (overlayVisible_() != wasVisible) toggleOverlay_();

    monitor.apply(Corner::topLeft, CornerModifier::control);
    pointer.flags = EventFlags::control;
    pointer.moveTo(kTopLeft);
    clock.advance(100ms);
    pointer.flags = 0;
    clock.advance(500ms);
    check("modifier released mid-rest does not trigger", fired == 2);
    pointer.moveTo(kMiddle);
    monitor.apply(Corner::none, CornerModifier::none);
    check("polling stops with the corner",
          !monitor.isPolling() && clock.monotonicNow() > Clock::MonotonicTime{});
  }

  // The shortcut over simulated grabs.
  {
    SimulatedGrabs grabs;
    GlobalHotKey::Router router(grabs);
    int pressed = 0;
    GlobalHotKey hotKey(router, [&] { ++pressed; });
    const HotKey optionSpace{49, HotKey::kOption};
    const HotKey commandO{31, HotKey::kCommand};
    const bool first = hotKey.registerKey(optionSpace);
    const int callsBefore = grabs.grabCalls;
    check("same combo again is a no-op success", first && hotKey.registerKey(optionSpace) &&
                                                     grabs.grabCalls == callsBefore &&
                                                     grabs.held.size() == 1);
    grabs.press(optionSpace);
    check("simulated press calls back", pressed == 1);
    grabs.takenElsewhere.insert(commandO);
    const bool taken = hotKey.registerKey(commandO);
    grabs.press(optionSpace);
    check("taken combo returns false, old key kept",
          !taken && hotKey.lastOutcome() == KeyGrabService::Outcome::taken &&
              hotKey.currentKey() == optionSpace && pressed == 2);
    check("no key always succeeds and removes the shortcut",
          hotKey.registerKey(std::nullopt) && grabs.held.empty() && !hotKey.currentKey());
  }

  int failures = 0;
  for (const Result& result : results) failures += result.passed ? 0 : 1;
  qCInfo(triggerLog, "trigger-test: %d von %zu Prüfungen bestanden",
         static_cast<int>(results.size()) - failures, results.size());
  return results;
}

}  // namespace orrery::app
