// LayoutMerge: the three-way merge of arrangements.
//
// When this machine and another one both edited the shared arrangement since
// the last state they agreed on, the sync planning combines `base` (that
// agreed state), `local` (this machine's arrangement) and `remote` (the one in
// the shared record). Every app's place, every folder's name and survival,
// and every order (top level, each folder's contents) is decided on its own,
// so an edit on one side never drags unrelated parts of the other side along.
// `localIsNewer` (this machine's arrangement changed later than the remote
// record) is the one tie-break wherever both sides changed the same thing.
//
// Where an app ends up. Its location in an arrangement is one of: top level,
// inside folder F (by UUID), hidden, absent (nowhere). With b, l, r its
// locations in base, local and remote, the first matching row decides:
//
//   l == r                       l      both sides agree (also: both removed it)
//   l == b                       r      only remote changed it
//   r == b                       l      only local changed it
//   l absent (r changed too)     r      a removal loses against a change the
//   r absent (l changed too)     l        other side made: that side still
//                                         has the app and did something with it
//   otherwise                    l if localIsNewer, else r
//
// So a removal on one side wins over "unchanged" on the other, a move (into or
// out of a folder, into hidden, an addition) on one side wins over
// "unchanged", and two different moves follow the newer side. A removal never
// wins over a move: losing an app that one machine still uses is worse than
// keeping one that the other machine can remove again (pruning of apps that no
// machine reports removes it for good).
//
// Folders. A folder (by UUID, from any of the three) survives exactly when at
// least one app's merged location is that folder; it then holds exactly those
// apps. A folder that one side dissolved or emptied therefore vanishes unless
// the other side put an app into it, and an empty folder (never produced by
// the arrangement's operations) does not survive a merge. Its name: the name
// of the only side that has it; else the same three-way rule as above over
// (base name, local name, remote name), with localIsNewer deciding when both
// renamed it differently. The merged `version` follows the same three-way rule.
//
// Orders. The top level (by Layout::ItemKey) and each surviving folder's
// contents (by app ID) are ordered by Sides::order below: one side's order is
// followed, and what only the other side has is embedded next to its old
// neighbour with the shared order-embedding step (OrderEmbedding.h).
//
// Every app of the three inputs thus ends in exactly one place or is absent by
// the table; the merge is deterministic and does not depend on hash order. It
// does not normalize folders: a folder merged down to one app stays a folder,
// and callers that want the normalized form run normalizeFolders() afterwards.
// The merge of an arrangement with itself changes nothing: merge(b, x, x) == x,
// merge(b, b, r) == r and merge(b, l, b) == l for arrangements without empty
// folders and duplicates, as every operation of Layout keeps them.
//
// Thread rules: pure functions over values; callable from any thread.
#pragma once

#include <functional>
#include <unordered_set>
#include <vector>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/arrangement/OrderEmbedding.h"

namespace orrery::LayoutMerge {

Layout merge(const Layout& base, const Layout& local, const Layout& remote, bool localIsNewer);

// The order-merging step over element keys: app IDs (a folder's contents) and
// Layout::ItemKey (the top level). A side passed as null does not have the
// list at all (a folder that only the other side has).
struct Sides {
  // True when `side` changed the relative order of the elements it shares
  // with `base`. Additions and removals alone are not a reordering.
  template <typename Key, typename Hash = std::hash<Key>>
  static bool reordered(const std::vector<Key>& side, const std::vector<Key>& base);

  // The merged order of the elements that `belongs` accepts. The followed
  // (primary) side is: the only side that has the list; else remote when local
  // equals base, local when remote equals base; else the only side that
  // reordered; else the newer side. The primary's belonging elements keep its
  // order, and the other side's belonging elements that the primary lacks are
  // embedded after their nearest predecessor there (at the front without
  // one). Each element appears once, at its first position.
  template <typename Key, typename Hash = std::hash<Key>, typename Belongs>
  static std::vector<Key> order(const std::vector<Key>* base, const std::vector<Key>* local,
                                const std::vector<Key>* remote, bool localIsNewer, Belongs&& belongs);
};

// --- Implementation of the templates -------------------------------------------

template <typename Key, typename Hash>
bool Sides::reordered(const std::vector<Key>& side, const std::vector<Key>& base) {
  const std::unordered_set<Key, Hash> inBase(base.begin(), base.end());
  const std::unordered_set<Key, Hash> inSide(side.begin(), side.end());
  // Walk both lists in step, each filtered to the elements the other has.
  auto s = side.begin();
  auto b = base.begin();
  while (true) {
    while (s != side.end() && !inBase.contains(*s)) ++s;
    while (b != base.end() && !inSide.contains(*b)) ++b;
    if (s == side.end() || b == base.end()) return (s == side.end()) != (b == base.end());
    if (!(*s == *b)) return true;
    ++s;
    ++b;
  }
}

template <typename Key, typename Hash, typename Belongs>
std::vector<Key> Sides::order(const std::vector<Key>* base, const std::vector<Key>* local,
                              const std::vector<Key>* remote, bool localIsNewer, Belongs&& belongs) {
  static const std::vector<Key> none;
  const std::vector<Key>* primary = nullptr;
  const std::vector<Key>* secondary = &none;
  if (!local) {
    primary = remote ? remote : &none;
  } else if (!remote) {
    primary = local;
  } else {
    const std::vector<Key>& agreed = base ? *base : none;
    bool followLocal = false;
    if (*local == agreed) {
      followLocal = false;
    } else if (*remote == agreed) {
      followLocal = true;
    } else {
      const bool localReordered = reordered<Key, Hash>(*local, agreed);
      const bool remoteReordered = reordered<Key, Hash>(*remote, agreed);
      followLocal = localReordered != remoteReordered ? localReordered : localIsNewer;
    }
    primary = followLocal ? local : remote;
    secondary = followLocal ? remote : local;
  }

  std::vector<Key> kept;
  kept.reserve(primary->size());
  for (const Key& key : *primary)
    if (belongs(key)) kept.push_back(key);
  // embedOrder keeps kept's first occurrences in order and puts the
  // secondary's other belonging elements after their old predecessor.
  return embedOrder<Key, Hash>(*secondary, kept, belongs);
}

}  // namespace orrery::LayoutMerge
