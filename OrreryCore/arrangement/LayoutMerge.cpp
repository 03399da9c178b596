#include "arrangement/LayoutMerge.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>

namespace orrery::LayoutMerge {

namespace {

// An app's place in one arrangement.
struct Location {
  enum class Kind : std::uint8_t { absent, top, hidden, folder };
  Kind kind = Kind::absent;
  Uuid folder;  // only for Kind::folder

  static Location inFolder(const Uuid& id) { return Location{Kind::folder, id}; }
  bool operator==(const Location&) const = default;
};

// Views into the arrangements, which outlive the merge call: no app ID is
// copied until the result is built.
using Locations = std::unordered_map<std::string_view, Location>;

// A hidden app is hidden even if a damaged input also lists it in the grid
// (it has no place there); otherwise its first place in items order counts.
Locations locations(const Layout& layout) {
  Locations out;
  out.reserve(layout.items.size() + layout.hidden.size());
  for (const auto& id : layout.hidden) out.emplace(id, Location{Location::Kind::hidden, {}});
  for (const auto& item : layout.items) {
    if (const auto* id = item.appID()) {
      out.try_emplace(*id, Location{Location::Kind::top, {}});
    } else {
      const Folder& folder = *item.asFolder();
      for (const auto& member : folder.appIDs) out.try_emplace(member, Location::inFolder(folder.id));
    }
  }
  return out;
}

Location locationIn(const Locations& locations, std::string_view id) {
  const auto found = locations.find(id);
  return found == locations.end() ? Location{} : found->second;
}

// One side's view of a folder. Two folders with the same UUID on one side (a
// damaged input) count as one, with the first one's name and both contents,
// so that every app located in the folder is in its list.
struct FolderSide {
  const std::string* name = nullptr;
  std::vector<std::string_view> appIDs;
};

using Folders = std::unordered_map<Uuid, FolderSide>;

Folders folders(const Layout& layout) {
  Folders out;
  for (const auto& item : layout.items) {
    const Folder* folder = item.asFolder();
    if (!folder) continue;
    FolderSide& side = out[folder->id];
    if (!side.name) side.name = &folder->name;
    side.appIDs.insert(side.appIDs.end(), folder->appIDs.begin(), folder->appIDs.end());
  }
  return out;
}

const FolderSide* folderIn(const Folders& folders, const Uuid& id) {
  const auto found = folders.find(id);
  return found == folders.end() ? nullptr : &found->second;
}

// The table of the header: agreement, a one-sided change, a change against a
// removal, then the newer side.
Location mergedLocation(const Location& base, const Location& local, const Location& remote,
                        bool localIsNewer) {
  if (local == remote) return local;
  if (local == base) return remote;
  if (remote == base) return local;
  if (local.kind == Location::Kind::absent) return remote;
  if (remote.kind == Location::Kind::absent) return local;
  return localIsNewer ? local : remote;
}

// The three-way rule for a plain value; a side without the value (the folder
// is not there) leaves the decision to the other.
template <typename T>
const T* mergedValue(const T* base, const T* local, const T* remote, bool localIsNewer) {
  if (!local) return remote;
  if (!remote) return local;
  if (*local == *remote) return local;
  if (base && *local == *base) return remote;
  if (base && *remote == *base) return local;
  return localIsNewer ? local : remote;
}

}  // namespace

Layout merge(const Layout& base, const Layout& local, const Layout& remote, bool localIsNewer) {
  const Locations baseLocations = locations(base);
  const Locations localLocations = locations(local);
  const Locations remoteLocations = locations(remote);

  // Every app's merged place. Each decision depends on that app alone, so the
  // order of the visit does not matter.
  Locations merged;
  merged.reserve(localLocations.size() + remoteLocations.size());
  const auto decide = [&](std::string_view id) {
    if (merged.contains(id)) return;
    const Location place = mergedLocation(locationIn(baseLocations, id), locationIn(localLocations, id),
                                          locationIn(remoteLocations, id), localIsNewer);
    merged.emplace(id, place);
  };
  for (const auto& entry : localLocations) decide(entry.first);
  for (const auto& entry : remoteLocations) decide(entry.first);
  for (const auto& entry : baseLocations) decide(entry.first);

  Layout result;
  std::unordered_set<Uuid> surviving;
  for (const auto& [id, place] : merged) {
    if (place.kind == Location::Kind::hidden) result.hidden.emplace(id);
    if (place.kind == Location::Kind::folder) surviving.insert(place.folder);
  }

  const Folders baseFolders = folders(base);
  const Folders localFolders = folders(local);
  const Folders remoteFolders = folders(remote);

  // The top level.
  const auto isTop = [&](const LayoutItemKey& key) {
    if (const auto* id = key.appID()) return locationIn(merged, *id).kind == Location::Kind::top;
    return surviving.contains(*key.folderID());
  };
  const std::vector<LayoutItemKey> baseKeys = base.keys();
  const std::vector<LayoutItemKey> localKeys = local.keys();
  const std::vector<LayoutItemKey> remoteKeys = remote.keys();
  const std::vector<LayoutItemKey> topOrder =
      Sides::order<LayoutItemKey, LayoutItemKeyHash>(&baseKeys, &localKeys, &remoteKeys, localIsNewer, isTop);

  result.items.reserve(topOrder.size());
  for (const LayoutItemKey& key : topOrder) {
    if (const auto* id = key.appID()) {
      result.items.push_back(LayoutItem::app(*id));
      continue;
    }
    const Uuid& folderID = *key.folderID();
    const FolderSide* inBase = folderIn(baseFolders, folderID);
    const FolderSide* inLocal = folderIn(localFolders, folderID);
    const FolderSide* inRemote = folderIn(remoteFolders, folderID);

    const std::string* name = mergedValue(inBase ? inBase->name : nullptr, inLocal ? inLocal->name : nullptr,
                                          inRemote ? inRemote->name : nullptr, localIsNewer);
    const Location here = Location::inFolder(folderID);
    const auto belongsHere = [&](std::string_view id) { return locationIn(merged, id) == here; };
    const std::vector<std::string_view> contents = Sides::order<std::string_view>(
        inBase ? &inBase->appIDs : nullptr, inLocal ? &inLocal->appIDs : nullptr,
        inRemote ? &inRemote->appIDs : nullptr, localIsNewer, belongsHere);

    Folder folder{folderID, name ? *name : std::string(), {}};
    folder.appIDs.reserve(contents.size());
    for (const std::string_view id : contents) folder.appIDs.emplace_back(id);
    result.items.push_back(LayoutItem::folder(std::move(folder)));
  }

  result.version = *mergedValue(&base.version, &local.version, &remote.version, localIsNewer);
  return result;
}

}  // namespace orrery::LayoutMerge
