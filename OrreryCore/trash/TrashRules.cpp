#include "OrreryCore/trash/TrashRules.h"

#include <array>
#include <deque>
#include <filesystem>
#include <system_error>

namespace orrery::TrashRules {

namespace fs = std::filesystem;

namespace {

constexpr std::array<std::string_view, 6> systemLocations = {
    "/System",           // the macOS system volume
    "/usr",              // distribution packages, /usr/local included
    "/var/lib/flatpak",  // flatpak's system-wide installation
    "/var/lib/snapd",    // snap's desktop entries
    "/snap",             // snap's mounted packages
    "/nix/store",        // Nix and Guix profiles point here
};

// The limit the kernel applies too; beyond it the path is a loop.
constexpr int maxLinkHops = 40;

// Flatpak's exported desktop entries, in the system installation and in
// each user's own (~/.local/share/flatpak): flatpak rewrites them, so
// trashing one would not remove the app, only confuse flatpak.
constexpr std::string_view flatpakExports = "/flatpak/exports/";

bool isInProtectedLocation(const std::string& standardized) {
  if (standardized.find(flatpakExports) != std::string::npos) return true;
  for (const std::string_view location : systemLocations) {
    if (standardized == location) return true;
    if (standardized.size() > location.size() && standardized.starts_with(location) &&
        standardized[location.size()] == '/')
      return true;
  }
  return false;
}

}  // namespace

const std::set<std::string, std::less<>>& protectedBundleIDs() {
  static const std::set<std::string, std::less<>> ids = {"com.apple.Safari"};
  return ids;
}

std::span<const std::string_view> protectedLocations() { return systemLocations; }

std::string standardizedPath(std::string_view path) {
  if (path.empty()) return {};
  std::string normal = fs::path(path).lexically_normal().generic_string();
  while (normal.size() > 1 && normal.back() == '/') normal.pop_back();
  return normal;
}

std::optional<std::string> resolvingSymlinks(const std::string& path) {
  const fs::path start = fs::path(standardizedPath(path));
  if (!start.is_absolute()) return start.generic_string();
  std::deque<fs::path> pending(std::next(start.begin()), start.end());
  fs::path resolved = "/";
  int hops = 0;
  while (!pending.empty()) {
    const fs::path part = pending.front();
    pending.pop_front();
    if (part.empty() || part == ".") continue;
    if (part == "..") {
      resolved = resolved.parent_path();
      continue;
    }
    const fs::path candidate = resolved / part;
    std::error_code error;
    if (!fs::is_symlink(fs::symlink_status(candidate, error))) {
      resolved = candidate;
      continue;
    }
    const fs::path target = fs::read_symlink(candidate, error);
    if (error) {
      resolved = candidate;
      continue;
    }
    if (++hops > maxLinkHops) return std::nullopt;
    // The target's components take the link's place; a relative target
    // continues from the link's folder.
    const fs::path relative = target.relative_path();
    pending.insert(pending.begin(), relative.begin(), relative.end());
    if (target.is_absolute()) resolved = "/";
  }
  return standardizedPath(resolved.generic_string());
}

bool isProtected(std::string_view path, const std::optional<std::string>& bundleID,
                 std::string_view ownBundleID) {
  if (bundleID && !bundleID->empty()) {
    if (*bundleID == ownBundleID) return true;
    if (protectedBundleIDs().contains(*bundleID)) return true;
  }
  return isInProtectedLocation(standardizedPath(path));
}

bool isDeletable(std::string_view path, const std::optional<std::string>& bundleID,
                 std::string_view ownBundleID, const ParentWritable& parentWritable,
                 const PathResolver& resolve) {
  const std::string standardized = standardizedPath(path);
  const fs::path asPath(standardized);
  if (!asPath.is_absolute() || !asPath.has_parent_path() || asPath == asPath.root_path()) return false;
  const std::string extension = asPath.extension().string();
  if (extension != ".app" && extension != ".desktop") return false;
  if (isProtected(standardized, bundleID, ownBundleID)) return false;
  if (!resolve) return false;
  const std::optional<std::string> resolved = resolve(standardized);
  if (!resolved || isInProtectedLocation(standardizedPath(*resolved))) return false;
  return parentWritable && parentWritable(asPath.parent_path().generic_string());
}

}  // namespace orrery::TrashRules
