#include "OrreryCore/triggers/SystemHotCorners.h"

#include <cmath>

#include "OrreryCore/text/Localized.h"

namespace orrery::SystemHotCorners {

std::optional<std::string_view> dockKey(Corner corner) {
  switch (corner) {
    case Corner::none:
      return std::nullopt;
    case Corner::topLeft:
      return "wvous-tl-corner";
    case Corner::topRight:
      return "wvous-tr-corner";
    case Corner::bottomLeft:
      return "wvous-bl-corner";
    case Corner::bottomRight:
      return "wvous-br-corner";
  }
  return std::nullopt;
}

bool isUsedBySystem(Corner corner, const DockDefaults& dockDefaults) {
  const auto key = dockKey(corner);
  if (!key) return false;
  const auto found = dockDefaults.find(*key);
  if (found == dockDefaults.end()) return false;
  const DefaultsValue& value = found->second;
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return *integer > 1;
  // Comparing the truncated double avoids converting huge or NaN values to
  // an integer type (undefined behaviour); NaN compares false.
  if (const auto* real = std::get_if<double>(&value)) return std::trunc(*real) > 1.0;
  // A boolean number object is 0 or 1: never an action.
  return false;
}

std::string usedBySystemWarning() {
  return text::localized(
      "This corner is already used in macOS System Settings (Desktop & Dock → Hot Corners). Please turn "
      "it off there.",
      "Warning in the trigger settings when the chosen hot corner already has a system action");
}

}  // namespace orrery::SystemHotCorners
