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

#include <cstddef>
#include <functional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace orrery {

template <typename Key, typename Hash = std::hash<Key>, typename Keep>
std::vector<Key> embedOrder(const std::vector<Key>& old, const std::vector<Key>& edited, Keep&& keep) {
  std::unordered_set<Key, Hash> inEdited;
  inEdited.reserve(edited.size());
  std::vector<Key> editedOnce;
  editedOnce.reserve(edited.size());
  for (const Key& key : edited)
    if (inEdited.insert(key).second) editedOnce.push_back(key);

  // Kept elements grouped by the edited element they follow; the group of
  // `front` goes before everything.
  std::vector<Key> front;
  std::unordered_map<Key, std::vector<Key>, Hash> following;
  std::unordered_set<Key, Hash> placed;
  const Key* anchor = nullptr;
  for (const Key& key : old) {
    if (inEdited.contains(key)) {
      anchor = &key;
      continue;
    }
    if (!keep(key) || !placed.insert(key).second) continue;
    (anchor ? following[*anchor] : front).push_back(key);
  }

  std::vector<Key> result;
  result.reserve(editedOnce.size() + placed.size());
  result.insert(result.end(), front.begin(), front.end());
  for (const Key& key : editedOnce) {
    result.push_back(key);
    if (auto group = following.find(key); group != following.end())
      result.insert(result.end(), group->second.begin(), group->second.end());
  }
  return result;
}

}  // namespace orrery
