// OverlayState: what the overlay shows, without any window.
//
// The arrangement, the current page and the search text, and what follows
// from them: how many pages there are, which items stand on a page, the
// search results and the app that Return launches. The overlay model keeps
// one and refreshes it through update() whenever the catalog or the grid
// size changes.
//
// Paging counts top-level items (an app or a folder each take one slot);
// the page is always a valid page, page 0 of an empty arrangement included.
// The search looks at every visible app of the arrangement, inside folders
// too, each once, at its first place; installed apps that stand nowhere in
// the arrangement and hidden apps are not searched. The searchable apps and
// their folded names are prepared once per update(), not per keystroke,
// which is why the arrangement can only be replaced through update().
//
// Thread rules: a value used on the main thread. Copies are cheap (the
// search index is shared and immutable) and may move to other threads.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "OrreryCore/arrangement/AppSearch.h"
#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/catalog/AppInfo.h"

namespace orrery {

class OverlayState {
 public:
  // Empty query, page 0. On duplicate app IDs the first record wins.
  // perPage = max(columns, 1) × max(rows, 1); overflow stops the program.
  OverlayState(Layout layout, const std::vector<AppInfo>& apps, std::int64_t columns, std::int64_t rows);

  const std::string& query() const { return query_; }
  // Only stores the text; entering or leaving a search does not move the page.
  void setQuery(std::string query) { query_ = std::move(query); }

  std::int64_t page() const { return page_; }
  const Layout& layout() const { return layout_; }
  const std::unordered_map<std::string, AppInfo>& appsByID() const { return appsByID_; }
  std::int64_t perPage() const { return perPage_; }

  // max(1, ⌈items / perPage⌉).
  std::int64_t pageCount() const;
  // The items of page p; empty for a page that does not exist.
  std::span<const LayoutItem> items(std::int64_t onPage) const;
  // Moves to p, clamped to the existing pages.
  void goTo(std::int64_t page);
  // Replaces arrangement, apps and page size, keeps the query, and pulls the
  // page back when it no longer exists.
  void update(Layout layout, const std::vector<AppInfo>& apps, std::int64_t columns, std::int64_t rows);

  // The searchable apps matching the query, best first; all of them, in
  // arrangement order, when the query is blank. The results read the
  // records in place and stay valid after this state changes.
  AppSearch::Results searchResults() const;
  // The first search result.
  std::optional<AppInfo> appToLaunchOnEnter() const;

  // Compares what the overlay shows; the search index is derived from it.
  friend bool operator==(const OverlayState& a, const OverlayState& b) {
    return a.query_ == b.query_ && a.page_ == b.page_ && a.layout_ == b.layout_ &&
           a.appsByID_ == b.appsByID_ && a.perPage_ == b.perPage_;
  }

 private:
  void rebuildSearch();

  std::string query_;
  std::int64_t page_ = 0;
  Layout layout_;
  std::unordered_map<std::string, AppInfo> appsByID_;
  std::int64_t perPage_ = 1;
  std::shared_ptr<const AppSearch::Index> search_;
};

}  // namespace orrery
