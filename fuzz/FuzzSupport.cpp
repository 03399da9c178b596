#include "FuzzSupport.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "catalog/AppInfo.h"

namespace orrery::fuzz {

std::uint8_t FuzzInput::byte() { return next_ < size_ ? data_[next_++] : std::uint8_t{0}; }

std::size_t FuzzInput::below(std::size_t bound) {
  if (bound <= 1) return 0;
  std::size_t value = byte();
  if (bound > 256) value = (value << 8) | byte();
  return value % bound;
}

Index FuzzInput::index(std::size_t count) {
  const std::uint8_t kind = byte();
  if (kind < 16) return -1;
  if (kind < 24) return static_cast<Index>(count);
  if (kind < 28) return static_cast<Index>(count) + 1000;
  if (kind < 30) return -1000;
  return static_cast<Index>(below(std::max<std::size_t>(count, 1)));
}

void fail(std::string_view what, const std::vector<const Layout*>& layouts) {
  std::fprintf(stderr, "property failed: %.*s\n", static_cast<int>(what.size()), what.data());
  for (const Layout* layout : layouts) std::fprintf(stderr, "  %s\n", shape(*layout).c_str());
  std::fflush(stderr);
  std::abort();
}

const std::vector<std::string>& universe() {
  static const std::vector<std::string> ids = [] {
    std::vector<std::string> made;
    for (int i = 0; i < 16; ++i) made.push_back(std::string("app") + char('0' + i / 10) + char('0' + i % 10));
    return made;
  }();
  return ids;
}

Uuid folderID(FuzzInput& input) {
  // Few distinct ids, so that different folders sometimes share one.
  Uuid::Bytes bytes{};
  bytes[15] = static_cast<std::uint8_t>(input.below(8) + 1);
  bytes[6] = 0x40;
  bytes[8] = 0x80;
  return Uuid(bytes);
}

namespace {

std::string folderName(FuzzInput& input) {
  static const char* const names[] = {"Games", "Work",  "Utilities", "  Spaced  ",
                                      "",      "Ärger", "Folder 10", "Folder 9"};
  return names[input.below(std::size(names))];
}

const std::string& someApp(FuzzInput& input, const std::vector<std::string>& apps) {
  static const std::string unknown = "unknown.app";
  if (apps.empty()) return unknown;
  return apps[input.below(apps.size())];
}

std::vector<Uuid> folderIDs(const Layout& layout) {
  std::vector<Uuid> ids;
  for (const auto& item : layout.items)
    if (const Folder* folder = item.asFolder()) ids.push_back(folder->id);
  return ids;
}

// Usually an existing folder, sometimes one that does not exist.
Uuid someFolder(FuzzInput& input, const Layout& layout) {
  const std::vector<Uuid> ids = folderIDs(layout);
  const std::size_t pick = input.below(ids.size() + 1);
  if (pick == ids.size()) {
    Uuid::Bytes bytes{};
    bytes[0] = 0xEE;
    bytes[15] = input.byte();
    return Uuid(bytes);
  }
  return ids[pick];
}

AppIDSet someApps(FuzzInput& input, const std::vector<std::string>& apps) {
  AppIDSet chosen;
  const std::size_t count = input.below(5);
  for (std::size_t i = 0; i < count; ++i) chosen.insert(someApp(input, apps));
  return chosen;
}

}  // namespace

Layout consistentLayout(FuzzInput& input) {
  std::vector<std::string> apps;
  for (const auto& id : universe())
    if (input.below(5) != 0) apps.push_back(id);
  // A shuffle driven by the input.
  for (std::size_t i = apps.size(); i > 1; --i) std::swap(apps[i - 1], apps[input.below(i)]);

  Layout layout;
  layout.version = static_cast<std::int64_t>(input.below(3));
  std::size_t next = 0;
  std::uint8_t folders = 0;
  while (next < apps.size()) {
    const std::size_t left = apps.size() - next;
    const std::size_t kind = input.below(10);
    if (left >= 2 && kind < 2) {
      const std::size_t size = 2 + input.below(std::min<std::size_t>(left - 1, 5));
      // Distinct ids: a consistent arrangement never repeats a folder.
      Uuid::Bytes bytes{};
      bytes[6] = 0x40;
      bytes[8] = 0x80;
      bytes[15] = ++folders;
      Folder folder{Uuid(bytes), folderName(input), {}};
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

Layout arbitraryLayout(FuzzInput& input) {
  Layout layout;
  layout.version = static_cast<std::int64_t>(input.byte()) - 128;
  const std::size_t items = input.below(24);
  for (std::size_t i = 0; i < items; ++i) {
    if (input.below(4) == 0) {
      Folder folder{folderID(input), folderName(input), {}};
      const std::size_t size = input.below(5);
      for (std::size_t j = 0; j < size; ++j) folder.appIDs.push_back(someApp(input, universe()));
      layout.items.push_back(LayoutItem::folder(std::move(folder)));
    } else {
      layout.items.push_back(LayoutItem::app(someApp(input, universe())));
    }
  }
  const std::size_t hidden = input.below(4);
  for (std::size_t i = 0; i < hidden; ++i) layout.hidden.insert(someApp(input, universe()));
  return layout;
}

std::string applyOperation(Layout& layout, FuzzInput& input, const std::vector<std::string>& apps,
                           bool includeScans) {
  const std::size_t count = layout.items.size();
  switch (input.below(includeScans ? 16 : 15)) {
    case 0: {
      const Index dragged = input.index(count), onto = input.index(count);
      layout.makeFolder(dragged, onto, folderName(input));
      return "makeFolder(dragged: " + std::to_string(dragged) + ", onto: " + std::to_string(onto) + ")";
    }
    case 1: {
      const AppIDSet ids = someApps(input, apps);
      layout.makeFolder(ids, folderName(input));
      return "makeFolder(appIDs: " + std::to_string(ids.size()) + " apps)";
    }
    case 2: {
      const std::string id = someApp(input, apps);
      layout.move(id, someFolder(input, layout));
      return "move(appID: " + id + ", toFolder:)";
    }
    case 3: {
      const AppIDSet ids = someApps(input, apps);
      layout.move(ids, someFolder(input, layout));
      return "move(appIDs: " + std::to_string(ids.size()) + " apps, toFolder:)";
    }
    case 4: {
      const Index at = input.index(count);
      layout.add(at, someFolder(input, layout));
      return "add(appAt: " + std::to_string(at) + ", toFolder:)";
    }
    case 5:
    case 6: {
      const Uuid folder = someFolder(input, layout);
      std::string id = someApp(input, apps);
      // Mostly an app that really is in that folder.
      for (const auto& item : layout.items)
        if (const Folder* f = item.asFolder();
            f && f->id == folder && !f->appIDs.empty() && input.below(8) != 0)
          id = f->appIDs[input.below(f->appIDs.size())];
      if (input.flag()) {
        layout.takeOut(id, folder);
        return "takeOut(appID: " + id + ", fromFolder:)";
      }
      const Index at = input.index(count + 2) - 1;
      layout.remove(id, folder, at);
      return "remove(appID: " + id + ", fromFolder:, insertAt: " + std::to_string(at) + ")";
    }
    case 7: {
      const Index from = input.index(count), to = input.index(count);
      layout.move(from, to);
      return "move(from: " + std::to_string(from) + ", to: " + std::to_string(to) + ")";
    }
    case 8: {
      const Uuid folder = someFolder(input, layout);
      const Index from = input.index(5), to = input.index(5);
      layout.moveInFolder(folder, from, to);
      return "moveInFolder(from: " + std::to_string(from) + ", to: " + std::to_string(to) + ")";
    }
    case 9:
      layout.renameFolder(someFolder(input, layout), folderName(input));
      return "renameFolder";
    case 10:
      layout.dissolveFolder(someFolder(input, layout));
      return "dissolveFolder";
    case 11: {
      const std::string id = someApp(input, apps);
      layout.hide(id);
      return "hide(" + id + ")";
    }
    case 12: {
      std::string id = someApp(input, apps);
      if (!layout.hidden.empty() && input.below(4) != 0) {
        auto it = layout.hidden.begin();
        std::advance(it, static_cast<Index>(input.below(layout.hidden.size())));
        id = *it;
      }
      layout.unhide(id);
      return "unhide(" + id + ")";
    }
    case 13:
      layout.normalizeFolders();
      return "normalizeFolders";
    case 14: {
      const bool named = input.flag();
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
      for (const auto& id : universe()) {
        const std::size_t fate = input.below(8);
        if (fate < 6) scanned.push_back(AppInfo{id, "Name " + id.substr(4), "/apps/" + id, {}});
        if (fate == 7) keeping.insert(id);
      }
      layout = layout.reconciled(scanned, keeping);
      return "reconciled(" + std::to_string(scanned.size()) + " apps)";
    }
  }
}

std::unordered_map<std::string, int> occurrences(const Layout& layout) {
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

void requireEveryAppOnce(const Layout& layout, std::string_view context,
                         const std::vector<const Layout*>& inputs) {
  for (const auto& [id, count] : occurrences(layout)) {
    if (count != 1) {
      std::vector<const Layout*> shown = inputs;
      shown.push_back(&layout);
      fail(std::string(context) + ": " + id + " has " + std::to_string(count) + " places", shown);
    }
  }
}

std::string shape(const Layout& layout) {
  std::string out;
  for (const auto& item : layout.items) {
    if (!out.empty()) out += ' ';
    if (const auto* id = item.appID()) {
      out += *id;
    } else {
      const Folder& folder = *item.asFolder();
      out += '[' + folder.name + ':';
      for (const auto& member : folder.appIDs) out += ' ' + member;
      out += ']';
    }
  }
  if (!layout.hidden.empty()) {
    out += " | hidden:";
    for (const auto& id : layout.hidden) out += ' ' + id;
  }
  return out;
}

}  // namespace orrery::fuzz
