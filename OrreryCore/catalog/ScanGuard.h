// ScanGuard: whether a finished scan of the application folders is believed.
//
// A scan can come back short for reasons that have nothing to do with the
// user uninstalling anything: a volume not yet mounted at login, an
// installer deleting and re-copying a bundle, an event in the middle of an
// update. Applying such a result would drop icons and lose their places. The
// guard judges a whole result by its size against what the catalog already
// knows (the baseline: the larger of the apps it holds and the apps the
// arrangement refers to):
// - an empty scan is never applied;
// - a small catalog (under `minimumBaseline` apps) is never second-guessed;
// - a scan that finds less than half the baseline must first be confirmed by
//   a second scan; the confirming scan is applied whatever its size.
//
// Thread rules: pure functions.
#pragma once

#include <cstddef>

namespace orrery {

enum class ScanDecision { apply, discard, needsConfirmation };

struct ScanGuard {
  ScanGuard() = delete;

  static constexpr std::size_t minimumBaseline = 20;

  static ScanDecision decide(std::size_t scanned, std::size_t baseline, bool confirming);
};

}  // namespace orrery
