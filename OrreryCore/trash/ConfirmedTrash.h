// ConfirmedTrash: a trash request the user has confirmed, the only thing
// that can actually move apps to the Trash.
//
// It can be made only by TrashRequest::confirmed(), so no code path moves
// apps without the confirmation sheet having shown them first.
//
// Thread rules: a plain value. perform() may be called on any thread; its
// completion runs on whatever thread the service reports on.
#pragma once

#include <functional>
#include <vector>

#include "OrreryCore/catalog/AppInfo.h"
#include "OrreryCore/trash/TrashOutcome.h"
#include "OrreryCore/trash/TrashService.h"

namespace orrery {

class ConfirmedTrash {
 public:
  const std::vector<AppInfo>& apps() const { return apps_; }

  // Asks the service to move every app's bundle and reports which apps
  // left and why the others did not. `done` is called once, even if a
  // faulty service answers twice.
  void perform(TrashService& service, std::function<void(TrashOutcome)> done) const;

  // The outcome of a move in which the given paths failed.
  static TrashOutcome outcome(const std::vector<AppInfo>& apps, const TrashService::Failures& failures);

  friend bool operator==(const ConfirmedTrash&, const ConfirmedTrash&) = default;

 private:
  friend struct TrashRequest;
  explicit ConfirmedTrash(std::vector<AppInfo> apps) : apps_(std::move(apps)) {}

  std::vector<AppInfo> apps_;
};

}  // namespace orrery
