// Layout: the user's arrangement of the launcher grid.
//
// A flat list of top-level items, each one app or one folder of apps, page
// after page, plus the set of apps the user hid. Every edit of the grid —
// a drag, a new folder, a rename, hiding, sorting, a scan that found new or
// vanished apps, a merge with another machine — is one operation on a Layout
// value. Operations whose preconditions fail change nothing (and return no
// folder id where they would return one); nothing here throws.
//
// Apps are named by their app ID (AppInfo::id), compared as plain strings.
// An app ID is meant to appear at most once across items, folders and
// hidden; every operation that moves apps keeps it so, while reconciled()
// trusts its input and does not re-check it.
//
// The JSON form is shared by the arrangement file and the sync record:
//   {"hidden": [...], "items": [{"app": {"_0": "id"}},
//                               {"folder": {"_0": {"appIDs": [...], "id": "UUID", "name": "…"}}}],
//    "version": 1}
// Every key is required on reading, extra keys are ignored, and an item
// object must hold exactly one known key. Writing sorts keys and the hidden
// set, so the same Layout always encodes to the same bytes.
//
// Thread rules: a plain value. Copies may be used on any thread; the
// application edits its own copy on the main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <variant>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "OrreryCore/base/DecodingError.h"
#include "OrreryCore/base/Expected.h"
#include "OrreryCore/base/Uuid.h"
#include "OrreryCore/catalog/AppInfo.h"

namespace orrery {

// Top-level positions and positions inside a folder. Signed, because callers
// compute positions (a drop before the first item, a clamp) and out-of-range
// values, negative ones included, are simply rejected.
using Index = std::ptrdiff_t;

struct Folder {
  Uuid id;  // never changes after creation
  std::string name;
  std::vector<std::string> appIDs;  // in their order inside the folder

  // The localized "New Folder".
  static std::string defaultName();
  // The name trimmed of whitespace and newlines at both ends, or
  // defaultName() when nothing is left. Callers pass user input through this
  // before renameFolder(), which stores whatever it is given.
  static std::string normalizedName(std::string_view name);

  friend bool operator==(const Folder&, const Folder&) = default;
};

// Names a top-level item independently of a folder's contents: an app by its
// ID, a folder by its UUID. Ordering and merging work on these.
class LayoutItemKey {
 public:
  static LayoutItemKey app(std::string appID) { return LayoutItemKey(std::move(appID)); }
  static LayoutItemKey folder(Uuid id) { return LayoutItemKey(id); }

  bool isApp() const { return value_.index() == 0; }
  bool isFolder() const { return value_.index() == 1; }
  const std::string* appID() const { return std::get_if<std::string>(&value_); }
  const Uuid* folderID() const { return std::get_if<Uuid>(&value_); }

  friend bool operator==(const LayoutItemKey&, const LayoutItemKey&) = default;
  friend auto operator<=>(const LayoutItemKey&, const LayoutItemKey&) = default;
  std::size_t hash() const;

 private:
  explicit LayoutItemKey(std::string appID) : value_(std::move(appID)) {}
  explicit LayoutItemKey(Uuid id) : value_(id) {}
  std::variant<std::string, Uuid> value_;
};

struct LayoutItemKeyHash {
  std::size_t operator()(const LayoutItemKey& key) const noexcept { return key.hash(); }
};

// One top-level item: an app or a folder.
class LayoutItem {
 public:
  static LayoutItem app(std::string appID) { return LayoutItem(std::move(appID)); }
  static LayoutItem folder(Folder folder) { return LayoutItem(std::move(folder)); }

  bool isApp() const { return value_.index() == 0; }
  bool isFolder() const { return value_.index() == 1; }
  // Null when the item is of the other kind.
  const std::string* appID() const { return std::get_if<std::string>(&value_); }
  const Folder* asFolder() const { return std::get_if<Folder>(&value_); }
  Folder* asFolder() { return std::get_if<Folder>(&value_); }

  LayoutItemKey key() const;

  friend bool operator==(const LayoutItem&, const LayoutItem&) = default;

 private:
  explicit LayoutItem(std::string appID) : value_(std::move(appID)) {}
  explicit LayoutItem(Folder folder) : value_(std::move(folder)) {}
  std::variant<std::string, Folder> value_;
};

struct LayoutProjection;

struct Layout {
  using ItemKey = LayoutItemKey;

  std::int64_t version = 1;
  std::vector<LayoutItem> items;
  std::set<std::string> hidden;  // ordered, so encoding is deterministic

  static Layout empty() { return Layout{}; }

  friend bool operator==(const Layout&, const Layout&) = default;

  // --- Reading --------------------------------------------------------------

