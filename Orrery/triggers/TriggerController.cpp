#include "Orrery/triggers/TriggerController.h"

#include "Orrery/base/Logging.h"

namespace orrery::app {

TriggerController::TriggerController(Clock& clock, Platform platform,
                                     std::function<void(TriggerSource)> onTrigger,
                                     std::function<TriggerSettings()> stored, QObject* parent)
    : QObject(parent), platform_(std::move(platform)), stored_(std::move(stored)) {
  if (platform_.pointer)
    hotCorner_ = std::make_unique<HotCornerMonitor>(clock, *platform_.pointer,
                                                    [onTrigger] { onTrigger(TriggerSource::hotCorner); });
  status_.setHotCornerAvailable(hotCorner_ != nullptr);
  if (platform_.grabs) {
    router_ = std::make_unique<GlobalHotKey::Router>(*platform_.grabs);
    hotKey_ = std::make_unique<GlobalHotKey>(*router_, [onTrigger] { onTrigger(TriggerSource::hotKey); });
    hotKey_->setOnRefused([this] {
      status_.setHotKeyError(TriggerStatus::notRegisteredText());
      qCWarning(triggerLog, "Einstellungen melden: %s", qPrintable(status_.hotKeyError()));
    });
  } else {
    status_.setShortcutNote(TriggerStatus::bindToggleText());
  }
  escape_ = std::make_unique<EscapeKeyGrab>(platform_.escapeFallback ? router_.get() : nullptr);
}

// The users of the router go before it, and it before the service.
TriggerController::~TriggerController() {
  escape_.reset();
  hotKey_.reset();
  router_.reset();
  hotCorner_.reset();
}

void TriggerController::applyTriggers(const TriggerSettings& settings) {
  if (applied_ == settings) return;
  const bool cornerChanged =
      !applied_ || applied_->corner != settings.corner || applied_->modifier != settings.modifier;
  const bool keyChanged = !applied_ || applied_->hotKey != settings.hotKey;
  if (cornerChanged) {
    if (hotCorner_) hotCorner_->apply(settings.corner, settings.modifier);
    updateCornerWarning(settings.corner);
  }
  if (keyChanged && !suspended_) applyHotKey(settings.hotKey);
  applied_ = settings;
}

bool TriggerController::applyHotKey(const std::optional<HotKey>& key) {
  if (!hotKey_) return false;
  if (hotKey_->registerKey(key)) {
    status_.setHotKeyError({});
    return true;
  }
  status_.setHotKeyError(hotKey_->lastOutcome() == KeyGrabService::Outcome::taken
                             ? TriggerStatus::alreadyUsedText()
                             : TriggerStatus::notRegisteredText());
  qCWarning(triggerLog, "Einstellungen melden: %s", qPrintable(status_.hotKeyError()));
  return false;
}

void TriggerController::setHotKeySuspended(bool suspended, const std::optional<TriggerSettings>& restoring) {
  if (suspended == suspended_) return;
  suspended_ = suspended;
  if (suspended) {
    keyBeforeSuspend_ = hotKey_ ? hotKey_->currentKey() : std::nullopt;
    if (hotKey_) hotKey_->registerKey(std::nullopt);
    return;
  }
  keyBeforeSuspend_.reset();
  const TriggerSettings settings = restoring ? *restoring : stored_();
  // The shortcut was given up while recording: whatever applied_ says, it
  // must be registered again.
  applyHotKey(settings.hotKey);
  if (applied_) applied_->hotKey = settings.hotKey;
  applyTriggers(settings);
}

void TriggerController::updateCornerWarning(Corner corner) {
  const bool clash = platform_.systemUsesCorner && platform_.systemUsesCorner(corner);
  status_.setSystemCornerWarning(clash ? platform_.systemCornerWarning : QString());
}

}  // namespace orrery::app
