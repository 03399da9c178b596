#include "OrreryCore/testing/LayoutBuilders.h"

namespace orrery::testing {

Uuid uuidFor(std::string_view label) {
  // FNV-1a spread over the 16 bytes; only has to be stable and distinct
  // for the handful of labels a test uses.
  Uuid::Bytes bytes{};
  std::uint64_t hash = 14695981039346656037ULL;
  for (std::size_t round = 0; round < 2; ++round) {
    for (const char c : label) {
      hash ^= static_cast<unsigned char>(c);
      hash *= 1099511628211ULL;
    }
    hash ^= round + 1;
    hash *= 1099511628211ULL;
    for (std::size_t i = 0; i < 8; ++i) bytes[round * 8 + i] = static_cast<std::uint8_t>(hash >> (8 * i));
  }
  return Uuid(bytes);
}

LayoutItem app(std::string appID) { return LayoutItem::app(std::move(appID)); }

LayoutItem folder(std::string name, std::vector<std::string> appIDs) {
  const Uuid id = uuidFor(name);
  return folder(id, std::move(name), std::move(appIDs));
}

LayoutItem folder(Uuid id, std::string name, std::vector<std::string> appIDs) {
  return LayoutItem::folder(Folder{id, std::move(name), std::move(appIDs)});
}

Layout layoutOf(std::vector<LayoutItem> items, std::set<std::string> hidden) {
  Layout layout;
  layout.items = std::move(items);
  layout.hidden = std::move(hidden);
  return layout;
}

AppInfo appInfo(std::string id, std::string name) {
  AppInfo info;
  info.name = name.empty() ? id : std::move(name);
  info.url = "/apps/" + id;
  info.id = std::move(id);
  return info;
}

std::vector<AppInfo> appInfos(std::initializer_list<std::string> ids) {
  std::vector<AppInfo> out;
  for (const auto& id : ids) out.push_back(appInfo(id));
  return out;
}

std::vector<std::string> idsOf(const std::vector<AppInfo>& apps) {
  std::vector<std::string> out;
  for (const AppInfo& info : apps) out.push_back(info.id);
  return out;
}

std::unordered_map<std::string, AppInfo> byID(const std::vector<AppInfo>& apps) {
  std::unordered_map<std::string, AppInfo> out;
  for (const AppInfo& info : apps) out.emplace(info.id, info);
  return out;
}

std::string describe(const Layout& layout) {
  std::string out;
  for (const auto& item : layout.items) {
    if (!out.empty()) out += ' ';
    if (const auto* id = item.appID()) {
      out += *id;
    } else {
      const Folder& f = *item.asFolder();
      out += '[' + f.name + ':';
      for (const auto& member : f.appIDs) out += ' ' + member;
      out += ']';
    }
  }
  if (!layout.hidden.empty()) {
    out += " | hidden:";
    for (const auto& id : layout.hidden) out += ' ' + id;
  }
  return out;
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

namespace orrery {
void PrintTo(const Layout& layout, std::ostream* out) {
  *out << "v" << layout.version << " " << testing::describe(layout);
}
}  // namespace orrery
