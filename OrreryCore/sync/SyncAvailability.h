// SyncAvailability: whether sync can run at all on this machine, and the
// text the settings show when it cannot.
//
// Checked in order: a build without the cloud entitlement can never sync; an
// account that is signed out, or whose state is not known yet, cannot; a
// restricted account (parental controls, device management) cannot.
//
// Thread rules: pure functions; the text is localized at the call.
#pragma once

#include <optional>
#include <string>

namespace orrery {

enum class SyncAvailability { unavailableInBuild, noAccount, restricted, available };

// `accountAvailable` is nothing while the account state is unknown.
SyncAvailability decideSyncAvailability(bool hasEntitlement, std::optional<bool> accountAvailable,
                                        bool restricted);

// The reason shown in the settings; nothing when sync is available.
std::optional<std::string> availabilityText(SyncAvailability availability);

}  // namespace orrery
