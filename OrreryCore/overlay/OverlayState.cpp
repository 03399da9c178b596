#include "OrreryCore/overlay/OverlayState.h"

#include <algorithm>
#include <unordered_set>

#include "OrreryCore/overlay/GridGeometry.h"

namespace orrery {

namespace {

std::unordered_map<std::string, AppInfo> byID(const std::vector<AppInfo>& apps) {
  std::unordered_map<std::string, AppInfo> map;
  map.reserve(apps.size());
  for (const AppInfo& app : apps) map.emplace(app.id, app);  // emplace keeps the first
  return map;
}

}  // namespace

OverlayState::OverlayState(Layout layout, const std::vector<AppInfo>& apps, std::int64_t columns,
                           std::int64_t rows)
    : layout_(std::move(layout)), appsByID_(byID(apps)), perPage_(GridGeometry::slotsPerPage(columns, rows)) {
  rebuildSearch();
}

std::int64_t OverlayState::pageCount() const {
  const auto count = static_cast<std::int64_t>(layout_.items.size());
  return std::max<std::int64_t>(1, count / perPage_ + (count % perPage_ != 0 ? 1 : 0));
}

std::span<const LayoutItem> OverlayState::items(std::int64_t onPage) const {
  if (onPage < 0 || onPage >= pageCount()) return {};
  const auto count = static_cast<std::int64_t>(layout_.items.size());
  // onPage < pageCount, so onPage × perPage ≤ count and cannot overflow.
  const std::int64_t first = onPage * perPage_;
  const std::int64_t end = first + std::min(perPage_, count - first);
  return std::span<const LayoutItem>(layout_.items)
      .subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(end - first));
}

void OverlayState::goTo(std::int64_t page) {
  page_ = std::min(pageCount() - 1, std::max<std::int64_t>(page, 0));
}

void OverlayState::update(Layout layout, const std::vector<AppInfo>& apps, std::int64_t columns,
                          std::int64_t rows) {
  layout_ = std::move(layout);
  appsByID_ = byID(apps);
  perPage_ = GridGeometry::slotsPerPage(columns, rows);
  rebuildSearch();
  goTo(page_);
}

void OverlayState::rebuildSearch() {
  std::vector<AppInfo> searchable;
  std::unordered_set<std::string> taken;
  const auto consider = [&](const std::string& id) {
    if (layout_.hidden.contains(id)) return;
    const auto app = appsByID_.find(id);
    if (app == appsByID_.end()) return;    // not installed here
    if (!taken.insert(id).second) return;  // listed once, at its first place
    searchable.push_back(app->second);
  };
  for (const LayoutItem& item : layout_.items) {
    if (const std::string* id = item.appID()) {
      consider(*id);
    } else {
      for (const std::string& member : item.asFolder()->appIDs) consider(member);
    }
  }
  // Folding and ordering every name is the expensive part; skip it when an
  // update (a new page size, a moved icon) left the searchable apps as they were.
  if (search_ && search_->apps() == searchable) return;
  search_ = std::make_shared<const AppSearch::Index>(std::move(searchable));
}

AppSearch::Results OverlayState::searchResults() const { return AppSearch::search(search_, query_); }

std::optional<AppInfo> OverlayState::appToLaunchOnEnter() const {
  const AppSearch::Results results = searchResults();
  if (results.empty()) return std::nullopt;
  return results.front();
}

}  // namespace orrery
