#include "Orrery/triggers/EscapeKeyGrab.h"

#include "OrreryCore/triggers/KeyCombo.h"

namespace orrery::app {

EscapeKeyGrab::EscapeKeyGrab(GlobalHotKey::Router* router, QObject* parent) : QObject(parent) {
  if (router != nullptr)
    key_ = std::make_unique<GlobalHotKey>(
        *router,
        [this] {
          emit escapePressed();
          if (handler_) handler_();
        },
        "Esc-Ersatz");
}

EscapeKeyGrab::~EscapeKeyGrab() = default;

bool EscapeKeyGrab::grab(bool active) {
  if (!key_) return !active;
  return key_->registerKey(active ? std::optional(HotKey{KeyCombo::escapeKeyCode, 0}) : std::nullopt);
}

bool EscapeKeyGrab::isActive() const { return key_ && key_->currentKey().has_value(); }

}  // namespace orrery::app
