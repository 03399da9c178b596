#include "OrreryCore/arrangement/Layout.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <numeric>

#include "OrreryCore/arrangement/KeyView.h"
#include "OrreryCore/arrangement/OrderEmbedding.h"
#include "OrreryCore/base/FlatMap.h"
#include "OrreryCore/text/Collation.h"
#include "OrreryCore/text/Localized.h"

namespace orrery {

namespace {

// Calls `visit` with every app ID placed in the grid, top level and inside
// folders, in order, until it returns false; false when it stopped early.
template <typename Visit>
bool forEachPlacedApp(const std::vector<LayoutItem>& items, Visit&& visit) {
  for (const auto& item : items) {
    if (const auto* id = item.appID()) {
      if (!visit(*id)) return false;
    } else {
      for (const auto& member : item.asFolder()->appIDs)
        if (!visit(member)) return false;
    }
  }
  return true;
}

// A set of app IDs as views into strings held elsewhere.
using IDViewSet = FlatMap<std::string_view, char>;

}  // namespace

// --- Folder and keys ----------------------------------------------------------

std::string Folder::defaultName() { return text::localized("New Folder", "Default name of a new folder"); }

std::string Folder::normalizedName(std::string_view name) {
  // Unicode white space, not just ASCII: a name pasted from elsewhere may
  // end in a no-break or ideographic space.
  const auto* bytes = reinterpret_cast<const uint8_t*>(name.data());
  const auto length = static_cast<int32_t>(name.size());
  int32_t begin = 0;
  while (begin < length) {
    int32_t next = begin;
    UChar32 c = 0;
    U8_NEXT(bytes, next, length, c);
    if (c < 0 || !u_isUWhiteSpace(c)) break;
    begin = next;
  }
  int32_t end = length;
  while (end > begin) {
    int32_t previous = end;
    UChar32 c = 0;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"  // inside ICU's macro
    U8_PREV(bytes, begin, previous, c);
#pragma GCC diagnostic pop
    if (c < 0 || !u_isUWhiteSpace(c)) break;
    end = previous;
  }
  if (begin == end) return defaultName();
  return std::string(name.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin)));
}

std::size_t LayoutItemKey::hash() const {
  if (const auto* id = appID()) return std::hash<std::string>()(*id);
  return std::hash<Uuid>()(*folderID()) ^ 0x5bd1e995u;
}

LayoutItemKey LayoutItem::key() const {
  if (const auto* id = appID()) return LayoutItemKey::app(*id);
  return LayoutItemKey::folder(asFolder()->id);
}

// --- Reading ------------------------------------------------------------------

AppIDSet Layout::referencedAppIDs() const {
  AppIDSet ids(hidden.begin(), hidden.end());
  forEachPlacedApp(items, [&](const std::string& id) {
    ids.insert(id);
    return true;
  });
  return ids;
}

std::vector<std::string> Layout::orderedAppIDs(const AppIDSet& among) const {
  std::vector<std::string> ordered;
  for (const auto& item : items) {
    if (const auto* id = item.appID()) {
      if (among.contains(*id)) ordered.push_back(*id);
    } else {
      for (const auto& member : item.asFolder()->appIDs)
        if (among.contains(member)) ordered.push_back(member);
    }
  }
  return ordered;
}

std::optional<Uuid> Layout::folderID(const std::string& containing) const {
  for (const auto& item : items) {
    const Folder* folder = item.asFolder();
    if (folder && std::find(folder->appIDs.begin(), folder->appIDs.end(), containing) != folder->appIDs.end())
      return folder->id;
  }
  return std::nullopt;
}

std::vector<Layout::ItemKey> Layout::keys() const {
  std::vector<ItemKey> out;
  out.reserve(items.size());
  for (const auto& item : items) out.push_back(item.key());
  return out;
}

bool Layout::contains(const std::string& appID) const {
  return !forEachPlacedApp(items, [&](const std::string& id) { return id != appID; });
}

std::optional<std::size_t> Layout::folderIndex(const Uuid& folderID) const {
  for (std::size_t i = 0; i < items.size(); ++i) {
    const Folder* folder = items[i].asFolder();
    if (folder && folder->id == folderID) return i;
  }
  return std::nullopt;
}

