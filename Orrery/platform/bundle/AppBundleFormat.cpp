#include "Orrery/platform/bundle/AppBundleFormat.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include "Orrery/platform/bundle/BundleInfo.h"
#include "Orrery/platform/posix/OpenFolder.h"

namespace orrery::platform {

namespace {

// Info.plist files are a few kilobytes; anything this large is not one, and
// reading it would only cost memory.
constexpr off_t kMaxPlistBytes = 8 * 1024 * 1024;

// The record of the bundle `path`, found as `location`. `scratch` is any
// buffer, reused between bundles.
BundleRecord readBundle(const std::string& path, OpenFolder::Location location, std::string& scratch) {
  // The bundle's own date: for a symbolic link, the link's.
  std::optional<Date> modified;
  struct stat status {};
  if (fstatat(location.folder, location.name, &status, AT_SYMLINK_NOFOLLOW) == 0)
    modified = modificationDate(status);

  std::string infoPlist(location.name);
  infoPlist += "/Contents/Info.plist";
  BundleInfo info = readWholeFile({location.folder, infoPlist.c_str()}, kMaxPlistBytes, scratch)
                        ? BundleInfo::read(scratch)
                        : BundleInfo{};

  BundleRecord record;
  record.app.url = path;
  if (info.displayName) {
    record.app.name = std::move(*info.displayName);
  } else if (info.name) {
    record.app.name = std::move(*info.name);
  } else {
    const auto slash = path.find_last_of('/');
    const std::string_view file = std::string_view(path).substr(slash == std::string::npos ? 0 : slash + 1);
    record.app.name = std::string(file.substr(0, file.size() - 4));
  }
  record.app.id = info.identifier ? std::move(*info.identifier) : path;
  record.app.modified = modified;
  return record;
}

}  // namespace

AppBundleFormat::AppBundleFormat(std::string homeFolder) : homeFolder_(std::move(homeFolder)) {
  while (homeFolder_.size() > 1 && homeFolder_.back() == '/') homeFolder_.pop_back();
}

std::vector<std::string> AppBundleFormat::defaultRoots() const {
  std::vector<std::string> roots{"/Applications"};
  if (!homeFolder_.empty())
    roots.push_back(homeFolder_ == "/" ? "/Applications" : homeFolder_ + "/Applications");
  roots.push_back("/System/Applications");
  return roots;
}

bool AppBundleFormat::isCandidate(std::string_view name) const {
  // The extension of "x.app"; a name that is only ".app" is hidden and never
  // gets here.
  return name.size() > 4 && name.ends_with(".app");
}

std::unique_ptr<BundleFormat::Reader> AppBundleFormat::startScan() const {
  // Bundles share nothing but their folders and a buffer.
  struct Records final : Reader {
    BundleRecord read(const std::string& path, std::string_view /*relativePath*/) override {
      return readBundle(path, folder.of(path), bytes);
    }
    OpenFolder folder;
    std::string bytes;
  };
  return std::make_unique<Records>();
}

BundleRecord AppBundleFormat::read(const std::string& path) const {
  std::string bytes;
  return readBundle(path, {AT_FDCWD, path.c_str()}, bytes);
}

}  // namespace orrery::platform
