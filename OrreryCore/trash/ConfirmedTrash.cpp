#include "OrreryCore/trash/ConfirmedTrash.h"

#include <atomic>
#include <memory>

namespace orrery {

TrashOutcome ConfirmedTrash::outcome(const std::vector<AppInfo>& apps,
                                     const TrashService::Failures& failures) {
  TrashOutcome result;
  for (const AppInfo& app : apps) {
    const auto failure = failures.find(app.url);
    if (failure == failures.end()) {
      result.trashedIDs.insert(app.id);
      continue;
    }
    std::string reason;
    if (failure->second.kind == TrashFailure::Kind::systemOwned)
      reason = TrashOutcome::systemOwnedReason();
    else if (!failure->second.description.empty())
      reason = failure->second.description;
    else
      reason = TrashOutcome::unknownReason();
    result.failures.push_back({app.name, std::move(reason)});
  }
  return result;
}

void ConfirmedTrash::perform(TrashService& service, std::function<void(TrashOutcome)> done) const {
  std::vector<std::string> paths;
  paths.reserve(apps_.size());
  for (const AppInfo& app : apps_) paths.push_back(app.url);
  auto answered = std::make_shared<std::atomic<bool>>(false);
  service.moveToTrash(std::move(paths), [apps = apps_, done = std::move(done),
                                         answered](const TrashService::Failures& failures) {
    if (answered->exchange(true)) return;
    if (done) done(outcome(apps, failures));
  });
}

}  // namespace orrery
