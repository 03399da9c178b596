#include "OrreryCore/testing/LayoutChoices.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "OrreryCore/catalog/AppInfo.h"

namespace orrery::testing {

std::size_t Choices::below(std::size_t bound) {
  if (bound <= 1) return 0;
  std::size_t value = byte();
  if (bound > 256) value = (value << 8) | byte();
  return value % bound;
}

Index Choices::index(std::size_t count) {
  const std::uint8_t kind = byte();
  if (kind < 16) return -1;
  if (kind < 24) return static_cast<Index>(count);
  if (kind < 28) return static_cast<Index>(count) + 1000;
  if (kind < 30) return -1000;
  return static_cast<Index>(below(std::max<std::size_t>(count, 1)));
}

namespace {

// A folder id that depends only on the choices, so that a saved input
// replays to the same arrangement.
Uuid folderID(Choices& choices) {
  // Few distinct ids, so that different folders sometimes share one.
  Uuid::Bytes bytes{};
  bytes[15] = static_cast<std::uint8_t>(choices.below(8) + 1);
  bytes[6] = 0x40;
  bytes[8] = 0x80;
  return Uuid(bytes);
}

std::string folderName(Choices& choices) {
  static const char* const names[] = {"Games", "Work",  "Utilities", "  Spaced  ",
                                      "",      "Ärger", "Folder 10", "Folder 9"};
  return names[choices.below(std::size(names))];
}

const std::string& someApp(Choices& choices, const std::vector<std::string>& apps) {
  static const std::string unknown = "unknown.app";
  if (apps.empty()) return unknown;
  return apps[choices.below(apps.size())];
}

std::vector<Uuid> folderIDs(const Layout& layout) {
  std::vector<Uuid> ids;
  for (const auto& item : layout.items)
    if (const Folder* folder = item.asFolder()) ids.push_back(folder->id);
  return ids;
}

// Usually an existing folder, sometimes one that does not exist.
Uuid someFolder(Choices& choices, const Layout& layout) {
  const std::vector<Uuid> ids = folderIDs(layout);
  const std::size_t pick = choices.below(ids.size() + 1);
  if (pick == ids.size()) {
    Uuid::Bytes bytes{};
    bytes[0] = 0xEE;
    bytes[15] = choices.byte();
    return Uuid(bytes);
  }
  return ids[pick];
}

AppIDSet someApps(Choices& choices, const std::vector<std::string>& apps) {
  AppIDSet chosen;
  const std::size_t count = choices.below(5);
  for (std::size_t i = 0; i < count; ++i) chosen.insert(someApp(choices, apps));
  return chosen;
}

}  // namespace

Layout consistentLayout(Choices& choices, const std::vector<std::string>& universe) {
  std::vector<std::string> apps;
  for (const auto& id : universe)
    if (choices.below(5) != 0) apps.push_back(id);
  // A shuffle driven by the choices.
  for (std::size_t i = apps.size(); i > 1; --i) std::swap(apps[i - 1], apps[choices.below(i)]);

  Layout layout;
  layout.version = static_cast<std::int64_t>(choices.below(3));
  std::size_t next = 0;
  std::size_t folders = 0;
  while (next < apps.size()) {
    const std::size_t left = apps.size() - next;
    const std::size_t kind = choices.below(10);
    if (left >= 2 && kind < 2) {
      const std::size_t size = 2 + choices.below(std::min<std::size_t>(left - 1, 5));
      // Distinct ids: a consistent arrangement never repeats a folder.
      Uuid::Bytes bytes{};
      bytes[6] = 0x40;
      bytes[8] = 0x80;
      ++folders;
      bytes[14] = static_cast<std::uint8_t>(folders >> 8);
      bytes[15] = static_cast<std::uint8_t>(folders);
      Folder folder{Uuid(bytes), folderName(choices), {}};
      for (std::size_t i = 0; i < size; ++i) folder.appIDs.push_back(apps[next++]);
      layout.items.push_back(LayoutItem::folder(std::move(folder)));
    } else if (kind == 2) {
      layout.hidden.insert(apps[next++]);
    } else {
      layout.items.push_back(LayoutItem::app(apps[next++]));
    }
  }
  return layout;
}

Layout arbitraryLayout(Choices& choices, const std::vector<std::string>& apps) {
  Layout layout;
  layout.version = static_cast<std::int64_t>(choices.byte()) - 128;
  const std::size_t items = choices.below(24);
  for (std::size_t i = 0; i < items; ++i) {
    if (choices.below(4) == 0) {
      Folder folder{folderID(choices), folderName(choices), {}};
      const std::size_t size = choices.below(5);
      for (std::size_t j = 0; j < size; ++j) folder.appIDs.push_back(someApp(choices, apps));
      layout.items.push_back(LayoutItem::folder(std::move(folder)));
    } else {
      layout.items.push_back(LayoutItem::app(someApp(choices, apps)));
    }
  }
  const std::size_t hidden = choices.below(4);
  for (std::size_t i = 0; i < hidden; ++i) layout.hidden.insert(someApp(choices, apps));
  return layout;
}

std::string applyOperation(Layout& layout, Choices& choices, const std::vector<std::string>& apps,
                           bool includeScans) {
  const std::size_t count = layout.items.size();
  switch (choices.below(includeScans ? 16 : 15)) {
    case 0: {
      const Index dragged = choices.index(count), onto = choices.index(count);
      layout.makeFolder(dragged, onto, folderName(choices));
      return "makeFolder(dragged: " + std::to_string(dragged) + ", onto: " + std::to_string(onto) + ")";
    }
    case 1: {
      const AppIDSet ids = someApps(choices, apps);
      layout.makeFolder(ids, folderName(choices));
      return "makeFolder(appIDs: " + std::to_string(ids.size()) + " apps)";
    }
    case 2: {
      const std::string id = someApp(choices, apps);
      layout.move(id, someFolder(choices, layout));
      return "move(appID: " + id + ", toFolder:)";
    }
    case 3: {
      const AppIDSet ids = someApps(choices, apps);
      layout.move(ids, someFolder(choices, layout));
      return "move(appIDs: " + std::to_string(ids.size()) + " apps, toFolder:)";
    }
    case 4: {
      const Index at = choices.index(count);
      layout.add(at, someFolder(choices, layout));
      return "add(appAt: " + std::to_string(at) + ", toFolder:)";
    }
    case 5:
    case 6: {
      const Uuid folder = someFolder(choices, layout);
      std::string id = someApp(choices, apps);
      // Mostly an app that really is in that folder.
      for (const auto& item : layout.items)
        if (const Folder* f = item.asFolder();
            f && f->id == folder && !f->appIDs.empty() && choices.below(8) != 0)
          id = f->appIDs[choices.below(f->appIDs.size())];
      if (choices.flag()) {
        layout.takeOut(id, folder);
        return "takeOut(appID: " + id + ", fromFolder:)";
      }
      const Index at = choices.index(count + 2) - 1;
      layout.remove(id, folder, at);
      return "remove(appID: " + id + ", fromFolder:, insertAt: " + std::to_string(at) + ")";
    }
    case 7: {
      const Index from = choices.index(count), to = choices.index(count);
      layout.move(from, to);
      return "move(from: " + std::to_string(from) + ", to: " + std::to_string(to) + ")";
    }
    case 8: {
      const Uuid folder = someFolder(choices, layout);
      const Index from = choices.index(5), to = choices.index(5);
      layout.moveInFolder(folder, from, to);
      return "moveInFolder(from: " + std::to_string(from) + ", to: " + std::to_string(to) + ")";
    }
    case 9:
      layout.renameFolder(someFolder(choices, layout), folderName(choices));
      return "renameFolder";
    case 10:
      layout.dissolveFolder(someFolder(choices, layout));
      return "dissolveFolder";
    case 11: {
      const std::string id = someApp(choices, apps);
      layout.hide(id);
      return "hide(" + id + ")";
    }
    case 12: {
      std::string id = someApp(choices, apps);
      if (!layout.hidden.empty() && choices.below(4) != 0) {
        auto it = layout.hidden.begin();
        std::advance(it, static_cast<Index>(choices.below(layout.hidden.size())));
        id = *it;
      }
      layout.unhide(id);
      return "unhide(" + id + ")";
    }
    case 13:
      layout.normalizeFolders();
      return "normalizeFolders";
    case 14: {
      const bool named = choices.flag();
      layout = layout.sortedByName([named](const std::string& id) -> std::optional<std::string> {
        if (!named || id.back() == '3') return std::nullopt;
        // Names that collide and differ only in case or digits.
        return std::string(id.back() % 2 == 0 ? "Tool " : "tool ") + id.substr(3);
      });
      return "sortedByName";
    }
    default: {
      // A scan that finds most apps, perhaps new ones, and keeps some missing ones.
      std::vector<AppInfo> scanned;
      AppIDSet keeping;
      for (const auto& id : apps) {
        const std::size_t fate = choices.below(8);
        if (fate < 6) scanned.push_back(AppInfo{id, "Name " + id.substr(4), "/apps/" + id, {}});
        if (fate == 7) keeping.insert(id);
      }
      layout = layout.reconciled(scanned, keeping);
      return "reconciled(" + std::to_string(scanned.size()) + " apps)";
    }
  }
}

}  // namespace orrery::testing
