#include "OrreryCore/arrangement/LayoutDiff.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "OrreryCore/arrangement/KeyView.h"
#include "OrreryCore/base/FlatMap.h"

namespace orrery {

namespace {

constexpr std::uint32_t kAbsent = UINT32_MAX;

// Where a key sits on each side.
struct Places {
  std::uint32_t before = kAbsent;
  std::uint32_t after = kAbsent;
};

// Counts of present positions over a fixed range of slots, so the index of
// an item in a list that is being rearranged is a prefix sum away rather
// than a scan: a shuffle of ten thousand items makes about as many moves.
class PresenceCounts {
 public:
  // Every slot present: each node counts the slots of its range, built
  // bottom-up in one pass rather than one update per slot.
  explicit PresenceCounts(std::size_t size) : tree_(size + 1, 0) {
    for (std::size_t i = 1; i <= size; ++i) {
      tree_[i] += 1;
      if (const std::size_t parent = i + lowBit(i); parent <= size) tree_[parent] += tree_[i];
    }
  }

  void add(std::size_t slot, int delta) {
    for (std::size_t i = slot + 1; i < tree_.size(); i += lowBit(i)) tree_[i] += delta;
  }
  // How many slots before `slot` are present.
  Index before(std::size_t slot) const {
    std::int32_t sum = 0;
    for (std::size_t i = slot; i > 0; i -= lowBit(i)) sum += tree_[i];
    return sum;
  }

