#include "Orrery/platform/bundle/AppBundleFormat.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include <plist/plist.h>

#include "Orrery/platform/posix/OpenFolder.h"

namespace orrery::platform {

namespace {

// Info.plist files are a few kilobytes; anything this large is not one, and
// reading it would only cost memory.
constexpr off_t kMaxPlistBytes = 8 * 1024 * 1024;

struct PlistFree {
  void operator()(plist_t plist) const { plist_free(plist); }
};
using Plist = std::unique_ptr<void, PlistFree>;

// The top dictionary of an Info.plist, XML or binary, or nothing.
Plist readDictionary(std::string_view bytes) {
  if (bytes.empty() || bytes.size() > UINT32_MAX) return nullptr;
  const auto length = static_cast<uint32_t>(bytes.size());
  plist_t root = nullptr;
  if (plist_is_binary(bytes.data(), length))
    plist_from_bin(bytes.data(), length, &root);
  else
    plist_from_xml(bytes.data(), length, &root);
  Plist plist(root);
  if (!plist || plist_get_node_type(plist.get()) != PLIST_DICT) return nullptr;
  return plist;
}

// The value of `key` when it is a non-empty string.
std::optional<std::string> nonEmptyString(const Plist& dictionary, const char* key) {
  if (!dictionary) return std::nullopt;
  const plist_t node = plist_dict_get_item(dictionary.get(), key);
  if (node == nullptr || plist_get_node_type(node) != PLIST_STRING) return std::nullopt;
  uint64_t length = 0;
  const char* text = plist_get_string_ptr(node, &length);
  if (text == nullptr || length == 0) return std::nullopt;
  return std::string(text, static_cast<std::size_t>(length));
}

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
  const Plist info = readWholeFile({location.folder, infoPlist.c_str()}, kMaxPlistBytes, scratch)
                         ? readDictionary(scratch)
                         : nullptr;

  BundleRecord record;
  record.app.url = path;
  if (auto displayName = nonEmptyString(info, "CFBundleDisplayName")) {
    record.app.name = std::move(*displayName);
  } else if (auto name = nonEmptyString(info, "CFBundleName")) {
    record.app.name = std::move(*name);
  } else {
    const auto slash = path.find_last_of('/');
    const std::string_view file = std::string_view(path).substr(slash == std::string::npos ? 0 : slash + 1);
    record.app.name = std::string(file.substr(0, file.size() - 4));
  }
  record.app.id = nonEmptyString(info, "CFBundleIdentifier").value_or(path);
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
