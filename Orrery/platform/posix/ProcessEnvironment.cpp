#include "Orrery/platform/posix/ProcessEnvironment.h"

#include <pwd.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

namespace orrery::platform {

namespace {

// The account's home folder from the user database, or "".
std::string homeFromUserDatabase() {
  const long suggested = ::sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buffer(suggested > 0 ? static_cast<std::size_t>(suggested) : 16384);
  passwd entry{};
  passwd* found = nullptr;
  if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr ||
      found->pw_dir == nullptr)
    return {};
  return found->pw_dir;
}

}  // namespace

VariableLookup processVariables() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && home[0] == '/') return [](const char* name) { return std::getenv(name); };
  // Looked up once; the lookup owns the text it hands out.
  auto fallback = std::make_shared<const std::string>(homeFromUserDatabase());
  return [fallback](const char* name) -> const char* {
    if (std::string_view(name) == "HOME") return fallback->empty() ? nullptr : fallback->c_str();
    return std::getenv(name);
  };
}

std::string collationLocale(const VariableLookup& lookup) {
  for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
    const char* value = lookup(variable);
    if (value == nullptr || value[0] == '\0') continue;
    // "de_CH.UTF-8@euro" -> "de_CH"
    const std::string_view name(value);
    const std::string base(name.substr(0, name.find_first_of(".@")));
    return base.empty() || base == "C" || base == "POSIX" ? "en_US" : base;
  }
  return "en_US";
}

void lowerCurrentThreadPriority() {
#if defined(__linux__)
  // Qt's thread priorities do nothing for ordinary threads on Linux; the
  // nice value does, and there it is per thread.
  thread_local bool lowered = false;
  if (!lowered) {
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), 10);
    lowered = true;
  }
#endif
}

}  // namespace orrery::platform
