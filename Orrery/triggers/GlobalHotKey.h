// GlobalHotKey: one keyboard shortcut held for this program, calling back
// when it is pressed anywhere on the desktop.
//
// register() replaces the shortcut: the new combination is grabbed first and
// the old one released only once the new one is in place, so a failure
// leaves the previous shortcut working. Registering the combination that is
// already held does nothing and succeeds; registering nothing releases it.
// After a failure, lastOutcome() and lastStatus() say why (status 0 after a
// success), which the application turns into the message the settings show.
//
// Several instances may share one KeyGrabService (the shortcut and the Esc
// fallback do); the service's press reports are routed by grab id, so the
// service's pressed callback must be the one a Router installs.
//
// Thread rules: main thread only.
#pragma once

#include <QLoggingCategory>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>

#include "Orrery/triggers/KeyGrabService.h"
#include "OrreryCore/settings/HotKey.h"

namespace orrery::app {

class GlobalHotKey {
 public:
  // Hands the presses of one grab service to the instances over it.
  class Router {
   public:
    // Installs itself as `service`'s pressed callback; both must outlive
    // every GlobalHotKey made over the router.
    explicit Router(KeyGrabService& service);
    KeyGrabService& service() { return service_; }

   private:
    friend class GlobalHotKey;
    KeyGrabService& service_;
    std::map<KeyGrabService::GrabId, GlobalHotKey*> holders_;
  };

  // `name` appears in the log lines ("Tastenkürzel", "Esc-Ersatz").
  GlobalHotKey(Router& router, std::function<void()> onTrigger, const char* name = "Tastenkürzel");
  // Called when the desktop takes back a registration it first granted
  // (a portal that asked the user); the shortcut is then none.
  void setOnRefused(std::function<void()> onRefused) { onRefused_ = std::move(onRefused); }
  ~GlobalHotKey();
  GlobalHotKey(const GlobalHotKey&) = delete;
  GlobalHotKey& operator=(const GlobalHotKey&) = delete;

  bool registerKey(const std::optional<HotKey>& key);

  const std::optional<HotKey>& currentKey() const { return currentKey_; }
  KeyGrabService::Outcome lastOutcome() const { return lastOutcome_; }
  std::int32_t lastStatus() const { return lastStatus_; }

 private:
  void release();

  Router& router_;
  std::function<void()> onTrigger_;
  std::function<void()> onRefused_;
  const char* name_;
  std::optional<KeyGrabService::GrabId> grab_;
  std::optional<HotKey> currentKey_;
  KeyGrabService::Outcome lastOutcome_ = KeyGrabService::Outcome::grabbed;
  std::int32_t lastStatus_ = 0;
};

}  // namespace orrery::app
