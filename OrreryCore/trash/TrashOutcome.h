// TrashOutcome: what a move to the Trash achieved, and the message that
// tells the user what did not work.
//
// `trashedIDs` are the apps that really left, so the caller removes exactly
// those from the arrangement; `failures` keep the order of the request.
// A failure whose reason is systemOwnedReason() is the kind the user can fix
// only with an administrator password, and the message then explains how.
//
// Thread rules: a plain value; the texts are localized at the call.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "OrreryCore/arrangement/Layout.h"

namespace orrery {

struct TrashOutcome {
  struct Failure {
    std::string name;    // the app's name as the user knows it
    std::string reason;  // a localized, complete sentence
    friend bool operator==(const Failure&, const Failure&) = default;
  };

  AppIDSet trashedIDs;
  std::vector<Failure> failures;

  // "Not all apps could be moved to the Trash"
  static std::string failureTitle();
  // The reason of a failure caused by the bundle belonging to the system.
  static std::string systemOwnedReason();
  // How to delete apps that belong to the system.
  static std::string adminRequiredReason();
  // The reason when the platform gave none.
  static std::string unknownReason();

  // Nothing without failures. Otherwise one "name: reason" line per failure,
  // then, when a failure is system-owned, a blank line and
  // adminRequiredReason().
  std::optional<std::string> failureMessage() const;

  friend bool operator==(const TrashOutcome&, const TrashOutcome&) = default;
};

}  // namespace orrery
