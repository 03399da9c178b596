#include "Orrery/platform/bundle/BundleIconLocator.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdint>
#include <memory>
#include <optional>

#include <plist/plist.h>

#include "Orrery/platform/posix/OpenFolder.h"

namespace orrery::platform {

namespace {

// Info.plist files are a few kilobytes; the scan uses the same bound.
constexpr off_t kMaxPlistBytes = 1024 * 1024;

struct PlistFree {
  void operator()(plist_t plist) const { plist_free(plist); }
};
using Plist = std::unique_ptr<void, PlistFree>;

std::optional<std::string> nonEmptyString(plist_t dictionary, const char* key) {
  plist_t node = plist_dict_get_item(dictionary, key);
  if (node == nullptr || plist_get_node_type(node) != PLIST_STRING) return std::nullopt;
  uint64_t length = 0;
  const char* text = plist_get_string_ptr(node, &length);
  if (text == nullptr || length == 0) return std::nullopt;
  return std::string(text, static_cast<std::size_t>(length));
}

bool isFile(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

std::string BundleIconLocator::icon(const AppInfo& app) const {
  std::string bytes;
  const std::string infoPlist = app.url + "/Contents/Info.plist";
  if (!readWholeFile({AT_FDCWD, infoPlist.c_str()}, kMaxPlistBytes, bytes)) return {};
  return iconOfBundle(app.url, bytes);
}

std::string BundleIconLocator::iconOfBundle(const std::string& bundlePath, std::string_view infoPlist) {
  if (infoPlist.empty() || infoPlist.size() > UINT32_MAX) return {};
  const auto length = static_cast<uint32_t>(infoPlist.size());
  plist_t root = nullptr;
  if (plist_is_binary(infoPlist.data(), length))
    plist_from_bin(infoPlist.data(), length, &root);
  else
    plist_from_xml(infoPlist.data(), length, &root);
  const Plist plist(root);
  if (!plist || plist_get_node_type(plist.get()) != PLIST_DICT) return {};

  const std::string resources = bundlePath + "/Contents/Resources/";
  if (std::optional<std::string> file = nonEmptyString(plist.get(), "CFBundleIconFile")) {
    // The extension is optional; only the last path component counts.
    const std::size_t slash = file->rfind('/');
    if (file->find('.', slash == std::string::npos ? 0 : slash + 1) == std::string::npos) *file += ".icns";
    return resources + *file;
  }
  if (std::optional<std::string> name = nonEmptyString(plist.get(), "CFBundleIconName")) {
    std::string path = resources + *name + ".icns";
    if (isFile(path)) return path;
  }
  return {};
}

}  // namespace orrery::platform
