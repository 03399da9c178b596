// Arrangement operations at 100 to 10,000 items: a scan reconciled with the
// arrangement, one machine's projection folded back, and the JSON coding.
#include <benchmark/benchmark.h>

#include "OrreryCore/arrangement/Layout.h"

namespace orrery {
namespace {

// n apps, every tenth pair in a folder, a few hidden; names in mixed case
// with numbers so collation does real work.
Layout makeLayout(std::size_t n) {
  Layout layout;
  for (std::size_t i = 0; i < n;) {
    if (i % 20 == 0 && i + 2 <= n) {
      layout.items.push_back(
          LayoutItem::folder(Folder{Uuid::random(),
                                    "Folder " + std::to_string(i),
                                    {"app." + std::to_string(i), "app." + std::to_string(i + 1)}}));
      i += 2;
    } else if (i % 97 == 0) {
      layout.hidden.insert("app." + std::to_string(i++));
    } else {
      layout.items.push_back(LayoutItem::app("app." + std::to_string(i++)));
    }
  }
  return layout;
}

std::vector<AppInfo> scanOf(std::size_t n) {
  // One app in 50 vanished, and 5% are new.
  std::vector<AppInfo> apps;
  for (std::size_t i = 0; i < n; ++i)
    if (i % 50 != 7)
      apps.push_back(AppInfo{"app." + std::to_string(i), "App " + std::to_string(n - i), "/a", {}});
  for (std::size_t i = 0; i < n / 20; ++i)
    apps.push_back(
        AppInfo{"new." + std::to_string(i), (i % 2 ? "zeta " : "Alpha ") + std::to_string(i), "/a", {}});
  return apps;
}

void BM_Reconciled(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  const Layout layout = makeLayout(n);
  const auto apps = scanOf(n);
  for (auto _ : state) benchmark::DoNotOptimize(layout.reconciled(apps, {}));
  state.SetComplexityN(state.range(0));
}

void BM_ProjectedAndEmbedding(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  const Layout layout = makeLayout(n);
  AppIDSet installed;
  for (std::size_t i = 0; i < n; ++i)
    if (i % 3 != 0) installed.insert("app." + std::to_string(i));
  for (auto _ : state) {
    const LayoutProjection projection = layout.projected(installed);
    Layout edited = projection.visible;
    edited.move(0, static_cast<Index>(edited.items.size()) - 1);
    benchmark::DoNotOptimize(layout.embedding(edited, projection, installed));
  }
  state.SetComplexityN(state.range(0));
}

void BM_Encode(benchmark::State& state) {
  const Layout layout = makeLayout(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(layout.encoded());
  state.SetComplexityN(state.range(0));
}

void BM_Decode(benchmark::State& state) {
  const std::string bytes = makeLayout(static_cast<std::size_t>(state.range(0))).encoded();
  for (auto _ : state) benchmark::DoNotOptimize(Layout::decode(bytes));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
  state.SetComplexityN(state.range(0));
}

#define SIZES Arg(100)->Arg(1000)->Arg(5000)->Arg(10000)->Unit(benchmark::kMicrosecond)->Complexity()
BENCHMARK(BM_Reconciled)->SIZES;
BENCHMARK(BM_ProjectedAndEmbedding)->SIZES;
BENCHMARK(BM_Encode)->SIZES;
BENCHMARK(BM_Decode)->SIZES;

}  // namespace
}  // namespace orrery
