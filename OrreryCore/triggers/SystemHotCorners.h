// SystemHotCorners: whether the system itself already acts on a screen
// corner, so that the settings can warn before the user picks it.
//
// The rule reads the Dock's preferences as a plain dictionary: the keys
// "wvous-tl-corner", "wvous-tr-corner", "wvous-bl-corner" and
// "wvous-br-corner" hold the action of each corner, where 0 and 1 mean none.
// Adapters that read another desktop's hot-corner settings describe them in
// the same form. Preferences are untyped, so a value may arrive as any of the
// alternatives below; only numbers can mean an action.
//
// Thread rules: pure functions.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "OrreryCore/settings/TriggerEnums.h"

namespace orrery {

using DefaultsValue = std::variant<std::int64_t, double, bool, std::string>;
using DockDefaults = std::map<std::string, DefaultsValue, std::less<>>;

namespace SystemHotCorners {

// The preference key of a corner; nothing for Corner::none.
std::optional<std::string_view> dockKey(Corner corner);

// True when the corner's value is a number greater than 1. A double counts
// by its value truncated toward zero; a bool as 0 or 1; a missing key or a
// text means the corner is free.
bool isUsedBySystem(Corner corner, const DockDefaults& dockDefaults);

// The warning the settings show next to a corner the system already uses.
std::string usedBySystemWarning();

}  // namespace SystemHotCorners

}  // namespace orrery
