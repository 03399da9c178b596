#include "platform/PlatformFactory.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#if defined(__APPLE__)
#include "platform/bundle/AppBundleFormat.h"
#else
#include "platform/xdg/DesktopEntryFormat.h"
#endif

namespace orrery::platform {

namespace {

// $HOME, else the account's home folder, else nothing.
std::string homeFolder() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && home[0] == '/') return home;
  const long suggested = sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buffer(suggested > 0 ? static_cast<std::size_t>(suggested) : 16384);
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr &&
      found->pw_dir != nullptr)
    return found->pw_dir;
  return {};
}

}  // namespace

std::shared_ptr<const BundleFormat> makeBundleFormat() {
#if defined(__APPLE__)
  return std::make_shared<const AppBundleFormat>(homeFolder());
#else
  const std::string home = homeFolder();
  return std::make_shared<const DesktopEntryFormat>(
      DesktopEnvironment::fromVariables([&home](const char* name) -> const char* {
        return std::string_view(name) == "HOME" ? home.c_str() : std::getenv(name);
      }));
#endif
}

AppScanner makeAppScanner() {
  auto format = makeBundleFormat();
  auto roots = format->defaultRoots();
  return AppScanner{std::move(roots), AppScanner::kDefaultMaxDepth, std::move(format)};
}

LayoutStore::DataLocation dataLocation() {
#if defined(__APPLE__)
  return LayoutStore::DataLocation::applicationSupport;
#else
  return LayoutStore::DataLocation::xdgDataHome;
#endif
}

}  // namespace orrery::platform
