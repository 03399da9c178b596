#include "OrreryCore/arrangement/LayoutMerge.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <unordered_map>

namespace orrery::LayoutMerge {

namespace {

// Every app ID and folder UUID of the three arrangements is interned to a
// small number once, so that the decisions and the order step hash and
// compare integers instead of strings: a catalog of 10,000 apps merges in a
// few milliseconds. Nothing depends on the numbering, so the result does not
// either.
using Number = std::uint32_t;

// An app's place in one arrangement; `folder` is the folder's number.
struct Location {
  enum class Kind : std::uint8_t { absent, top, hidden, folder };
  Kind kind = Kind::absent;
  Number folder = 0;

  bool operator==(const Location&) const = default;
};

enum Side : std::size_t { baseSide, localSide, remoteSide };

struct AppRecord {
  std::string_view id;  // a view into one of the inputs, which outlive the merge
  std::array<Location, 3> places{};
  Location merged;
};

// One side's view of a folder. Two folders with the same UUID on one side (a
// damaged input) count as one, with the first one's name and both contents,
// so that every app located in the folder is in its list.
struct FolderSide {
  bool present = false;
  const std::string* name = nullptr;
  std::vector<Number> apps;
};

struct FolderRecord {
  Uuid id;
  std::array<FolderSide, 3> sides;
  bool surviving = false;
};

// Top-level keys as numbers: an app's number times two, a folder's times two
// plus one.
Number appKey(Number app) { return app << 1; }
Number folderKey(Number folder) { return (folder << 1) | 1; }
bool isFolderKey(Number key) { return (key & 1) != 0; }
Number numberOf(Number key) { return key >> 1; }

class Merger {
 public:
  explicit Merger(std::size_t expectedApps) {
    appNumbers_.reserve(expectedApps);
    apps_.reserve(expectedApps);
  }

  // Records one side's places, folders and top-level order. A hidden app is
  // hidden even if a damaged input also lists it in the grid (it has no place
  // there); otherwise its first place in items order counts.
  void read(const Layout& layout, Side side) {
    for (const auto& id : layout.hidden) place(app(id), side, Location{Location::Kind::hidden, 0});
    std::vector<Number>& keys = topKeys_[side];
    keys.reserve(layout.items.size());
    for (const auto& item : layout.items) {
      if (const auto* id = item.appID()) {
        const Number number = app(*id);
        place(number, side, Location{Location::Kind::top, 0});
        keys.push_back(appKey(number));
        continue;
      }
      const Folder& folder = *item.asFolder();
      const Number number = this->folder(folder.id);
      FolderSide& view = folders_[number].sides[side];
      if (!view.present) {
        view.present = true;
        view.name = &folder.name;
      }
      for (const auto& member : folder.appIDs) {
        const Number memberNumber = app(member);
        place(memberNumber, side, Location{Location::Kind::folder, number});
        view.apps.push_back(memberNumber);
      }
      keys.push_back(folderKey(number));
    }
  }

  Layout merge(const Layout& base, const Layout& local, const Layout& remote, bool localIsNewer) {
    read(base, baseSide);
    read(local, localSide);
    read(remote, remoteSide);

    Layout result;
    for (AppRecord& record : apps_) {
      record.merged = mergedLocation(record.places[baseSide], record.places[localSide],
                                     record.places[remoteSide], localIsNewer);
      if (record.merged.kind == Location::Kind::hidden) result.hidden.emplace(record.id);
      if (record.merged.kind == Location::Kind::folder) folders_[record.merged.folder].surviving = true;
    }

    const auto isTop = [&](Number key) {
      if (isFolderKey(key)) return folders_[numberOf(key)].surviving;
      return apps_[numberOf(key)].merged.kind == Location::Kind::top;
    };
    const std::vector<Number> topOrder =
        Sides::order(&topKeys_[baseSide], &topKeys_[localSide], &topKeys_[remoteSide], localIsNewer, isTop);

    result.items.reserve(topOrder.size());
    for (const Number key : topOrder) {
      if (!isFolderKey(key)) {
        result.items.push_back(LayoutItem::app(std::string(apps_[numberOf(key)].id)));
        continue;
      }
      const Number number = numberOf(key);
      const FolderRecord& record = folders_[number];
      const auto sideList = [&](Side side) {
        return record.sides[side].present ? &record.sides[side].apps : nullptr;
      };
      const auto sideName = [&](Side side) { return record.sides[side].name; };
      const Location here{Location::Kind::folder, number};
      const auto belongsHere = [&](Number app) { return apps_[app].merged == here; };
      const std::vector<Number> contents = Sides::order(sideList(baseSide), sideList(localSide),
                                                        sideList(remoteSide), localIsNewer, belongsHere);

      // A surviving folder has an app merged into it, so local or remote has it.
      const std::string* name =
          mergedValue(sideName(baseSide), sideName(localSide), sideName(remoteSide), localIsNewer);
      Folder folder{record.id, *name, {}};
      folder.appIDs.reserve(contents.size());
      for (const Number app : contents) folder.appIDs.emplace_back(apps_[app].id);
      result.items.push_back(LayoutItem::folder(std::move(folder)));
    }

    result.version = *mergedValue(&base.version, &local.version, &remote.version, localIsNewer);
    return result;
  }

 private:
  // The table of the header: agreement, a one-sided change, a change against
  // a removal, then the newer side.
  static Location mergedLocation(const Location& base, const Location& local, const Location& remote,
                                 bool localIsNewer) {
    if (local == remote) return local;
    if (local == base) return remote;
    if (remote == base) return local;
    if (local.kind == Location::Kind::absent) return remote;
    if (remote.kind == Location::Kind::absent) return local;
    return localIsNewer ? local : remote;
  }

  // The same three-way rule for a plain value; a side without the value (the
  // folder is not there) leaves the decision to the other.
  template <typename T>
  static const T* mergedValue(const T* base, const T* local, const T* remote, bool localIsNewer) {
    if (!local) return remote;
    if (!remote) return local;
    if (*local == *remote) return local;
    if (base && *local == *base) return remote;
    if (base && *remote == *base) return local;
    return localIsNewer ? local : remote;
  }

  Number app(std::string_view id) {
    const auto [found, inserted] = appNumbers_.try_emplace(id, static_cast<Number>(apps_.size()));
    if (inserted) apps_.push_back(AppRecord{id, {}, {}});
    return found->second;
  }

  Number folder(const Uuid& id) {
    const auto [found, inserted] = folderNumbers_.try_emplace(id, static_cast<Number>(folders_.size()));
    if (inserted) folders_.push_back(FolderRecord{id, {}, false});
    return found->second;
  }

  void place(Number app, Side side, Location location) {
    Location& current = apps_[app].places[side];
    if (current.kind == Location::Kind::absent) current = location;
  }

  std::unordered_map<std::string_view, Number> appNumbers_;
  std::vector<AppRecord> apps_;
  std::unordered_map<Uuid, Number> folderNumbers_;
  std::vector<FolderRecord> folders_;
  std::array<std::vector<Number>, 3> topKeys_;
};

}  // namespace

Layout merge(const Layout& base, const Layout& local, const Layout& remote, bool localIsNewer) {
  Merger merger(local.items.size() + local.hidden.size() + remote.hidden.size());
  return merger.merge(base, local, remote, localIsNewer);
}

}  // namespace orrery::LayoutMerge
