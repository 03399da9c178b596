#include "OrreryCore/catalog/AppScanner.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <numeric>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/utext.h>

#include "OrreryCore/text/Collation.h"

namespace orrery {

namespace {

DirectoryReader::Type typeOfMode(mode_t mode) {
  if (S_ISDIR(mode)) return DirectoryReader::Type::directory;
  if (S_ISREG(mode)) return DirectoryReader::Type::regularFile;
  if (S_ISLNK(mode)) return DirectoryReader::Type::symlink;
  return DirectoryReader::Type::other;
}

class PosixDirectoryReader final : public DirectoryReader {
 public:
  bool list(const std::string& folder, std::vector<Entry>& entries) const override {
    entries.clear();
    DIR* dir = opendir(folder.c_str());
    if (dir == nullptr) return false;
    for (;;) {
      errno = 0;
      const dirent* entry = readdir(dir);
      // End of the folder or a read error: either way nothing more comes
      // from it, and what was read stays.
      if (entry == nullptr) break;
      const std::string_view name(entry->d_name);
      if (name == "." || name == "..") continue;
      entries.push_back(Entry{std::string(name), typeOfDirent(folder, *entry)});
    }
    closedir(dir);
    return true;
  }

  Type resolvedType(const std::string& path) const override {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return Type::unknown;
    return typeOfMode(status.st_mode);
  }

 private:
  static Type typeOfDirent(const std::string& folder, const dirent& entry) {
    switch (entry.d_type) {
      case DT_DIR:
        return Type::directory;
      case DT_REG:
        return Type::regularFile;
      case DT_LNK:
        return Type::symlink;
      case DT_UNKNOWN:
        break;
      default:
        return Type::other;
    }
    // Some file systems leave the type to a separate look-up.
    struct stat status {};
    const std::string path = folder + "/" + entry.d_name;
    if (lstat(path.c_str(), &status) != 0) return Type::unknown;
    return typeOfMode(status.st_mode);
  }
};

// The root as a standardized absolute path: "." and ".." resolved as text,
// no trailing slash. Empty when there is nothing to scan.
std::string standardizedRoot(const std::string& root) {
  if (root.empty()) return {};
  std::filesystem::path path(root);
  if (path.is_relative()) {
    std::error_code failure;
    path = std::filesystem::absolute(path, failure);
    if (failure) return {};
  }
  std::string text = path.lexically_normal().string();
  while (text.size() > 1 && text.back() == '/') text.pop_back();
  return text;
}

std::string joined(const std::string& folder, std::string_view name) {
  std::string path;
  path.reserve(folder.size() + 1 + name.size());
  path += folder;
  if (path.back() != '/') path += '/';
  path += name;
  return path;
}

// Length in user-perceived characters (grapheme clusters), the measure a
// person would count in the path. Plain ASCII without CR is one character
// per byte, which spares ICU for almost every path.
std::size_t characterCount(std::string_view text) {
  const bool simple = std::all_of(text.begin(), text.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x80 && byte != '\r';
  });
  if (simple) return text.size();

  thread_local std::unique_ptr<icu::BreakIterator> characters = [] {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> iterator(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status)) iterator.reset();
    return iterator;
  }();
  UErrorCode status = U_ZERO_ERROR;
  UText* utext = utext_openUTF8(nullptr, text.data(), static_cast<int64_t>(text.size()), &status);
  if (U_FAILURE(status) || !characters) {
    utext_close(utext);
    return text.size();
  }
  characters->setText(utext, status);
  std::size_t count = 0;
  if (U_SUCCESS(status)) {
    for (int32_t at = characters->next(); at != icu::BreakIterator::DONE; at = characters->next()) ++count;
  } else {
    count = text.size();
  }
  // Detach the iterator from the text before the text goes away.
  characters->setText(icu::UnicodeString());
  utext_close(utext);
  return count;
}

}  // namespace

std::shared_ptr<const DirectoryReader> DirectoryReader::posix() {
  static const auto reader = std::make_shared<const PosixDirectoryReader>();
  return reader;
}

