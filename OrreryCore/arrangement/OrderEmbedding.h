// The order-embedding step: puts an edited order back into a fuller old one.
//
// A machine shows only part of a shared order (the apps installed there) and
// the user edits that part. embedOrder() keeps the edit and puts back what
// the machine could not see, each hidden element after the element that
// preceded it in the old order:
//
//   - Every element of `edited` appears exactly once, in edited order (a
//     repeated element keeps its first place).
//   - An element of `old` that is not in `edited` and that `keep` accepts
//     (it was not visible, so the edit could not have removed it) appears
//     exactly once. It is anchored to the nearest element before it in `old`
//     that is in `edited`, and follows that anchor wherever the edit moved
//     it; several kept elements with one anchor keep their old order.
//     With no such predecessor it goes to the front.
//   - Anything else of `old` (visible, removed by the edit) is dropped.
//
// So an unedited view gives back `old` exactly, and an element moved in the
// view drags the invisible elements that followed it along. The three-way
// merge of arrangements uses the same step to lay one side's order over
// another's.
//
// Thread rules: pure functions.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <vector>

#include "OrreryCore/base/FlatMap.h"

namespace orrery {

// Where one element of the result comes from: `edited[index]` or `old[index]`.
struct EmbeddedPlace {
  bool fromEdited = true;
  std::size_t index = 0;
  friend bool operator==(const EmbeddedPlace&, const EmbeddedPlace&) = default;
};

// The rule above, told as places in the two inputs, so callers holding
// records beside their keys need no second lookup. One flat hash table and
// flat arrays: this runs over every item of an arrangement on each sync.
template <typename Key, typename Hash = std::hash<Key>, typename Keep>
std::vector<EmbeddedPlace> embedOrderPlaces(const std::vector<Key>& old, const std::vector<Key>& edited,
                                            Keep&& keep) {
  constexpr std::size_t kNotEdited = static_cast<std::size_t>(-1);
  // Key -> its first index in edited; kNotEdited for kept old elements, so a
  // repeated old element is placed once.
  FlatMap<Key, std::size_t, Hash> seen(edited.size() + old.size() / 4 + 1);
  std::vector<char> editedFirst(edited.size(), 0);
  for (std::size_t i = 0; i < edited.size(); ++i) editedFirst[i] = seen.tryEmplace(edited[i], i).second;

  // Kept old elements with the edited slot they follow (0 = the front,
  // k + 1 = after edited[k]), in old order.
  std::vector<std::pair<std::size_t, std::size_t>> kept;
  std::size_t anchor = 0;
  for (std::size_t i = 0; i < old.size(); ++i) {
    if (const std::size_t* found = seen.find(old[i])) {
      if (*found != kNotEdited) anchor = *found + 1;
      continue;
    }
    if (!keep(old[i])) continue;
    seen.tryEmplace(old[i], kNotEdited);
    kept.emplace_back(anchor, i);
  }
  // Stable by anchor, so a group keeps its old order.
  std::stable_sort(kept.begin(), kept.end(), [](const auto& a, const auto& b) { return a.first < b.first; });

  std::vector<EmbeddedPlace> result;
  result.reserve(edited.size() + kept.size());
  std::size_t next = 0;
  const auto emitKeptUpTo = [&](std::size_t slot) {
    for (; next < kept.size() && kept[next].first == slot; ++next)
      result.push_back({false, kept[next].second});
  };
  emitKeptUpTo(0);
  for (std::size_t i = 0; i < edited.size(); ++i) {
    if (!editedFirst[i]) continue;
    result.push_back({true, i});
    emitKeptUpTo(i + 1);
  }
  return result;
}

template <typename Key, typename Hash = std::hash<Key>, typename Keep>
std::vector<Key> embedOrder(const std::vector<Key>& old, const std::vector<Key>& edited, Keep&& keep) {
  std::vector<Key> result;
  const auto places = embedOrderPlaces<Key, Hash>(old, edited, std::forward<Keep>(keep));
  result.reserve(places.size());
  for (const auto& place : places)
    result.push_back(place.fromEdited ? edited[place.index] : old[place.index]);
  return result;
}

}  // namespace orrery
