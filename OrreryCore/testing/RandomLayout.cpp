#include "testing/RandomLayout.h"

#include <algorithm>
#include <cstdio>

namespace orrery::testing {

namespace {

std::size_t below(Random& random, std::size_t bound) {
  return bound == 0 ? 0 : std::uniform_int_distribution<std::size_t>(0, bound - 1)(random);
}

bool chance(Random& random, double p) { return std::bernoulli_distribution(p)(random); }

// An index that is usually valid and sometimes just outside the range.
Index someIndex(Random& random, std::size_t count) {
  if (chance(random, 0.1)) return chance(random, 0.5) ? -1 : static_cast<Index>(count);
  return static_cast<Index>(below(random, std::max<std::size_t>(count, 1)));
}

const std::string& someApp(Random& random, const std::vector<std::string>& universe) {
  return universe[below(random, universe.size())];
}

Uuid someFolder(Random& random, const Layout& layout) {
  std::vector<Uuid> ids;
  for (const auto& item : layout.items)
    if (const Folder* folder = item.asFolder()) ids.push_back(folder->id);
  if (ids.empty() || chance(random, 0.1)) return Uuid::random();
  return ids[below(random, ids.size())];
}

std::string folderName(Random& random) {
  static const char* names[] = {"Games", "Work",  "Utilities", "  Spaced  ",
                                "",      "Ärger", "Folder 10", "Folder 9"};
  return names[below(random, std::size(names))];
}

}  // namespace

std::vector<std::string> appUniverse(std::size_t count) {
  std::vector<std::string> ids;
  ids.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "app%03zu", i);
    ids.emplace_back(buffer);
  }
  return ids;
}

AppIDSet randomSubset(Random& random, const std::vector<std::string>& universe, double p) {
  AppIDSet subset;
  for (const auto& id : universe)
    if (chance(random, p)) subset.insert(id);
  return subset;
}

Layout randomLayout(Random& random, const std::vector<std::string>& universe) {
  std::vector<std::string> apps;
  for (const auto& id : universe)
    if (chance(random, 0.8)) apps.push_back(id);
  std::shuffle(apps.begin(), apps.end(), random);

  Layout layout;
  std::size_t next = 0;
  while (next < apps.size()) {
    const std::size_t left = apps.size() - next;
    if (left >= 2 && chance(random, 0.2)) {
      const std::size_t size = 2 + below(random, std::min<std::size_t>(left - 1, 5));
      Folder folder{Uuid::random(), folderName(random), {}};
      for (std::size_t i = 0; i < size; ++i) folder.appIDs.push_back(apps[next++]);
      layout.items.push_back(LayoutItem::folder(std::move(folder)));
    } else if (chance(random, 0.08)) {
      layout.hidden.insert(apps[next++]);
    } else {
      layout.items.push_back(LayoutItem::app(apps[next++]));
    }
  }
  return layout;
}

std::string applyRandomOperation(Layout& layout, Random& random, const std::vector<std::string>& universe,
                                 bool includeScans) {
  const std::size_t count = layout.items.size();
  switch (below(random, includeScans ? 15 : 14)) {
    case 0: {
      const Index d = someIndex(random, count), o = someIndex(random, count);
      layout.makeFolder(d, o, folderName(random));
      return "makeFolder(dragged: " + std::to_string(d) + ", onto: " + std::to_string(o) + ")";
    }
    case 1: {
      const AppIDSet ids = randomSubset(random, universe, 0.1);
      layout.makeFolder(ids, folderName(random));
      return "makeFolder(appIDs: " + std::to_string(ids.size()) + " apps)";
    }
    case 2: {
      const std::string& id = someApp(random, universe);
      layout.move(id, someFolder(random, layout));
      return "move(appID: " + id + ", toFolder:)";
    }
    case 3: {
      layout.move(randomSubset(random, universe, 0.1), someFolder(random, layout));
      return "move(appIDs:toFolder:)";
    }
    case 4: {
      const Index i = someIndex(random, count);
      layout.add(i, someFolder(random, layout));
      return "add(appAt: " + std::to_string(i) + ", toFolder:)";
    }
    case 5:
    case 6: {
      const Uuid folder = someFolder(random, layout);
      std::string id = someApp(random, universe);
      for (const auto& item : layout.items)
        if (const Folder* f = item.asFolder();
            f && f->id == folder && !f->appIDs.empty() && chance(random, 0.9))
          id = f->appIDs[below(random, f->appIDs.size())];
      if (chance(random, 0.5)) {
        layout.takeOut(id, folder);
        return "takeOut(appID: " + id + ", fromFolder:)";
      }
      const Index at = someIndex(random, count + 2) - 1;
      layout.remove(id, folder, at);
      return "remove(appID: " + id + ", fromFolder:, insertAt: " + std::to_string(at) + ")";
    }
    case 7: {
      const Index a = someIndex(random, count), b = someIndex(random, count);
      layout.move(a, b);
      return "move(from: " + std::to_string(a) + ", to: " + std::to_string(b) + ")";
    }
    case 8: {
      const Uuid folder = someFolder(random, layout);
      const Index a = someIndex(random, 4), b = someIndex(random, 4);
      layout.moveInFolder(folder, a, b);
      return "moveInFolder(from: " + std::to_string(a) + ", to: " + std::to_string(b) + ")";
    }
    case 9:
      layout.renameFolder(someFolder(random, layout), folderName(random));
      return "renameFolder";
    case 10:
      layout.dissolveFolder(someFolder(random, layout));
      return "dissolveFolder";
    case 11: {
      const std::string& id = someApp(random, universe);
      layout.hide(id);
      return "hide(" + id + ")";
    }
    case 12:
    case 13: {
      std::string id = someApp(random, universe);
      if (!layout.hidden.empty() && chance(random, 0.8)) {
        auto it = layout.hidden.begin();
        std::advance(it, static_cast<Index>(below(random, layout.hidden.size())));
        id = *it;
      }
      layout.unhide(id);
      return "unhide(" + id + ")";
    }
    default: {
      // A scan that finds most apps, a few new ones, and keeps some missing ones.
      std::vector<AppInfo> scanned;
      for (const auto& id : universe)
        if (chance(random, 0.85))
          scanned.push_back(AppInfo{id, "Name " + id.substr(3, 1), "/apps/" + id, {}});
      layout = layout.reconciled(scanned, randomSubset(random, universe, 0.05));
      return "reconciled(" + std::to_string(scanned.size()) + " apps)";
    }
  }
}

std::unordered_map<std::string, int> appOccurrences(const Layout& layout) {
  std::unordered_map<std::string, int> counts;
  for (const auto& id : layout.hidden) ++counts[id];
  for (const auto& item : layout.items) {
    if (const auto* id = item.appID()) {
      ++counts[*id];
    } else {
      for (const auto& member : item.asFolder()->appIDs) ++counts[member];
    }
  }
  return counts;
}

}  // namespace orrery::testing
