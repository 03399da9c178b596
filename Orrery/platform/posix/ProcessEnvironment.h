// The process's environment as the rest of the platform layer reads it:
// variables by name, the home folder, the locale names are sorted in, and
// the priority of background threads.
//
// Thread rules: processVariables() may be called on any thread, but its
// lookups read the live environment, so nothing may change it meanwhile
// (the program never does after start-up).
#pragma once

#include <functional>
#include <string>

namespace orrery::platform {

// Looks up a variable by name; nullptr when it is unset.
using VariableLookup = std::function<const char*(const char*)>;

// The process environment, except that HOME, when unset or relative, comes
// from the account's entry in the user database.
VariableLookup processVariables();

// The ICU locale to sort names by, from LC_ALL, LC_COLLATE or LANG (the
// precedence the C library uses for collation): "de_CH.UTF-8@euro" gives
// "de_CH"; unset, "C" or "POSIX" give "en_US", because numeric ordering
// must not depend on how the process happened to be started.
std::string collationLocale(const VariableLookup& lookup);

// Lowers the calling thread's scheduling priority for background work
// (scans, saves), so it never competes with drawing. Idempotent.
void lowerCurrentThreadPriority();

}  // namespace orrery::platform
