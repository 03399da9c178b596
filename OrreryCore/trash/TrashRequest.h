// TrashRequest: what the confirmation sheet shows before apps are moved to
// the Trash.
//
// Built from the ticked apps that may be moved; `skipped` counts ticked apps
// that may not, so the sheet can say they stay. The apps are in name order,
// so the list reads like the Finder's.
//
// Thread rules: a plain value; texts are localized at the call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/catalog/AppInfo.h"
#include "OrreryCore/trash/ConfirmedTrash.h"

namespace orrery {

struct TrashRequest {
  static constexpr std::size_t maxListedNames = 10;

  std::vector<AppInfo> apps;
  std::int64_t skipped = 0;

  // The apps of `ids` that the catalog knows (IDs it does not know are left
  // out), sorted by name, equal names by ID.
  TrashRequest(const AppIDSet& ids, const std::unordered_map<std::string, AppInfo>& catalog,
               std::int64_t skippedCount);

  // "Move N apps to the Trash?"
  std::string title() const;
  // The names, a warning about apps still running, the skipped count and
  // the restore hint, as paragraphs separated by a blank line.
  std::string message(const AppIDSet& runningIDs) const;
  // "You can restore them from the Trash."
  static std::string restoreHint();

  ConfirmedTrash confirmed() const { return ConfirmedTrash(apps); }

  friend bool operator==(const TrashRequest&, const TrashRequest&) = default;
};

}  // namespace orrery
