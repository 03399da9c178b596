// The three-way merge of arrangements at catalog sizes from a large Mac
// (1,000 apps) to a stress case (10,000). Both sides reordered, moved apps
// into and out of folders, hid, removed and added apps, and renamed folders,
// so every path of the merge (places, names, both order rules, embedding)
// does real work. Target: 10 ms or less at 10,000 items in a Release build.
#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "OrreryCore/arrangement/LayoutMerge.h"

namespace {

using orrery::Folder;
using orrery::Layout;
using orrery::LayoutItem;
using orrery::Uuid;

std::string appID(std::size_t n) {
  return "com.example.vendor" + std::to_string(n % 97) + ".app" + std::to_string(n);
}

// n apps: about one in ten inside folders of five, the rest at top level.
Layout baseLayout(std::size_t n) {
  Layout layout;
  std::size_t next = 0;
  while (next < n) {
    if (next % 50 == 0 && next + 5 <= n) {
      Folder folder{Uuid::random(), "Folder " + std::to_string(next), {}};
      for (int i = 0; i < 5; ++i) folder.appIDs.push_back(appID(next++));
      layout.items.push_back(LayoutItem::folder(std::move(folder)));
    } else {
      layout.items.push_back(LayoutItem::app(appID(next++)));
    }
  }
  return layout;
}

// About 2 % of the items changed in each way.
Layout edited(const Layout& base, std::uint64_t seed, std::size_t n, std::size_t firstNewApp) {
  std::mt19937_64 random(seed);
  Layout layout = base;
  const std::size_t changes = std::max<std::size_t>(n / 50, 2);
  const auto index = [&] {
    return static_cast<orrery::Index>(
        std::uniform_int_distribution<std::size_t>(0, layout.items.size() - 1)(random));
  };
  for (std::size_t i = 0; i < changes; ++i) layout.move(index(), index());
  for (std::size_t i = 0; i < changes; ++i) {
    const orrery::Index at = index();
    if (const auto* id = layout.items[static_cast<std::size_t>(at)].appID()) {
      const std::string hidden = *id;
      layout.hide(hidden);
    }
  }
  for (std::size_t i = 0; i < changes; ++i) {
    const orrery::Index at = index();
    if (layout.items[static_cast<std::size_t>(at)].isApp()) layout.items.erase(layout.items.begin() + at);
  }
  for (std::size_t i = 0; i < changes; ++i) {
    const orrery::Index app = index();
    const orrery::Index target = index();
    if (const Folder* folder = layout.items[static_cast<std::size_t>(target)].asFolder())
      layout.add(app, folder->id);
  }
  for (auto& item : layout.items)
    if (Folder* folder = item.asFolder(); folder && random() % 4 == 0) folder->name += " (renamed)";
  for (std::size_t i = 0; i < changes; ++i) layout.items.push_back(LayoutItem::app(appID(firstNewApp + i)));
  return layout;
}

void BM_Merge(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  const Layout base = baseLayout(n);
  const Layout local = edited(base, 1, n, n);
  const Layout remote = edited(base, 2, n, 2 * n);
  for (auto _ : state) {
    Layout merged = orrery::LayoutMerge::merge(base, local, remote, true);
    benchmark::DoNotOptimize(merged);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(BM_Merge)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
