// The arrangement diff the grid runs on every edit, at 1,000 and 10,000
// items: after a drag (one item moved across the grid) and after a shuffle
// (nearly every item moves, the worst case for the move steps).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <string>

#include "OrreryCore/arrangement/LayoutDiff.h"

namespace orrery {
namespace {

// n top-level items, every tenth one a folder of two apps.
Layout makeLayout(std::size_t n) {
  Layout layout;
  for (std::size_t i = 0; i < n; ++i) {
    if (i % 10 == 0) {
      layout.items.push_back(
          LayoutItem::folder(Folder{Uuid::random(),
                                    "Folder " + std::to_string(i),
                                    {"in." + std::to_string(i), "in2." + std::to_string(i)}}));
    } else {
      layout.items.push_back(LayoutItem::app("app." + std::to_string(i)));
    }
  }
  return layout;
}

void BM_DiffOneMove(benchmark::State& state) {
  const Layout before = makeLayout(static_cast<std::size_t>(state.range(0)));
  Layout after = before;
  const auto n = static_cast<Index>(after.items.size());
  after.move(n / 10, n - n / 10);
  for (auto _ : state) benchmark::DoNotOptimize(diff(before, after));
  state.SetComplexityN(state.range(0));
}

void BM_DiffShuffle(benchmark::State& state) {
  const Layout before = makeLayout(static_cast<std::size_t>(state.range(0)));
  Layout after = before;
  std::mt19937_64 random(42);
  std::ranges::shuffle(after.items, random);
  for (auto _ : state) benchmark::DoNotOptimize(diff(before, after));
  state.SetComplexityN(state.range(0));
}

#define SIZES Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond)->Complexity()
BENCHMARK(BM_DiffOneMove)->SIZES;
BENCHMARK(BM_DiffShuffle)->SIZES;

}  // namespace
}  // namespace orrery
