#include "OrreryCore/sync/SyncAvailability.h"

#include "OrreryCore/text/Localized.h"

namespace orrery {

SyncAvailability decideSyncAvailability(bool hasEntitlement, std::optional<bool> accountAvailable,
                                        bool restricted) {
  if (!hasEntitlement) return SyncAvailability::unavailableInBuild;
  if (!accountAvailable.value_or(false)) return SyncAvailability::noAccount;
  if (restricted) return SyncAvailability::restricted;
  return SyncAvailability::available;
}

std::optional<std::string> availabilityText(SyncAvailability availability) {
  switch (availability) {
    case SyncAvailability::unavailableInBuild:
      return text::localized("Not available in this build",
                             "Sync settings: this build of the program cannot use iCloud");
    case SyncAvailability::noAccount:
      return text::localized("Not signed in to iCloud", "Sync settings: no iCloud account is signed in");
    case SyncAvailability::restricted:
      return text::localized("iCloud is restricted on this Mac",
                             "Sync settings: iCloud use is restricted (parental controls or management)");
    case SyncAvailability::available:
      break;
  }
  return std::nullopt;
}

}  // namespace orrery