// --- Scans --------------------------------------------------------------------

namespace {

// Keeps the apps `keep` accepts, top level and inside folders; folders stay
// where they are even when emptied (callers normalize).
template <typename Keep>
std::vector<LayoutItem> filteredItems(const std::vector<LayoutItem>& items, Keep&& keep) {
  std::vector<LayoutItem> out;
  out.reserve(items.size());
  for (const auto& item : items) {
    if (const auto* id = item.appID()) {
      if (keep(*id)) out.push_back(item);
    } else {
      Folder folder = *item.asFolder();
      std::erase_if(folder.appIDs, [&](const std::string& member) { return !keep(member); });
      out.push_back(LayoutItem::folder(std::move(folder)));
    }
  }
  return out;
}

bool inRange(Index index, std::size_t count) { return index >= 0 && static_cast<std::size_t>(index) < count; }

std::size_t at(Index index) { return static_cast<std::size_t>(index); }

}  // namespace

namespace {

// Every app ID the arrangement mentions, as views into it.
IDViewSet referencedViews(const Layout& layout) {
  IDViewSet ids(layout.hidden.size() + layout.items.size() * 2);
  for (const auto& id : layout.hidden) ids.tryEmplace(id, 0);
  forEachPlacedApp(layout.items, [&](std::string_view id) {
    ids.tryEmplace(id, 0);
    return true;
  });
  return ids;
}

}  // namespace

Layout Layout::reconciled(const std::vector<AppInfo>& apps, const AppIDSet& keeping) const {
  // Views, not copies: a scan reconciles thousands of IDs on every change.
  IDViewSet present(keeping.size() + apps.size());
  for (const auto& id : keeping) present.tryEmplace(id, 0);
  for (const auto& app : apps) present.tryEmplace(app.id, 0);
  const auto known = referencedViews(*this);

  Layout result;
  result.version = version;
  for (const auto& id : hidden)
    if (present.contains(id)) result.hidden.insert(id);
  result.items = filteredItems(items, [&](const std::string& id) { return present.contains(id); });

  // New apps in scan order, then stably by name; sort keys are built once
  // per app because a first scan can bring thousands.
  std::vector<const AppInfo*> fresh;
  for (const auto& app : apps)
    if (!known.contains(app.id)) fresh.push_back(&app);
  if (!fresh.empty()) {
    const text::NameCollator collator;
    std::vector<std::string> sortKeys;
    sortKeys.reserve(fresh.size());
    for (const AppInfo* app : fresh) sortKeys.push_back(collator.sortKey(app->name));
    std::vector<std::size_t> order(fresh.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
      if (const int byName = sortKeys[a].compare(sortKeys[b]); byName != 0) return byName < 0;
      return fresh[a]->id < fresh[b]->id;
    });
    IDViewSet appended(fresh.size());
    for (const std::size_t i : order)
      if (appended.tryEmplace(fresh[i]->id, 0).second) result.items.push_back(LayoutItem::app(fresh[i]->id));
  }

  result.normalizeFolders();
  return result;
}

void Layout::normalizeFolders() {
  std::vector<LayoutItem> out;
  out.reserve(items.size());
  for (auto& item : items) {
    Folder* folder = item.asFolder();
    if (!folder) {
      out.push_back(std::move(item));
    } else if (folder->appIDs.size() == 1) {
      out.push_back(LayoutItem::app(std::move(folder->appIDs.front())));
    } else if (!folder->appIDs.empty()) {
      out.push_back(std::move(item));
    }
  }
  items = std::move(out);
}

// --- Folders ------------------------------------------------------------------

std::optional<Uuid> Layout::makeFolder(Index dragged, Index onto, std::string name) {
  if (dragged == onto || !inRange(dragged, items.size()) || !inRange(onto, items.size())) return std::nullopt;
  const std::string* draggedApp = items[at(dragged)].appID();
  const std::string* targetApp = items[at(onto)].appID();
  if (!draggedApp || !targetApp) return std::nullopt;

  Folder folder{Uuid::random(), std::move(name), {*targetApp, *draggedApp}};
  const Uuid id = folder.id;
  items.erase(items.begin() + dragged);
  const Index target = dragged < onto ? onto - 1 : onto;
  items[at(target)] = LayoutItem::folder(std::move(folder));
  return id;
}

