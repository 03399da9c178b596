// AppSearch: the filter behind the overlay's search field.
//
// Query and names are compared in their search-folded form (case and Latin,
// Greek and Cyrillic accents ignored, see text/SearchFolding.h), the query
// trimmed of surrounding whitespace. A name matches in one of three ranks:
//   0  the name starts with the query            ("Pro" → "Pro Tools")
//   1  a later word of the name starts with it   ("pro" → "Logic Pro")
//   2  the name contains it anywhere else        ("pro" → "Improv")
// Matches come in rank order, within a rank in the Finder-like name order,
// equal names by app ID. A blank query matches every app, in the order given.
// Matching works on the code points of the folded text, so a query that ends
// in a base letter already matches a name where that letter carries a mark
// the folding keeps (Japanese か matches が only when typed as が).
//
// The search runs on every keystroke over every installed app. filter()
// folds and orders from scratch on each call; Index does that work once for
// a list of apps (rebuild it when the list changes) and then answers each
// query with a single pass and no sorting.
//
// Thread rules: filter() is a pure function. An Index is immutable after
// construction and may be shared by threads.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "catalog/AppInfo.h"

namespace orrery::AppSearch {

// The apps that match the query, in rank order.
std::vector<AppInfo> filter(const std::vector<AppInfo>& apps, std::string_view query);

class Index {
 public:
  Index() = default;
  // Folds every name and fixes the name order once.
  explicit Index(std::vector<AppInfo> apps);

  const std::vector<AppInfo>& apps() const { return apps_; }

  // Positions in apps() of the matching apps, in rank order; every position,
  // in order, for a blank query. Cheaper than filter() when the caller only
  // needs to point at the apps.
  std::vector<std::size_t> matches(std::string_view query) const;
  // The same as AppSearch::filter(apps(), query).
  std::vector<AppInfo> filter(std::string_view query) const;

 private:
  struct Entry {
    std::size_t app;  // position in apps_
    std::string folded;
    // Byte offsets of the words after the first, where rank 1 looks.
    std::vector<std::size_t> laterWords;
  };

  std::vector<AppInfo> apps_;
  std::vector<Entry> entries_;  // in name order (ties by ID)
};

}  // namespace orrery::AppSearch
