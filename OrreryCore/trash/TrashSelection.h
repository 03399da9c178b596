// TrashSelection: the mode in which the user ticks apps to move to the
// Trash.
//
// Entering the mode fixes which apps may be ticked (`deletable`, with the
// path each had when the mode began); the overlay draws a tick box on those.
// Every enter and exit bumps `session`, so an answer that arrives late from
// an asynchronous step of an older session (a confirmation, a finished move)
// can be recognised and dropped.
//
// Thread rules: a plain value owned by the overlay model on the main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/catalog/AppInfo.h"

namespace orrery {

struct TrashSelection {
  bool isActive = false;
  AppIDSet selected;
  std::int64_t session = 0;
  std::unordered_map<std::string, std::string> deletable;  // app ID -> bundle path

  // Starts a session: only the preselected app (if any) is ticked.
  void enter(std::unordered_map<std::string, std::string> deletableApps,
             const std::optional<std::string>& preselect = std::nullopt);
  // Ends the session and forgets everything but the session number.
  void exit();

  // Ticks or unticks one app; nothing while the mode is off.
  void toggle(const std::string& id);
  // Ticks those of the given apps that may be moved, in addition to what is
  // ticked; nothing while the mode is off. Apps that can't be moved are
  // left unticked rather than counted as skipped later.
  void selectAll(std::span<const std::string> ids);
  // After a rescan: forgets apps that are gone, and deletable apps whose
  // path changed (the tick was for what was at the old path). An app that
  // was ticked without being deletable stays ticked while it exists.
  void retain(const std::unordered_map<std::string, AppInfo>& apps);

  bool contains(const std::string& id) const { return selected.contains(id); }
  std::size_t count() const { return selected.size(); }
  bool isDeletable(const std::string& id) const { return deletable.contains(id); }
  // The ticked apps that may be moved.
  AppIDSet deletableSelected() const;
  // The path recorded for an app when the session began.
  std::optional<std::string> url(const std::string& id) const;

  friend bool operator==(const TrashSelection&, const TrashSelection&) = default;
};

}  // namespace orrery
