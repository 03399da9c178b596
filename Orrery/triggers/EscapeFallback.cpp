#include "Orrery/triggers/EscapeFallback.h"

#include "OrreryCore/triggers/KeyCombo.h"

namespace orrery::app {

EscapeFallback::EscapeFallback(GlobalHotKey::Router* router, QObject* parent) : QObject(parent) {
  if (router != nullptr)
    key_ = std::make_unique<GlobalHotKey>(
        *router, [this] { emit escapePressed(); }, "Esc-Ersatz");
}

EscapeFallback::~EscapeFallback() = default;

bool EscapeFallback::setActive(bool active) {
  if (!key_) return !active;
  return key_->registerKey(active ? std::optional(HotKey{KeyCombo::escapeKeyCode, 0}) : std::nullopt);
}

bool EscapeFallback::isActive() const { return key_ && key_->currentKey().has_value(); }

}  // namespace orrery::app
