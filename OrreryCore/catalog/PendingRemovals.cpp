#include "OrreryCore/catalog/PendingRemovals.h"

#include <filesystem>
#include <unordered_set>

namespace orrery {

namespace {

// "." and ".." resolved as text, no trailing slash: how a bundle without an
// identifier is named by the scanner.
std::string standardizedPath(const std::string& url) {
  std::string text = std::filesystem::path(url).lexically_normal().string();
  while (text.size() > 1 && text.back() == '/') text.pop_back();
  return text;
}

}  // namespace

void PendingRemovals::markIntentionallyRemoved(const AppIDSet& ids, Date now) {
  for (const std::string& id : ids) intentionallyRemoved[id] = now;
}

PendingRemovals::Outcome PendingRemovals::evaluate(const std::vector<AppInfo>& scanned,
                                                   const std::unordered_map<std::string, AppInfo>& previous,
                                                   const AppIDSet& referenced, Date now) {
  AppIDSet present;
  present.reserve(scanned.size());
  for (const AppInfo& app : scanned) present.insert(app.id);

  AppIDSet known = referenced;
  for (const auto& [id, app] : previous) known.insert(id);

  // Only marks younger than the grace period count.
  std::erase_if(intentionallyRemoved,
                [&](const auto& entry) { return now - entry.second >= intentionalGrace; });

  std::map<std::string, Date> stillMissing;
  for (const std::string& id : known) {
    if (present.contains(id)) continue;
    if (const auto mark = intentionallyRemoved.find(id); mark != intentionallyRemoved.end()) {
      // The user removed it: it leaves now, without the delay.
      intentionallyRemoved.erase(mark);
      continue;
    }
    const auto since = missingSince.find(id);
    const Date start = since != missingSince.end() ? since->second : now;
    if (now - start >= confirmationDelay) continue;  // confirmed: it leaves
    stillMissing.emplace(id, start);
  }
  // Ids that came back are forgotten; vanishing again starts a fresh delay.
  missingSince = std::move(stillMissing);

  std::unordered_set<std::string> pendingPaths;
  for (const auto& [id, start] : missingSince) {
    if (const auto app = previous.find(id); app != previous.end())
      pendingPaths.insert(standardizedPath(app->second.url));
  }

  Outcome outcome;
  outcome.installed.reserve(scanned.size() + missingSince.size());
  for (const AppInfo& app : scanned) {
    // A bundle that lost its identifier mid-update, at the place of an app
    // pending removal.
    const bool heldBack = !pendingPaths.empty() && !known.contains(app.id) &&
                          app.id == standardizedPath(app.url) && pendingPaths.contains(app.id);
    if (!heldBack) outcome.installed.push_back(app);
  }
  std::optional<Date> earliest;
  for (const auto& [id, start] : missingSince) {
    if (const auto app = previous.find(id); app != previous.end()) outcome.installed.push_back(app->second);
    outcome.keep.insert(id);
    if (!earliest || start < *earliest) earliest = start;
  }
  if (earliest) outcome.nextCheck = *earliest + confirmationDelay;
  return outcome;
}

}  // namespace orrery
