// TriggerChecks: the self-test of "--trigger-test": the trigger rules run
// inside the real program, each logged by name with its result.
//
// The hot corner runs through a HotCornerMonitor with scripted sources and
// its own stepped clock (so a 0.15 s dwell takes no real time); the corner
// that fires toggles the real overlay. The shortcut runs through a
// GlobalHotKey over an in-process grab service where combinations can be
// taken by "another app" and presses simulated. The program's own triggers
// are not touched.
//
// Thread rules: main thread only.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace orrery::app {

class TriggerChecks {
 public:
  struct Result {
    std::string name;
    bool passed = false;
  };

  // `toggleOverlay` and `overlayVisible` reach the real overlay.
  TriggerChecks(std::function<void()> toggleOverlay, std::function<bool()> overlayVisible)
      : toggleOverlay_(std::move(toggleOverlay)), overlayVisible_(std::move(overlayVisible)) {}

  // Runs every check, logging "trigger-test: <name>: ok" or "… FEHLER".
  std::vector<Result> run();

 private:
  std::function<void()> toggleOverlay_;
  std::function<bool()> overlayVisible_;
};

}  // namespace orrery::app