std::optional<Uuid> Layout::makeFolder(const AppIDSet& appIDs, std::string name) {
  std::vector<std::string> ordered = orderedAppIDs(appIDs);
  if (ordered.size() < 2) return std::nullopt;

  std::size_t first = 0;
  for (; first < items.size(); ++first) {
    const LayoutItem& item = items[first];
    if (const auto* id = item.appID()) {
      if (*id == ordered.front()) break;
    } else {
      const auto& members = item.asFolder()->appIDs;
      if (std::find(members.begin(), members.end(), ordered.front()) != members.end()) break;
    }
  }

  const AppIDSet members(ordered.begin(), ordered.end());
  Folder folder{Uuid::random(), std::move(name), std::move(ordered)};
  const Uuid id = folder.id;
  if (items[first].isFolder()) {
    items.insert(items.begin() + static_cast<Index>(first) + 1, LayoutItem::folder(std::move(folder)));
  } else {
    items[first] = LayoutItem::folder(std::move(folder));
  }
  removeEverywhere(members, id);
  return id;
}

void Layout::removeEverywhere(const AppIDSet& ids, const Uuid& except) {
  std::vector<LayoutItem> out;
  out.reserve(items.size());
  for (auto& item : items) {
    if (const auto* id = item.appID()) {
      if (!ids.contains(*id)) out.push_back(std::move(item));
      continue;
    }
    Folder* folder = item.asFolder();
    if (folder->id != except)
      std::erase_if(folder->appIDs, [&](const std::string& member) { return ids.contains(member); });
    out.push_back(std::move(item));
  }
  items = std::move(out);
  normalizeFolders();
}

void Layout::move(const std::string& appID, const Uuid& toFolder) {
  const auto index = folderIndex(toFolder);
  if (!index) return;
  const auto& members = items[*index].asFolder()->appIDs;
  if (std::find(members.begin(), members.end(), appID) != members.end() || !contains(appID)) return;

  // Remove it everywhere else first, then append: the target folder's id
  // survives normalization because it gains the app before being judged.
  items[*index].asFolder()->appIDs.push_back(appID);
  removeEverywhere(AppIDSet{appID}, toFolder);
}

void Layout::move(const AppIDSet& appIDs, const Uuid& toFolder) {
  const auto index = folderIndex(toFolder);
  if (!index) return;
  Folder& folder = *items[*index].asFolder();
  std::vector<std::string> additions;
  for (auto& id : orderedAppIDs(appIDs))
    if (std::find(folder.appIDs.begin(), folder.appIDs.end(), id) == folder.appIDs.end())
      additions.push_back(std::move(id));
  if (additions.empty()) return;
  folder.appIDs.insert(folder.appIDs.end(), additions.begin(), additions.end());
  removeEverywhere(AppIDSet(additions.begin(), additions.end()), toFolder);
}

void Layout::add(Index appAt, const Uuid& toFolder) {
  if (!inRange(appAt, items.size())) return;
  const std::string* appID = items[at(appAt)].appID();
  const auto index = folderIndex(toFolder);
  if (!appID || !index) return;
  items[*index].asFolder()->appIDs.push_back(*appID);
  items.erase(items.begin() + appAt);
}

void Layout::takeOut(const std::string& appID, const Uuid& fromFolder) {
  const auto index = folderIndex(fromFolder);
  if (!index) return;
  remove(appID, fromFolder, static_cast<Index>(*index) + 1);
}

void Layout::remove(const std::string& appID, const Uuid& fromFolder, Index insertAt) {
  const auto index = folderIndex(fromFolder);
  if (!index) return;
  auto& members = items[*index].asFolder()->appIDs;
  if (std::find(members.begin(), members.end(), appID) == members.end()) return;
  std::erase(members, appID);
  normalizeFolders();
  const Index count = static_cast<Index>(items.size());
  const Index position = std::min(std::max(insertAt, Index{0}), count);
  items.insert(items.begin() + position, LayoutItem::app(appID));
}