  // Every app ID in hidden, at top level or in any folder.
  AppIDSet referencedAppIDs() const;
  // The given IDs in arrangement order (folder contents in folder order);
  // IDs not in items, hidden ones included, are left out.
  std::vector<std::string> orderedAppIDs(const AppIDSet& among) const;
  // The first folder, in items order, that holds the app.
  std::optional<Uuid> folderID(const std::string& containing) const;
  // The top-level keys in order.
  std::vector<ItemKey> keys() const;

  // --- Scans ----------------------------------------------------------------

  // Aligns the arrangement with a scan: apps neither scanned nor kept vanish
  // from wherever they were (and from hidden); apps never seen before are
  // appended in the Finder-like name order (ties by ID); folders keep their
  // place and are normalized afterwards.
  Layout reconciled(const std::vector<AppInfo>& apps, const AppIDSet& keeping) const;

  // Empty folders vanish; a folder of one app becomes that app in place.
  void normalizeFolders();

  // --- Folders --------------------------------------------------------------

  // Drops the app at `dragged` onto the app at `onto`: they become a folder
  // at the target's place, the target app first.
  std::optional<Uuid> makeFolder(Index dragged, Index onto, std::string name);
  // A folder of the given apps in arrangement order, placed where the first
  // of them was (right after its folder when it was inside one). Needs two.
  std::optional<Uuid> makeFolder(const AppIDSet& appIDs, std::string name);
  // Appends the app to the folder and removes it from everywhere else.
  // Hidden or unknown apps are not moved.
  void move(const std::string& appID, const Uuid& toFolder);
  // Appends those of the apps not yet in the folder, in arrangement order.
  void move(const AppIDSet& appIDs, const Uuid& toFolder);
  // Drops the top-level app at `appAt` onto a folder (no normalization).
  void add(Index appAt, const Uuid& toFolder);
  // "Remove from Folder": the app lands right after its former folder.
  void takeOut(const std::string& appID, const Uuid& fromFolder);
  // Takes the app out of the folder and inserts it at `insertAt`, clamped,
  // counted after the folder normalized.
  void remove(const std::string& appID, const Uuid& fromFolder, Index insertAt);
  void moveInFolder(const Uuid& folderID, Index from, Index to);
  void renameFolder(const Uuid& folderID, std::string name);
  // The folder's apps replace it in place.
  void dissolveFolder(const Uuid& folderID);

  // --- Top level and hiding -------------------------------------------------

  // Removes item `from` and inserts it at `to`, an index into the list after
  // the removal. Out-of-range or equal indices change nothing.
  void move(Index from, Index to);
  void hide(const std::string& appID);
  // Shows the app again at the end, unless it is still somewhere in items.
  void unhide(const std::string& appID);

  // --- Sorting (see LayoutSorting.cpp) ---------------------------------------

  // Folders first, then apps, each in the Finder-like name order; an app the
  // lookup does not know sorts by its ID.
  Layout sortedByName(const std::function<std::optional<std::string>(const std::string&)>& appName) const;

  // --- One machine's view of a shared arrangement ------------------------------

  // What a machine with these apps installed shows: the arrangement filtered
  // to them, with folders that shrank to one app shown as that app and
  // remembered in `collapsed`.
  LayoutProjection projected(const AppIDSet& installed) const;
  // The arrangement filtered to the given apps (hidden included); folders are
  // normalized.
  Layout pruned(const AppIDSet& keeping) const;
  // Folds an edited view back into this full arrangement. See
  // OrderEmbedding.h for where apps that were not visible end up.
  Layout embedding(const Layout& edited, const LayoutProjection& projection, const AppIDSet& installed) const;

  // --- JSON ------------------------------------------------------------------

  // The same rules read both forms, so a document that is the file's bytes
  // or a record's tree decodes to the same Layout, or fails, either way.
  nlohmann::json toJson() const;
  static Expected<Layout, DecodingError> fromJson(const nlohmann::json& json);
  // Pretty-printed, sorted keys, no trailing newline.
  std::string encoded() const;
  static Expected<Layout, DecodingError> decode(std::string_view bytes);

 private:
  bool contains(const std::string& appID) const;
  std::optional<std::size_t> folderIndex(const Uuid& folderID) const;
  void removeEverywhere(const AppIDSet& ids, const Uuid& except);
};

// This machine's view of a shared arrangement.
struct LayoutProjection {
  Layout visible;
  // Folders that shrank to a single visible app, by that app.
  std::unordered_map<std::string, Uuid> collapsed;

  friend bool operator==(const LayoutProjection&, const LayoutProjection&) = default;
};

}  // namespace orrery
