#include "Orrery/triggers/GlobalHotKey.h"

#include "Orrery/base/Logging.h"

namespace orrery::app {

GlobalHotKey::Router::Router(KeyGrabService& service) : service_(service) {
  service_.setOnPressed([this](KeyGrabService::GrabId id) {
    const auto found = holders_.find(id);
    if (found != holders_.end() && found->second->onTrigger_) found->second->onTrigger_();
  });
  service_.setOnRefused([this](KeyGrabService::GrabId id) {
    const auto found = holders_.find(id);
    if (found == holders_.end()) return;
    GlobalHotKey* holder = found->second;
    holders_.erase(found);
    holder->grab_.reset();
    holder->currentKey_.reset();
    holder->lastOutcome_ = KeyGrabService::Outcome::failed;
    if (holder->onRefused_) holder->onRefused_();
  });
}

GlobalHotKey::GlobalHotKey(Router& router, std::function<void()> onTrigger, const char* name)
    : router_(router), onTrigger_(std::move(onTrigger)), name_(name) {}

GlobalHotKey::~GlobalHotKey() { release(); }

void GlobalHotKey::release() {
  if (!grab_) return;
  router_.holders_.erase(*grab_);
  router_.service_.release(*grab_);
  grab_.reset();
}

bool GlobalHotKey::registerKey(const std::optional<HotKey>& key) {
  lastStatus_ = 0;
  lastOutcome_ = KeyGrabService::Outcome::grabbed;
  if (!key) {
    release();
    currentKey_.reset();
    return true;
  }
  if (grab_ && currentKey_ == key) return true;

  const KeyGrabService::Result result = router_.service_.grab(*key);
  if (result.outcome != KeyGrabService::Outcome::grabbed) {
    lastOutcome_ = result.outcome;
    lastStatus_ = result.status;
    if (result.outcome == KeyGrabService::Outcome::taken)
      qCWarning(triggerLog, "%s nicht registriert: schon belegt (Status %d)", name_, result.status);
    else
      qCWarning(triggerLog, "%s nicht registriert (Status %d)", name_, result.status);
    return false;
  }
  // Only now: the old combination kept working until the new one was held.
  release();
  grab_ = result.id;
  router_.holders_[result.id] = this;
  currentKey_ = key;
  return true;
}

}  // namespace orrery::app
