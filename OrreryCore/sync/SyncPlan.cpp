#include "OrreryCore/sync/SyncPlan.h"

#include <unordered_set>

#include "OrreryCore/arrangement/LayoutMerge.h"

namespace orrery::SyncPlan {

namespace {

constexpr std::int64_t kConfirmationThreshold = 20;

bool sameSetRecently(const std::optional<DeviceReport>& last, const AppIDSet& installed, Date now) {
  return last && last->installed == installed && now - last->lastSeen < reportRefresh;
}

}  // namespace

const SharedSnapshot& Incoming::snapshot() const {
  if (const auto* adopt = std::get_if<Adopt>(&value_)) return adopt->remote;
  if (const auto* ask = std::get_if<Ask>(&value_)) return ask->remote;
  return std::get<Merge>(value_).result;
}

bool Incoming::sendBack() const {
  const auto* merge = std::get_if<Merge>(&value_);
  return merge && merge->sendBack;
}

Incoming incoming(const std::optional<SharedSnapshot>& base, const SharedSnapshot& local,
                  const SharedSnapshot& remote, bool localUserEdited) {
  if (!base) return localUserEdited ? Incoming::ask(remote) : Incoming::adoptRemote(remote);
  SharedSnapshot result = SharedSnapshot::merged(*base, local, remote);
  const bool sendBack = !(result.layout == remote.layout && result.settings == remote.settings);
  return Incoming::merge(std::move(result), sendBack);
}

bool sameContent(const SharedSnapshot& a, const SharedSnapshot& b) {
  return a.layout == b.layout && a.settings == b.settings;
}

bool remoteWinsConflict(const SharedSnapshot& base, const SharedSnapshot& local,
                        const SharedSnapshot& remote) {
  if (local.modified > remote.modified) return false;
  const Layout remoteNewer = LayoutMerge::merge(base.layout, local.layout, remote.layout, false);
  if (remoteNewer == local.layout) return false;
  return remoteNewer != LayoutMerge::merge(base.layout, local.layout, remote.layout, true);
}

Layout keepingLocalArrangement(const Layout& remote, const Layout& localVisible, const AppIDSet& installed) {
  return remote.embedding(localVisible, remote.projected(installed), installed);
}

bool maySendShared(const std::optional<SharedSnapshot>& base, RemoteShared remote) {
  switch (remote) {
    case RemoteShared::none:
      return true;
    case RemoteShared::readable:
      return base.has_value();
    case RemoteShared::unreadable:
      return false;
  }
  return false;
}

bool shouldUploadReport(const std::optional<DeviceReport>& last, const AppIDSet& installed, Date now) {
  if (installed.empty()) return false;
  return !sameSetRecently(last, installed, now);
}

ReportDecision reportDecision(const std::optional<DeviceReport>& last,
                              std::optional<std::int64_t> previousCount, const AppIDSet& installed,
                              bool confirmed, Date now) {
  if (installed.empty() || sameSetRecently(last, installed, now)) return ReportDecision::skip;
  const auto count = static_cast<std::int64_t>(installed.size());
  if (previousCount && *previousCount >= kConfirmationThreshold && 2 * count < *previousCount && !confirmed)
    return ReportDecision::needsConfirmation;
  return ReportDecision::upload;
}

std::optional<Layout> pruned(const std::optional<Layout>& shared, const std::vector<DeviceReport>& reports,
                             const AppIDSet& ownInstalled, const Writers& writers, const Uuid& ownID,
                             Date now) {
  if (!shared) return std::nullopt;

  std::unordered_set<Uuid> reporting;
  for (const DeviceReport& report : reports)
    if (now - report.lastSeen < DeviceReports::window) reporting.insert(report.deviceID);
  // A machine that wrote recently but has not reported may still have apps
  // nobody else lists; pruning now could remove them.
  for (const auto& [id, wrote] : writers)
    if (id != ownID && now - wrote < DeviceReports::window && !reporting.contains(id)) return std::nullopt;

  std::optional<AppIDSet> keep = DeviceReports::liveAppIDs(reports, now);
  if (!keep) return std::nullopt;
  keep->insert(ownInstalled.begin(), ownInstalled.end());

  Layout candidate = shared->pruned(*keep);
  candidate.normalizeFolders();
  if (candidate == *shared) return std::nullopt;
  return candidate;
}

}  // namespace orrery::SyncPlan
