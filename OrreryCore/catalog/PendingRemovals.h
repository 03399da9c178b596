// PendingRemovals: apps that vanished from a scan, kept in place for a short
// while before they really leave.
//
// An installer that replaces a bundle deletes it and copies it back; a scan
// in between misses the app. Dropping it at once would lose its place in the
// arrangement. So an app the catalog knows (installed before, or referred to
// by the arrangement) that a scan misses is kept, listed with its last known
// record, until scans have missed it for `confirmationDelay`; only a scan at
// or after that moment removes it. An app that comes back in time is simply
// installed again. Apps the user moved to the Trash from the overlay are
// marked as intentionally removed and leave at the next scan that misses
// them, as long as the mark is younger than `intentionalGrace`.
//
// While an installer rewrites a bundle its Info.plist can be briefly
// unreadable; the bundle then shows up under its path as id, at the very
// place of the app pending removal. Such a record is held back so the two
// never show side by side.
//
// Not persisted: after a restart every missing app starts a fresh delay.
//
// Thread rules: a plain value, owned and mutated by the catalog on the main
// thread.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "OrreryCore/base/Date.h"
#include "OrreryCore/catalog/AppInfo.h"

namespace orrery {

struct PendingRemovals {
  static constexpr std::chrono::seconds confirmationDelay{20};
  static constexpr std::chrono::seconds intentionalGrace{30};

  struct Outcome {
    // The apps to treat as installed now: the scan (less held-back path
    // records), then the pending apps in ascending id order.
    std::vector<AppInfo> installed;
    // Missing apps whose places the arrangement must keep for now.
    AppIDSet keep;
    // When the earliest pending removal becomes due; nothing when none is pending.
    std::optional<Date> nextCheck;

    friend bool operator==(const Outcome&, const Outcome&) = default;
  };

  // App id → when scans first missed it.
  std::map<std::string, Date> missingSince;
  // App id → when the user removed it on purpose.
  std::map<std::string, Date> intentionallyRemoved;

  // Records each id with `now`, replacing an earlier date.
  void markIntentionallyRemoved(const AppIDSet& ids, Date now);

  // Judges one finished scan. `previous` is the catalog's current apps by id,
  // `referenced` the ids the arrangement refers to.
  Outcome evaluate(const std::vector<AppInfo>& scanned,
                   const std::unordered_map<std::string, AppInfo>& previous, const AppIDSet& referenced,
                   Date now);

  friend bool operator==(const PendingRemovals&, const PendingRemovals&) = default;
};

}  // namespace orrery
