#include "OrreryCore/overlay/OverlayFocus.h"

namespace orrery {

namespace {

bool panelLacksKeyboard(KeyOwner owner) { return owner == KeyOwner::none || owner == KeyOwner::otherWindow; }

}  // namespace

bool OverlayFocus::shouldReclaimKey() const {
  return isVisible && takesFocus && appActive && !yielded && panelLacksKeyboard(keyOwner);
}

bool OverlayFocus::needsEscapeFallback() const {
  if (!isVisible || !takesFocus) return false;
  if (!appActive) return true;
  return !yielded && panelLacksKeyboard(keyOwner);
}

}  // namespace orrery
