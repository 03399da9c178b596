// TriggerController: the hot corner and the global shortcut of the running
// program, kept in step with the trigger settings.
//
// It owns the HotCornerMonitor (when the desktop lets it follow the
// pointer), the GlobalHotKey (when the desktop lets it grab keys), the Esc
// fallback over the same grabs, and the TriggerStatus the settings show.
// applyTriggers() applies only what changed since the last call: a new
// corner leaves the shortcut registered as it was, and the other way round.
// While the shortcut recorder records, setHotKeySuspended(true) gives up the
// shortcut so that pressing the old combination reaches the recorder; the
// end of recording restores the given (or the stored) trigger settings.
//
// Thread rules: main thread only.
#pragma once

#include <QObject>

#include <functional>
#include <memory>
#include <optional>

#include "Orrery/base/Clock.h"
#include "Orrery/triggers/EscapeKeyGrab.h"
#include "Orrery/triggers/GlobalHotKey.h"
#include "Orrery/triggers/GlobalPointer.h"
#include "Orrery/triggers/HotCornerMonitor.h"
#include "Orrery/triggers/KeyGrabService.h"
#include "Orrery/triggers/TriggerStatus.h"
#include "OrreryCore/settings/Settings.h"

namespace orrery::app {

struct TriggerSettings {
  Corner corner = Corner::none;
  CornerModifier modifier = CornerModifier::none;
  std::optional<HotKey> hotKey;

  static TriggerSettings from(const Settings& settings) {
    return {settings.corner, settings.cornerModifier, settings.hotKey};
  }
  friend bool operator==(const TriggerSettings&, const TriggerSettings&) = default;
};

enum class TriggerSource : std::uint8_t { hotCorner, hotKey };

class TriggerController final : public QObject {
  Q_OBJECT

 public:
  struct Platform {
    std::unique_ptr<GlobalPointer> pointer;  // none: no hot corner here
    std::unique_ptr<KeyGrabService> grabs;   // none: no shortcut of our own here
    // Whether the grabs can hold Esc for a moment (not through a portal,
    // which would ask the user each time).
    bool escapeFallback = true;
    // Whether the desktop itself acts on a corner; empty: it never tells.
    std::function<bool(Corner)> systemUsesCorner;
    QString systemCornerWarning;  // what to say when it does
  };

  // `clock` must outlive the controller; `onTrigger` toggles the overlay;
  // `stored` gives the trigger settings in the settings store.
  TriggerController(Clock& clock, Platform platform, std::function<void(TriggerSource)> onTrigger,
                    std::function<TriggerSettings()> stored, QObject* parent = nullptr);
  ~TriggerController() override;

  void applyTriggers(const TriggerSettings& settings);
  // Registers `key` and updates the status; false when it failed (the
  // previous shortcut stays) or there is no way to hold a shortcut here.
  bool applyHotKey(const std::optional<HotKey>& key);
  // No-op when the flag already has the requested value.
  void setHotKeySuspended(bool suspended, const std::optional<TriggerSettings>& restoring = std::nullopt);

  TriggerStatus& status() { return status_; }
  EscapeKeyGrab& escapeFallback() { return *escape_; }
  HotCornerMonitor* hotCorner() { return hotCorner_.get(); }
  GlobalHotKey* hotKey() { return hotKey_.get(); }
  const std::optional<TriggerSettings>& appliedTriggers() const { return applied_; }
  bool hotKeySuspended() const { return suspended_; }
  const std::optional<HotKey>& keyBeforeSuspend() const { return keyBeforeSuspend_; }

 private:
  void updateCornerWarning(Corner corner);

  Platform platform_;
  std::function<TriggerSettings()> stored_;
  TriggerStatus status_;
  std::unique_ptr<GlobalHotKey::Router> router_;
  std::unique_ptr<HotCornerMonitor> hotCorner_;
  std::unique_ptr<GlobalHotKey> hotKey_;
  std::unique_ptr<EscapeKeyGrab> escape_;
  std::optional<TriggerSettings> applied_;
  bool suspended_ = false;
  std::optional<HotKey> keyBeforeSuspend_;
};

}  // namespace orrery::app
