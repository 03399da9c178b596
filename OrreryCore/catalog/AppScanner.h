// AppScanner: walks the application folders and returns the installed apps.
//
// The walk is the same for every platform; a BundleFormat says what an app
// looks like. Per root, every entry below it is visited depth first, except
// that nothing whose name begins with "." is visited (nor anything below
// it), a candidate is never looked into (an app inside another app's bundle
// is not an app of its own), and folders are opened only down to `maxDepth`
// levels below the root: with 2, apps are found at root/X, root/F/X and
// root/F/G/X. Ordinary entries count as folders only when they are folders
// themselves, so a symbolic link to a folder is not followed; a candidate is
// tested with links resolved and recorded under its own path.
//
// Each root's finds are ordered shallowest first (path length, then path);
// across roots, the first record with a given id wins, so an app in an
// earlier root, or higher up in the same root, hides its copies. The result
// is in the Finder-like name order, equal names by path. scan() never
// fails: a root or folder that cannot be read contributes nothing, a bundle
// whose metadata cannot be read is recorded with fallbacks.
//
// Thread rules: a value; scan() only reads it, so one scanner may scan on
// any thread, on several at once. The format and the directory reader are
// shared immutable objects.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "OrreryCore/catalog/AppInfo.h"
#include "OrreryCore/catalog/BundleFormat.h"

namespace orrery {

// The few questions a scan asks the file system. The POSIX reader is what
// the application uses; tests wrap it to make folders unreadable, which
// permission bits cannot do when tests run as root.
class DirectoryReader {
 public:
  enum class Type { unknown, directory, regularFile, symlink, other };

  struct Entry {
    std::string name;
    Type type = Type::unknown;  // of the entry itself, links not followed
  };

  virtual ~DirectoryReader() = default;

  // Replaces `entries` with the folder's entries except "." and "..", in
  // any order, and returns true; false when the folder cannot be opened.
  // A folder that fails part-way keeps the entries read so far.
  virtual bool list(const std::string& folder, std::vector<Entry>& entries) const = 0;

  // What `path` is once symbolic links are resolved; unknown when that
  // cannot be found out (a dangling link, a loop, no permission).
  virtual Type resolvedType(const std::string& path) const = 0;

  // opendir/readdir and stat.
  static std::shared_ptr<const DirectoryReader> posix();
};

// A candidate that is not among the apps, and why: what the format said,
// or that an entry with the same id in an earlier folder masks it.
struct WithheldEntry {
  std::string id;
  std::string url;
  std::string reason;
  friend bool operator==(const WithheldEntry&, const WithheldEntry&) = default;
};

struct AppScanner {
  // The depth the application scans with.
  static constexpr int kDefaultMaxDepth = 2;

  std::vector<std::string> roots;  // absolute folders, in priority order
  int maxDepth = kDefaultMaxDepth;
  std::shared_ptr<const BundleFormat> format;
  std::shared_ptr<const DirectoryReader> reader = DirectoryReader::posix();

  // The installed apps, in name order. Empty when there is no format.
  std::vector<AppInfo> scan() const { return scan(nullptr); }
  // The same, and, when `withheld` is given, every other candidate with the
  // reason, in the order found (roots in priority order).
  std::vector<AppInfo> scan(std::vector<WithheldEntry>* withheld) const;

 private:
  std::vector<BundleRecord> scan(const std::string& root, BundleFormat::Reader& candidates) const;
};

}  // namespace orrery