void Layout::moveInFolder(const Uuid& folderID, Index from, Index to) {
  const auto index = folderIndex(folderID);
  if (!index) return;
  auto& members = items[*index].asFolder()->appIDs;
  if (from == to || !inRange(from, members.size()) || !inRange(to, members.size())) return;
  std::string moved = std::move(members[at(from)]);
  members.erase(members.begin() + from);
  members.insert(members.begin() + to, std::move(moved));
}

void Layout::renameFolder(const Uuid& folderID, std::string name) {
  if (const auto index = folderIndex(folderID)) items[*index].asFolder()->name = std::move(name);
}

void Layout::dissolveFolder(const Uuid& folderID) {
  const auto index = folderIndex(folderID);
  if (!index) return;
  std::vector<std::string> members = std::move(items[*index].asFolder()->appIDs);
  const auto position = items.begin() + static_cast<Index>(*index);
  const auto after = items.erase(position);
  std::vector<LayoutItem> apps;
  apps.reserve(members.size());
  for (auto& id : members) apps.push_back(LayoutItem::app(std::move(id)));
  items.insert(after, std::make_move_iterator(apps.begin()), std::make_move_iterator(apps.end()));
}

// --- Top level and hiding -----------------------------------------------------

void Layout::move(Index from, Index to) {
  if (from == to || !inRange(from, items.size()) || !inRange(to, items.size())) return;
  LayoutItem moved = std::move(items[at(from)]);
  items.erase(items.begin() + from);
  items.insert(items.begin() + to, std::move(moved));
}

void Layout::hide(const std::string& appID) {
  std::erase_if(items, [&](const LayoutItem& item) {
    const auto* id = item.appID();
    return id && *id == appID;
  });
  for (auto& item : items)
    if (Folder* folder = item.asFolder()) std::erase(folder->appIDs, appID);
  normalizeFolders();
  hidden.insert(appID);
}

void Layout::unhide(const std::string& appID) {
  if (hidden.erase(appID) == 0) return;
  if (!contains(appID)) items.push_back(LayoutItem::app(appID));
}

// --- One machine's view -----------------------------------------------------------

LayoutProjection Layout::projected(const AppIDSet& installed) const {
  LayoutProjection projection;
  Layout& visible = projection.visible;
  visible.version = version;
  const auto isInstalled = [&](const std::string& id) { return installed.contains(id); };
  visible.items = filteredItems(items, isInstalled);
  for (const auto& id : hidden)
    if (installed.contains(id)) visible.hidden.insert(id);
  for (const auto& item : visible.items) {
    const Folder* folder = item.asFolder();
    if (folder && folder->appIDs.size() == 1) projection.collapsed[folder->appIDs.front()] = folder->id;
  }
  visible.normalizeFolders();
  return projection;
}

Layout Layout::pruned(const AppIDSet& keeping) const {
  Layout result;
  result.version = version;
  result.items = filteredItems(items, [&](const std::string& id) { return keeping.contains(id); });
  for (const auto& id : hidden)
    if (keeping.contains(id)) result.hidden.insert(id);
  result.normalizeFolders();
  return result;
}

namespace {

// True when an app ID has more than one place (items, folders, hidden).
bool hasRepeatedApps(const Layout& layout) {
  IDViewSet seen(layout.hidden.size() + layout.items.size() * 2);
  for (const auto& id : layout.hidden) seen.tryEmplace(id, 0);
  return !forEachPlacedApp(layout.items, [&](std::string_view id) { return seen.tryEmplace(id, 0).second; });
}

// The items with every app's first place kept and later ones dropped; hidden
// apps lose their places in the grid. Folders emptied by that vanish.
std::vector<LayoutItem> withoutRepeatedApps(std::vector<LayoutItem> items,
                                            const std::set<std::string>& hidden) {
  std::unordered_set<std::string_view> seen(hidden.begin(), hidden.end());
  std::vector<LayoutItem> unique;
  unique.reserve(items.size());
  for (auto& item : items) {
    if (const auto* id = item.appID()) {
      // The view must point at the string's final home: moving a short
      // string moves its characters.
      if (seen.contains(*id)) continue;
      unique.push_back(std::move(item));
      seen.insert(*unique.back().appID());
      continue;
    }
    Folder& folder = *item.asFolder();
    const bool wasEmpty = folder.appIDs.empty();
    std::erase_if(folder.appIDs, [&](const std::string& id) { return !seen.insert(id).second; });
    if (!folder.appIDs.empty() || wasEmpty) unique.push_back(std::move(item));
  }
  return unique;
}

}  // namespace

