#include "OrreryCore/arrangement/AppSearch.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <span>

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include "OrreryCore/text/Collation.h"
#include "OrreryCore/text/SearchFolding.h"

namespace orrery::AppSearch {

namespace {

constexpr int kNoMatch = 3;

// One collator per thread: building one per query would cost more than the
// search itself.
const text::NameCollator& collator() {
  thread_local const text::NameCollator instance;
  return instance;
}

// The next code point of UTF-8 text; malformed bytes count as one
// non-whitespace code point each.
UChar32 codePointAt(std::string_view text, std::size_t& offset) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto length = static_cast<std::int32_t>(text.size());
  auto position = static_cast<std::int32_t>(offset);
  UChar32 c = 0;
  U8_NEXT(bytes, position, length, c);
  offset = static_cast<std::size_t>(position);
  return c;
}

bool isWhitespace(UChar32 c) { return c >= 0 && u_isUWhiteSpace(c); }

std::string_view trimmed(std::string_view text) {
  std::size_t begin = 0;
  while (begin < text.size()) {
    std::size_t next = begin;
    if (!isWhitespace(codePointAt(text, next))) break;
    begin = next;
  }
  // Scan forwards to find where the trailing whitespace starts; names and
  // queries are short, and this needs no backwards UTF-8 decoding.
  std::size_t end = begin;
  for (std::size_t offset = begin; offset < text.size();) {
    if (!isWhitespace(codePointAt(text, offset))) end = offset;
  }
  return text.substr(begin, end - begin);
}

// Where the second, third, … whitespace-separated words of a folded name
// begin. The first word is the one rank 0 covers when the name does not start
// with whitespace; when it does, rank 0 cannot match and the first word is
// still skipped, as the rule says "a piece after the first".
std::vector<std::size_t> laterWordStarts(std::string_view folded) {
  std::vector<std::size_t> starts;
  bool inWord = false;
  bool seenWord = false;
  for (std::size_t offset = 0; offset < folded.size();) {
    const std::size_t start = offset;
    const bool space = isWhitespace(codePointAt(folded, offset));
    if (!space && !inWord) {
      if (seenWord) starts.push_back(start);
      seenWord = true;
    }
    inWord = !space;
  }
  return starts;
}

template <typename Words>
int rank(std::string_view name, const Words& laterWords, std::string_view query) {
  if (name.starts_with(query)) return 0;
  // Most names do not contain the query at all; one search settles those,
  // and a word that starts with the query is contained in the name as well.
  if (name.find(query) == std::string_view::npos) return kNoMatch;
  for (const std::size_t start : laterWords)
    if (name.substr(start).starts_with(query)) return 1;
  return 2;
}

}  // namespace

std::vector<AppInfo> filter(const std::vector<AppInfo>& apps, std::string_view query) {
  const std::string folded = text::searchFolded(trimmed(query));
  if (folded.empty()) return apps;

  struct Match {
    int rank;
    std::string sortKey;
    const AppInfo* app;
  };
  std::vector<Match> found;
  for (const AppInfo& app : apps) {
    const std::string name = text::searchFolded(app.name);
    // Word starts are only worth finding for names that contain the query.
    if (name.find(folded) == std::string::npos) continue;
    found.push_back({rank(name, laterWordStarts(name), folded), {}, &app});
  }
  // Sort keys only for the matches: building one costs more than a match test.
  for (Match& match : found) match.sortKey = collator().sortKey(match.app->name);
  std::stable_sort(found.begin(), found.end(), [](const Match& a, const Match& b) {
    if (a.rank != b.rank) return a.rank < b.rank;
    if (const int order = a.sortKey.compare(b.sortKey); order != 0) return order < 0;
    return a.app->id < b.app->id;
  });

  std::vector<AppInfo> result;
  result.reserve(found.size());
  for (const Match& match : found) result.push_back(*match.app);
  return result;
}

Index::Index(std::vector<AppInfo> apps) : apps_(std::move(apps)) {
  std::vector<std::string> sortKeys;
  sortKeys.reserve(apps_.size());
  for (const AppInfo& app : apps_) sortKeys.push_back(collator().sortKey(app.name));
  std::vector<std::size_t> order(apps_.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  // Stable, so apps equal in name and ID keep the order they were given in,
  // exactly as filter() leaves them.
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    if (const int byName = sortKeys[a].compare(sortKeys[b]); byName != 0) return byName < 0;
    return apps_[a].id < apps_[b].id;
  });

  entries_.reserve(order.size());
  for (const std::size_t position : order) {
    const std::string folded = text::searchFolded(apps_[position].name);
    const std::vector<std::size_t> words = laterWordStarts(folded);
    entries_.push_back(
        {position, folded_.size(), folded.size(), words_.size(), words_.size() + words.size()});
    folded_ += folded;
    words_.insert(words_.end(), words.begin(), words.end());
  }
}

std::vector<std::size_t> Index::matches(std::string_view query) const {
  std::vector<std::size_t> result;
  const std::string folded = text::searchFolded(trimmed(query));
  if (folded.empty()) {
    result.resize(apps_.size());
    std::iota(result.begin(), result.end(), std::size_t{0});
    return result;
  }

  // The entries are already in name order, so collecting each rank in turn
  // yields the final order without sorting.
  std::array<std::vector<std::size_t>, kNoMatch> byRank;
  const std::string_view names(folded_);
  for (const Entry& entry : entries_) {
    const std::span<const std::size_t> words(words_.data() + entry.wordsBegin,
                                             entry.wordsEnd - entry.wordsBegin);
    const int r = rank(names.substr(entry.begin, entry.length), words, folded);
    if (r != kNoMatch) byRank[static_cast<std::size_t>(r)].push_back(entry.app);
  }
  result = std::move(byRank[0]);
  result.insert(result.end(), byRank[1].begin(), byRank[1].end());
  result.insert(result.end(), byRank[2].begin(), byRank[2].end());
  return result;
}

std::vector<AppInfo> Index::filter(std::string_view query) const {
  const std::vector<std::size_t> positions = matches(query);
  std::vector<AppInfo> result;
  result.reserve(positions.size());
  for (const std::size_t position : positions) result.push_back(apps_[position]);
  return result;
}

Results::Results(std::shared_ptr<const Index> index, std::vector<std::size_t> positions)
    : index_(std::move(index)), positions_(std::move(positions)) {}

std::vector<AppInfo> Results::toVector() const { return std::vector<AppInfo>(begin(), end()); }

bool operator==(const Results& a, const Results& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

Results search(const std::shared_ptr<const Index>& index, std::string_view query) {
  if (!index) return {};
  return Results(index, index->matches(query));
}

}  // namespace orrery::AppSearch
