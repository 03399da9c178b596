// TrashRules: which applications the launcher may offer to move to the Trash.
//
// An app qualifies only when its bundle ("…/Name.app") or, on Linux, its
// desktop entry ("…/name.desktop") sits in a folder the user may write,
// and neither the path nor the path with symbolic links resolved lies in a
// location the system owns: "/System" on macOS, and on Linux the folders a
// package manager fills ("/usr", flatpak's and snap's installations, the
// Nix store). Moving a desktop entry out of the user's own
// applications folder is what "moving an app to the Trash" means there; an
// entry that a package installed is never the user's to remove. The
// program itself and Safari are never offered.
//
// The file system is asked through injected functions, so the rules can be
// exercised without real permissions or a macOS system volume.
//
// Thread rules: pure functions; resolvingSymlinks() reads the file system
// and may run on any thread.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>

namespace orrery::TrashRules {

// Bundle identifiers never offered, wherever they are installed.
const std::set<std::string, std::less<>>& protectedBundleIDs();

// Folders that belong to the system; a path equal to one of them or below it
// is protected.
std::span<const std::string_view> protectedLocations();

// Whether the user may write the given folder (the one holding the bundle).
using ParentWritable = std::function<bool(const std::string& folder)>;
// The path with every symbolic link resolved; nothing when it cannot be
// resolved (a link loop).
using PathResolver = std::function<std::optional<std::string>(const std::string& path)>;

// "." and ".." removed, repeated and trailing slashes dropped.
std::string standardizedPath(std::string_view path);

// Resolves links component by component through the real file system. A
// link whose target does not exist is still followed, so a dangling link
// into a system location is recognised as one.
std::optional<std::string> resolvingSymlinks(const std::string& path);

// True for the program itself (`ownBundleID`), the protected bundle IDs and
// any path in a protected location. An absent or empty bundle ID matches
// no ID.
bool isProtected(std::string_view path, const std::optional<std::string>& bundleID,
                 std::string_view ownBundleID);

// True only for an absolute path whose extension is exactly "app" or
// "desktop", that is not protected, that does not resolve into a protected
// location, and whose folder the user may write.
bool isDeletable(std::string_view path, const std::optional<std::string>& bundleID,
                 std::string_view ownBundleID, const ParentWritable& parentWritable,
                 const PathResolver& resolve = resolvingSymlinks);

}  // namespace orrery::TrashRules