Layout Layout::embedding(const Layout& edited, const LayoutProjection& projection,
                         const AppIDSet& installed) const {
  const auto isInvisible = [&](std::string_view id) { return !installed.contains(id); };

  std::unordered_map<Uuid, const Folder*> oldFolders;
  for (const auto& item : items)
    if (const Folder* folder = item.asFolder()) oldFolders.try_emplace(folder->id, folder);

  // Which old folders the view shows as themselves.
  std::unordered_set<Uuid> editedFolders;
  for (const auto& item : edited.items)
    if (const Folder* folder = item.asFolder()) editedFolders.insert(folder->id);

  // The edited top level, with a collapsed folder's stand-in app turned back
  // into its folder (unless the edit already shows that folder itself).
  std::vector<LayoutItem> editedItems;
  editedItems.reserve(edited.items.size());
  for (const auto& item : edited.items) {
    if (const auto* id = item.appID()) {
      const auto collapsed = projection.collapsed.find(*id);
      if (collapsed != projection.collapsed.end() && oldFolders.contains(collapsed->second) &&
          editedFolders.insert(collapsed->second).second) {
        const Folder& old = *oldFolders.at(collapsed->second);
        editedItems.push_back(LayoutItem::folder(Folder{old.id, old.name, {*id}}));
        continue;
      }
    }
    editedItems.push_back(item);
  }

  std::vector<KeyView> oldKeys;
  oldKeys.reserve(items.size());
  for (const auto& item : items) oldKeys.push_back(keyView(item));
  std::vector<KeyView> editedKeys;
  editedKeys.reserve(editedItems.size());
  for (const auto& item : editedItems) editedKeys.push_back(keyView(item));

  // Old items the view could not have removed: apps not installed here, and
  // folders that still hold an app not installed here.
  const auto keepFromOld = [&](const KeyView& key) {
    if (!key.isFolder) return isInvisible(key.app);
    const Folder& folder = *oldFolders.at(key.folder);
    return std::any_of(folder.appIDs.begin(), folder.appIDs.end(), isInvisible);
  };

  Layout result;
  result.version = version;
  const auto places = embedOrderPlaces<KeyView, KeyViewHash>(oldKeys, editedKeys, keepFromOld);
  result.items.reserve(places.size());
  for (const auto& place : places) {
    if (place.fromEdited) {
      // Each edited item is placed once, so it can be moved; the keys that
      // view its strings are not used after embedOrderPlaces().
      LayoutItem item = std::move(editedItems[place.index]);
      // A folder the view showed keeps its invisible members where they were.
      if (Folder* folder = item.asFolder(); folder && oldFolders.contains(folder->id)) {
        const auto& oldMembers = oldFolders.at(folder->id)->appIDs;
        const auto order = embedOrder<std::string_view>(
            std::vector<std::string_view>(oldMembers.begin(), oldMembers.end()),
            std::vector<std::string_view>(folder->appIDs.begin(), folder->appIDs.end()), isInvisible);
        folder->appIDs = std::vector<std::string>(order.begin(), order.end());
      }
      result.items.push_back(std::move(item));
    } else {
      // Only the invisible parts of an old item come back.
      LayoutItem item = items[place.index];
      if (Folder* folder = item.asFolder())
        std::erase_if(folder->appIDs, [&](const std::string& id) { return !isInvisible(id); });
      result.items.push_back(std::move(item));
    }
  }

  result.hidden = edited.hidden;
  for (const auto& id : hidden)
    if (isInvisible(id)) result.hidden.insert(id);

  // Every app exactly once, whatever the inputs held: the first place wins and
  // a hidden app has no place in the grid. Consistent inputs, the usual
  // case, are recognised with one sort and left as they are.
  if (hasRepeatedApps(result)) result.items = withoutRepeatedApps(std::move(result.items), result.hidden);
  return result;
}

}  // namespace orrery
