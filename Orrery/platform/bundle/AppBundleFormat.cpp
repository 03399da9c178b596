#include "platform/bundle/AppBundleFormat.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include <plist/plist.h>

namespace orrery::platform {

namespace {

// Info.plist files are a few kilobytes; anything this large is not one, and
// reading it would only cost memory.
constexpr off_t kMaxPlistBytes = 8 * 1024 * 1024;

struct PlistFree {
  void operator()(plist_t plist) const { plist_free(plist); }
};
using Plist = std::unique_ptr<void, PlistFree>;

std::optional<std::string> fileContents(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  std::optional<std::string> contents;
  struct stat status {};
  if (fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_size <= kMaxPlistBytes) {
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t done = 0;
    while (done < bytes.size()) {
      const ssize_t got = ::read(fd, bytes.data() + done, bytes.size() - done);
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) break;
      done += static_cast<std::size_t>(got);
    }
    // A file that shrank while being read is taken as it was read.
    bytes.resize(done);
    contents = std::move(bytes);
  }
  close(fd);
  return contents;
}

// The root dictionary of the property list, or nothing.
Plist readDictionary(const std::string& path) {
  const auto bytes = fileContents(path);
  if (!bytes || bytes->empty()) return nullptr;
  const auto length = static_cast<uint32_t>(bytes->size());
  plist_t root = nullptr;
  if (plist_is_binary(bytes->data(), length))
    plist_from_bin(bytes->data(), length, &root);
  else
    plist_from_xml(bytes->data(), length, &root);
  Plist plist(root);
  if (!plist || plist_get_node_type(plist.get()) != PLIST_DICT) return nullptr;
  return plist;
}

std::optional<std::string> nonEmptyString(const Plist& dictionary, const char* key) {
  if (!dictionary) return std::nullopt;
  const plist_t node = plist_dict_get_item(dictionary.get(), key);
  if (node == nullptr || plist_get_node_type(node) != PLIST_STRING) return std::nullopt;
  uint64_t length = 0;
  const char* text = plist_get_string_ptr(node, &length);
  if (text == nullptr || length == 0) return std::nullopt;
  return std::string(text, static_cast<std::size_t>(length));
}

std::optional<Date> ownModificationDate(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return std::nullopt;
  return Date(std::chrono::duration_cast<Date::duration>(std::chrono::seconds(status.st_mtim.tv_sec) +
                                                         std::chrono::nanoseconds(status.st_mtim.tv_nsec)));
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
  // Bundles share nothing worth remembering between them.
  struct Records final : Reader {
    explicit Records(const AppBundleFormat& owner) : format(owner) {}
    BundleRecord read(const std::string& path, std::string_view /*relativePath*/) override {
      return format.read(path);
    }
    const AppBundleFormat& format;
  };
  return std::make_unique<Records>(*this);
}

BundleRecord AppBundleFormat::read(const std::string& path) const {
  const Plist info = readDictionary(path + "/Contents/Info.plist");

  BundleRecord record;
  record.app.url = path;
  if (auto name = nonEmptyString(info, "CFBundleDisplayName")) {
    record.app.name = std::move(*name);
  } else if (auto bundleName = nonEmptyString(info, "CFBundleName")) {
    record.app.name = std::move(*bundleName);
  } else {
    const auto slash = path.find_last_of('/');
    const std::string_view file = std::string_view(path).substr(slash == std::string::npos ? 0 : slash + 1);
    record.app.name = std::string(file.substr(0, file.size() - 4));
  }
  record.app.id = nonEmptyString(info, "CFBundleIdentifier").value_or(path);
  record.app.modified = ownModificationDate(path);
  return record;
}

}  // namespace orrery::platform