 private:
  static std::size_t lowBit(std::size_t i) { return i & (~i + 1); }
  std::vector<std::int32_t> tree_;  // half the cache lines of Index
};

// Positions (into `ranks`) of one longest strictly increasing subsequence,
// marked in the result. Patience sorting: O(n log n).
std::vector<char> longestIncreasingRun(const std::vector<std::uint32_t>& ranks) {
  std::vector<std::uint32_t> tails;  // position of the smallest tail of each run length
  std::vector<std::uint32_t> previous(ranks.size(), kAbsent);
  for (std::uint32_t i = 0; i < ranks.size(); ++i) {
    // Mostly the survivors are in order already and the run just grows.
    if (tails.empty() || ranks[tails.back()] < ranks[i]) {
      if (!tails.empty()) previous[i] = tails.back();
      tails.push_back(i);
      continue;
    }
    const auto at =
        std::lower_bound(tails.begin(), tails.end(), ranks[i],
                         [&](std::uint32_t position, std::uint32_t rank) { return ranks[position] < rank; });
    if (at != tails.begin()) previous[i] = *(at - 1);
    *at = i;
  }
  std::vector<char> inRun(ranks.size(), 0);
  for (std::uint32_t i = tails.empty() ? kAbsent : tails.back(); i != kAbsent; i = previous[i]) inRun[i] = 1;
  return inRun;
}

// Step 2 for the survivors outside the longest run (see diff() below).
void appendMoves(const std::vector<LayoutItem>& oldItems, const std::vector<std::uint32_t>& kept,
                 const std::vector<std::uint32_t>& ranks, const std::vector<std::uint32_t>& keptAtRank,
                 const std::vector<char>& stays, std::vector<LayoutChange>& changes) {
  // Every position a survivor will ever hold gets a slot on one line,
  // ordered as the finished list: first the movers that go before every
  // staying item, then each survivor's original slot, a staying one followed
  // by the movers that come after it up to the next staying one. At every
  // step the occupied slots, left to right, are the current list, so an
  // item's index is the number of occupied slots before its own.
  std::vector<std::uint32_t> originalSlot(kept.size());
  std::vector<std::uint32_t> moverSlot(kept.size(), kAbsent);
  std::uint32_t nextSlot = 0;
  const auto placeMoversFrom = [&](std::uint32_t rank) {
    for (; rank < kept.size() && !stays[keptAtRank[rank]]; ++rank) moverSlot[keptAtRank[rank]] = nextSlot++;
  };
  placeMoversFrom(0);
  for (std::uint32_t p = 0; p < kept.size(); ++p) {
    originalSlot[p] = nextSlot++;
    if (stays[p]) placeMoversFrom(ranks[p] + 1);
  }
  PresenceCounts present(nextSlot);
  for (std::uint32_t p = 0; p < kept.size(); ++p)
    if (!stays[p]) present.add(moverSlot[p], -1);
  // Movers go in final order, each landing right after the survivor that
  // precedes it in `after`, which is in place by then.
  for (std::uint32_t rank = 0; rank < kept.size(); ++rank) {
    const std::uint32_t p = keptAtRank[rank];
    if (stays[p]) continue;
    const Index from = present.before(originalSlot[p]);
    present.add(originalSlot[p], -1);
    const Index to = present.before(moverSlot[p]);
    present.add(moverSlot[p], 1);
    changes.push_back({LayoutChange::Kind::moved, oldItems[kept[p]].key(), from, to});
  }
}

LayoutDiff replaceAll(const Layout& before, const Layout& after) {
  LayoutDiff result;
  result.changes.reserve(before.items.size() + after.items.size());
  for (std::size_t i = before.items.size(); i-- > 0;)
    result.changes.push_back({LayoutChange::Kind::removed, before.items[i].key(), static_cast<Index>(i), -1});
  for (std::size_t j = 0; j < after.items.size(); ++j)
    result.changes.push_back({LayoutChange::Kind::inserted, after.items[j].key(), -1, static_cast<Index>(j)});
  result.hiddenChanged = before.hidden != after.hidden;
  return result;
}

}  // namespace

LayoutDiff diff(const Layout& before, const Layout& after) {
  const auto& oldItems = before.items;
  const auto& newItems = after.items;

  // Both sides in one table; a key seen twice on one side gives up matching.
  // Sized for the old side: most edits add few items, and a smaller index
  // stays in cache.
  FlatMap<KeyView, Places, KeyViewHash> places(oldItems.size() + 16);
  for (std::uint32_t i = 0; i < oldItems.size(); ++i)
    if (!places.tryEmplace(keyView(oldItems[i]), Places{i, kAbsent}).second) return replaceAll(before, after);
  // Each new item's index in `before`.
  std::vector<std::uint32_t> oldIndexOf(newItems.size(), kAbsent);
  for (std::uint32_t j = 0; j < newItems.size(); ++j) {
    auto [found, inserted] = places.tryEmplace(keyView(newItems[j]), Places{kAbsent, j});
    if (inserted) continue;
    if (found->after != kAbsent) return replaceAll(before, after);
    found->after = j;
    oldIndexOf[j] = found->before;
  }

  // Each surviving old item's place among the survivors in `after`.
  std::vector<std::uint32_t> rankOfOld(oldItems.size(), kAbsent);
  std::uint32_t keptCount = 0;
  for (std::uint32_t j = 0; j < newItems.size(); ++j)
    if (oldIndexOf[j] != kAbsent) rankOfOld[oldIndexOf[j]] = keptCount++;

  LayoutDiff result;
  result.hiddenChanged = before.hidden != after.hidden;
  auto& changes = result.changes;

  // 1. Removals, last first, so each index is still the old one.
  for (std::size_t i = oldItems.size(); i-- > 0;)
    if (rankOfOld[i] == kAbsent)
      changes.push_back({LayoutChange::Kind::removed, oldItems[i].key(), static_cast<Index>(i), -1});

  // 2. Moves. `kept` lists the survivors in old order (the list as it is
  // after the removals) and `ranks` their places in `after`; those on a
  // longest increasing run of ranks stay, every other one moves once.
  std::vector<std::uint32_t> kept;
  std::vector<std::uint32_t> ranks;
  std::vector<std::uint32_t> keptAtRank(keptCount);  // position in `kept` by rank
  kept.reserve(keptCount);
  ranks.reserve(keptCount);
  for (std::uint32_t i = 0; i < oldItems.size(); ++i) {
    if (rankOfOld[i] == kAbsent) continue;
    keptAtRank[rankOfOld[i]] = static_cast<std::uint32_t>(kept.size());
    kept.push_back(i);
    ranks.push_back(rankOfOld[i]);
  }
  const std::vector<char> stays = longestIncreasingRun(ranks);

  if (const auto movers = std::ranges::count(stays, 0); movers > 0) {
    changes.reserve(changes.size() + static_cast<std::size_t>(movers));
    appendMoves(oldItems, kept, ranks, keptAtRank, stays, changes);
  }

  // 3. Insertions, first to last: everything before each is in place.
  for (std::size_t j = 0; j < newItems.size(); ++j)
    if (oldIndexOf[j] == kAbsent)
      changes.push_back({LayoutChange::Kind::inserted, newItems[j].key(), -1, static_cast<Index>(j)});

  // 4. What kept folders hold and are called. Apps match by ID, so only a
  // folder can differ under the same key.
  for (std::size_t j = 0; j < newItems.size(); ++j) {
    const Folder* now = newItems[j].asFolder();
    if (oldIndexOf[j] == kAbsent || now == nullptr) continue;
    const Folder& then = *oldItems[oldIndexOf[j]].asFolder();
    if (then.appIDs != now->appIDs)
      changes.push_back({LayoutChange::Kind::folderChanged, newItems[j].key(), -1, static_cast<Index>(j)});
    if (then.name != now->name)
      changes.push_back({LayoutChange::Kind::renamed, newItems[j].key(), -1, static_cast<Index>(j)});
  }
  return result;
}

}  // namespace orrery
