#include "OrreryCore/trash/TrashSelection.h"

namespace orrery {

void TrashSelection::enter(std::unordered_map<std::string, std::string> deletableApps,
                           const std::optional<std::string>& preselect) {
  isActive = true;
  ++session;
  deletable = std::move(deletableApps);
  selected.clear();
  if (preselect) selected.insert(*preselect);
}

void TrashSelection::exit() {
  ++session;
  isActive = false;
  selected.clear();
  deletable.clear();
}

void TrashSelection::toggle(const std::string& id) {
  if (!isActive) return;
  if (!selected.erase(id)) selected.insert(id);
}

void TrashSelection::selectAll(std::span<const std::string> ids) {
  if (!isActive) return;
  for (const std::string& id : ids)
    if (isDeletable(id)) selected.insert(id);
}

void TrashSelection::retain(const std::unordered_map<std::string, AppInfo>& apps) {
  std::erase_if(deletable, [&](const auto& entry) {
    const auto app = apps.find(entry.first);
    if (app != apps.end() && app->second.url == entry.second) return false;
    selected.erase(entry.first);
    return true;
  });
  std::erase_if(selected, [&](const std::string& id) { return !apps.contains(id); });
}

AppIDSet TrashSelection::deletableSelected() const {
  AppIDSet out;
  for (const std::string& id : selected)
    if (isDeletable(id)) out.insert(id);
  return out;
}

std::optional<std::string> TrashSelection::url(const std::string& id) const {
  const auto found = deletable.find(id);
  if (found == deletable.end()) return std::nullopt;
  return found->second;
}

}  // namespace orrery
