// The three-way merge of arrangements edited on two machines since a common
// base. Every app ends in exactly one place, the one the location table
// names; no folder is left empty; merging with an unchanged side gives the
// other side; swapping the sides with the tie-break gives the same result.
// Damaged sides (duplicates, repeated folder ids) only have to give every app
// one place without crashing.
#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>

#include "OrreryCore/arrangement/LayoutMerge.h"
#include "fuzz/FuzzSupport.h"

using namespace orrery;
using namespace orrery::fuzz;

namespace {

// Where each app is: "top", "hidden" or "folder <UUID>"; absent apps are not listed.
std::unordered_map<std::string, std::string> places(const Layout& layout) {
  std::unordered_map<std::string, std::string> found;
  for (const auto& id : layout.hidden) found.emplace(id, "hidden");
  for (const auto& item : layout.items) {
    if (const auto* id = item.appID()) {
      found.emplace(*id, "top");
    } else {
      const Folder& folder = *item.asFolder();
      for (const auto& member : folder.appIDs) found.emplace(member, "folder " + folder.id.text());
    }
  }
  return found;
}

std::string placeIn(const std::unordered_map<std::string, std::string>& found, const std::string& id) {
  const auto it = found.find(id);
  return it == found.end() ? "absent" : it->second;
}

void edit(Layout& layout, FuzzInput& input) {
  const std::size_t edits = input.below(9);
  for (std::size_t i = 0; i < edits; ++i) applyOperation(layout, input, universe(), true);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const bool newer = input.flag();
  if (input.below(8) == 0) {
    const Layout base = arbitraryLayout(input), local = arbitraryLayout(input),
                 remote = arbitraryLayout(input);
    const Layout merged = LayoutMerge::merge(base, local, remote, newer);
    requireEveryAppOnce(merged, "merging damaged sides", {&base, &local, &remote});
    return 0;
  }

  Layout base = consistentLayout(input);
  Layout local = base, remote = base;
  edit(local, input);
  edit(remote, input);
  const std::vector<const Layout*> sides = {&base, &local, &remote};
  const Layout merged = LayoutMerge::merge(base, local, remote, newer);
  requireEveryAppOnce(merged, "merge", sides);
  for (const auto& item : merged.items)
    if (const Folder* folder = item.asFolder(); folder && folder->appIDs.empty())
      fail("the merge left an empty folder", {&base, &local, &remote, &merged});

  const auto b = places(base), l = places(local), r = places(remote), m = places(merged);
  AppIDSet all;
  for (const auto* found : {&b, &l, &r})
    for (const auto& [id, place] : *found) all.insert(id);
  for (const auto& [id, place] : m)
    if (!all.contains(id)) fail("the merge invented " + id, {&base, &local, &remote, &merged});
  for (const auto& id : all) {
    const std::string pb = placeIn(b, id), pl = placeIn(l, id), pr = placeIn(r, id);
    std::string expected;
    if (pl == pr) {
      expected = pl;
    } else if (pl == pb) {
      expected = pr;
    } else if (pr == pb) {
      expected = pl;
    } else if (pl == "absent") {
      expected = pr;
    } else if (pr == "absent") {
      expected = pl;
    } else {
      expected = newer ? pl : pr;
    }
    if (placeIn(m, id) != expected)
      fail(id + " ended " + placeIn(m, id) + " instead of " + expected, {&base, &local, &remote, &merged});
  }

  if (LayoutMerge::merge(base, local, local, newer) != local) fail("merge(b, x, x) != x", sides);
  if (LayoutMerge::merge(base, base, remote, newer) != remote) fail("merge(b, b, r) != r", sides);
  if (LayoutMerge::merge(base, local, base, newer) != local) fail("merge(b, l, b) != l", sides);
  if (LayoutMerge::merge(base, remote, local, !newer) != merged)
    fail("swapping the sides changed the merge", sides);
  return 0;
}
