// Layout::sortedByName, kept apart from the other operations because it is
// the one that needs the collator.
#include <algorithm>
#include <unordered_map>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/text/Collation.h"

namespace orrery {

Layout Layout::sortedByName(
    const std::function<std::optional<std::string>(const std::string&)>& appName) const {
  const text::NameCollator collator;

  // Sort keys of the display names, made once per app rather than once per
  // comparison. Hidden apps get no name from the lookup: should one stand in
  // items anyway, it sorts by its ID like an app the lookup does not know.
  std::unordered_map<std::string, std::string> sortKeys;
  for (const std::string& id : referencedAppIDs()) {
    std::optional<std::string> name;
    if (!hidden.contains(id)) name = appName(id);
    sortKeys.emplace(id, collator.sortKey(name ? *name : id));
  }
  const auto appLess = [&](const std::string& a, const std::string& b) {
    if (const int byName = sortKeys.at(a).compare(sortKeys.at(b)); byName != 0) return byName < 0;
    return a < b;
  };

  std::vector<Folder> folders;
  std::vector<std::string> apps;
  for (const LayoutItem& item : items) {
    if (const std::string* id = item.appID()) {
      apps.push_back(*id);
    } else {
      folders.push_back(*item.asFolder());
      // The contents follow the same order, so the whole arrangement reads
      // from A to Z after "Sort by Name".
      std::vector<std::string>& members = folders.back().appIDs;
      std::stable_sort(members.begin(), members.end(), appLess);
    }
  }

  std::vector<std::string> folderKeys;
  folderKeys.reserve(folders.size());
  for (const Folder& folder : folders) folderKeys.push_back(collator.sortKey(folder.name));
  std::vector<std::size_t> folderOrder(folders.size());
  for (std::size_t i = 0; i < folderOrder.size(); ++i) folderOrder[i] = i;
  // Uuid orders byte-wise, which is the order of its upper-case hex text.
  std::stable_sort(folderOrder.begin(), folderOrder.end(), [&](std::size_t a, std::size_t b) {
    if (const int byName = folderKeys[a].compare(folderKeys[b]); byName != 0) return byName < 0;
    return folders[a].id < folders[b].id;
  });
  std::stable_sort(apps.begin(), apps.end(), appLess);

  Layout sorted;
  sorted.version = version;
  sorted.hidden = hidden;
  sorted.items.reserve(items.size());
  for (const std::size_t index : folderOrder)
    sorted.items.push_back(LayoutItem::folder(std::move(folders[index])));
  for (std::string& id : apps) sorted.items.push_back(LayoutItem::app(std::move(id)));
  return sorted;
}

}  // namespace orrery