std::vector<BundleRecord> AppScanner::scan(const std::string& rootPath,
                                           BundleFormat::Reader& candidates) const {
  const std::string root = standardizedRoot(rootPath);
  if (root.empty()) return {};
  const BundleFormat::Kind wanted = format->candidateKind();
  const DirectoryReader::Type wantedType = wanted == BundleFormat::Kind::directory
                                               ? DirectoryReader::Type::directory
                                               : DirectoryReader::Type::regularFile;
  const std::size_t relativeStart = root.size() == 1 ? 1 : root.size() + 1;

  struct Found {
    BundleRecord record;
    std::size_t length;
  };
  std::vector<Found> found;

  // Folders still to open, with the depth of their entries: a direct child
  // of the root has depth 0.
  std::vector<std::pair<std::string, int>> folders{{root, 0}};
  std::vector<DirectoryReader::Entry> entries;
  while (!folders.empty()) {
    auto [folder, depth] = std::move(folders.back());
    folders.pop_back();
    if (!reader->list(folder, entries)) continue;
    for (const DirectoryReader::Entry& entry : entries) {
      if (entry.name.empty() || entry.name.front() == '.') continue;
      std::string path = joined(folder, entry.name);
      if (format->isCandidate(entry.name)) {
        // Only a link needs resolving; anything else already is what it is.
        const DirectoryReader::Type type =
            entry.type == DirectoryReader::Type::symlink ? reader->resolvedType(path) : entry.type;
        if (type != wantedType || depth > maxDepth) continue;
        const std::string_view relative = std::string_view(path).substr(relativeStart);
        BundleRecord record = candidates.read(path, relative);
        const std::size_t length = characterCount(record.app.url);
        found.push_back(Found{std::move(record), length});
        continue;
      }
      if (entry.type == DirectoryReader::Type::directory && depth < maxDepth)
        folders.emplace_back(std::move(path), depth + 1);
    }
  }

  // Sorting positions moves eight bytes at a time instead of whole records.
  std::vector<std::size_t> order(found.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    if (found[a].length != found[b].length) return found[a].length < found[b].length;
    return found[a].record.app.url < found[b].record.app.url;
  });
  std::vector<BundleRecord> records;
  records.reserve(found.size());
  for (const std::size_t index : order) records.push_back(std::move(found[index].record));
  return records;
}

std::vector<AppInfo> AppScanner::scan(std::vector<WithheldEntry>* withheld) const {
  if (!format || !reader) return {};

  const std::unique_ptr<BundleFormat::Reader> candidates = format->startScan();
  if (!candidates) return {};
  // Every root's records stay where they are until the winners are known,
  // so the set of ids seen can refer to them instead of copying each id.
  std::vector<std::vector<BundleRecord>> perRoot;
  perRoot.reserve(roots.size());
  for (const std::string& root : roots) perRoot.push_back(scan(root, *candidates));
  std::size_t total = 0;
  for (const auto& records : perRoot) total += records.size();
  std::vector<BundleRecord*> winners;
  winners.reserve(total);
  {
    // Each id with the record that claimed it first.
    std::unordered_map<std::string_view, const BundleRecord*> seen;
    seen.reserve(total);
    for (auto& records : perRoot) {
      for (BundleRecord& record : records) {
        const auto [first, isFirst] = seen.emplace(record.app.id, &record);
        if (isFirst && record.listed) {
          winners.push_back(&record);
        } else if (withheld != nullptr) {
          withheld->push_back({record.app.id, record.app.url,
                               isFirst ? record.withheld : "masked by " + first->second->app.url});
        }
      }
    }
  }
  std::vector<AppInfo> apps;
  apps.reserve(winners.size());
  for (BundleRecord* record : winners) apps.push_back(std::move(record->app));

  // One collation key per name instead of a collator call per comparison:
  // the sort makes n log n comparisons, the keys cost n.
  thread_local const text::NameCollator collator;
  std::vector<std::string> keys;
  keys.reserve(apps.size());
  for (const AppInfo& app : apps) keys.push_back(collator.sortKey(app.name));
  std::vector<std::size_t> order(apps.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    const int byName = keys[a].compare(keys[b]);
    if (byName != 0) return byName < 0;
    return apps[a].url < apps[b].url;
  });

  std::vector<AppInfo> sorted;
  sorted.reserve(apps.size());
  for (const std::size_t index : order) sorted.push_back(std::move(apps[index]));
  return sorted;
}

}  // namespace orrery
