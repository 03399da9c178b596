// The search behind the overlay's search field, per keystroke: the one-shot
// AppSearch::filter, the prebuilt AppSearch::Index, and
// OverlayState::searchResults over an arrangement with folders. Catalogs of
// 1,000 and 10,000 apps with made-up but realistic names; queries are the
// first one to six letters of "studio" (second argument 1-6), plus the
// single letter "e" (argument 0), which matches most names and so costs the
// most. IndexFilter copies every matching record; IndexSearch and
// OverlayState::searchResults read them in place.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "OrreryCore/arrangement/AppSearch.h"
#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/overlay/OverlayState.h"

namespace {

using namespace orrery;

const std::vector<std::string> kWords = {
    "Adobe",     "Photoshop", "Studio",   "Visual",    "Code",    "Music",   "Mail",     "Notes",
    "Calendar",  "Pro",       "Logic",    "Final",     "Cut",     "Xcode",   "Safari",   "Firefox",
    "Chrome",    "Terminal",  "Preview",  "Pages",     "Numbers", "Keynote", "Maps",     "Photos",
    "Books",     "Podcasts",  "Café",     "Résumé",    "Über",    "Straße",  "Crème",    "Editor",
    "Manager",   "Player",    "Viewer",   "Converter", "Backup",  "Sync",    "Cloud",    "Drive",
    "Office",    "Word",      "Excel",    "Slack",     "Zoom",    "Teams",   "Discord",  "Spotify",
    "VLC",       "Blender",   "Unity",    "Godot",     "Sketch",  "Figma",   "Affinity", "Designer",
    "Lightroom", "Bridge",    "Audition", "Premiere",  "Tower",   "Fork",    "Transmit"};

std::vector<AppInfo> makeApps(std::size_t count) {
  std::mt19937_64 random(1234);
  std::uniform_int_distribution<std::size_t> word(0, kWords.size() - 1);
  std::uniform_int_distribution<int> wordCount(1, 3);
  std::uniform_int_distribution<int> version(0, 30);
  std::vector<AppInfo> apps;
  apps.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    std::string name;
    for (int w = wordCount(random); w > 0; --w) name += (name.empty() ? "" : " ") + kWords[word(random)];
    if (const int v = version(random); v > 20) name += " " + std::to_string(2000 + v);
    AppInfo app;
    app.id = "com.example.app" + std::to_string(i);
    app.url = "/Applications/" + name + " " + std::to_string(i) + ".app";
    app.name = std::move(name);
    apps.push_back(std::move(app));
  }
  return apps;
}

// Queries 1-6: "s" … "studio"; 0 stands for the broad "e".
std::string queryFor(std::int64_t length) {
  return length == 0 ? "e" : std::string("studio").substr(0, static_cast<std::size_t>(length));
}

void queryArgs(benchmark::internal::Benchmark* bench) {
  for (const int apps : {1000, 10000})
    for (int length = 0; length <= 6; ++length) bench->Args({apps, length});
  bench->Unit(benchmark::kMicrosecond);
}

void BM_Filter(benchmark::State& state) {
  const auto apps = makeApps(static_cast<std::size_t>(state.range(0)));
  const std::string query = queryFor(state.range(1));
  std::size_t found = 0;
  for (auto _ : state) {
    auto result = AppSearch::filter(apps, query);
    found = result.size();
    benchmark::DoNotOptimize(result);
  }
  state.counters["matches"] = static_cast<double>(found);
}
BENCHMARK(BM_Filter)->Apply(queryArgs);

void BM_IndexFilter(benchmark::State& state) {
  const AppSearch::Index index(makeApps(static_cast<std::size_t>(state.range(0))));
  const std::string query = queryFor(state.range(1));
  std::size_t found = 0;
  for (auto _ : state) {
    auto result = index.filter(query);
    found = result.size();
    benchmark::DoNotOptimize(result);
  }
  state.counters["matches"] = static_cast<double>(found);
}
BENCHMARK(BM_IndexFilter)->Apply(queryArgs);

// The per-keystroke path: results read in place from a shared index.
void BM_IndexSearch(benchmark::State& state) {
  const auto index =
      std::make_shared<const AppSearch::Index>(makeApps(static_cast<std::size_t>(state.range(0))));
  const std::string query = queryFor(state.range(1));
  std::size_t found = 0;
  for (auto _ : state) {
    auto result = AppSearch::search(index, query);
    found = result.size();
    benchmark::DoNotOptimize(result);
  }
  state.counters["matches"] = static_cast<double>(found);
}
BENCHMARK(BM_IndexSearch)->Apply(queryArgs);

void BM_IndexMatches(benchmark::State& state) {
  const AppSearch::Index index(makeApps(static_cast<std::size_t>(state.range(0))));
  const std::string query = queryFor(state.range(1));
  for (auto _ : state) {
    auto result = index.matches(query);
    benchmark::DoNotOptimize(result);
  }
}
BENCHMARK(BM_IndexMatches)->Apply(queryArgs);

void BM_IndexBuild(benchmark::State& state) {
  const auto apps = makeApps(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    AppSearch::Index index(apps);
    benchmark::DoNotOptimize(index);
  }
}
BENCHMARK(BM_IndexBuild)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// Every fifth app in a folder of five, a few hidden, a few not installed.
Layout arrangementOf(const std::vector<AppInfo>& apps) {
  Layout layout;
  for (std::size_t i = 0; i < apps.size(); ++i) {
    if (i % 97 == 0) {
      layout.hidden.insert(apps[i].id);
    } else if (i % 25 < 5) {
      if (i % 25 == 0 || layout.items.empty() || !layout.items.back().isFolder()) {
        layout.items.push_back(LayoutItem::folder(Folder{Uuid::random(), "Folder " + std::to_string(i), {}}));
      }
      layout.items.back().asFolder()->appIDs.push_back(apps[i].id);
    } else {
      layout.items.push_back(LayoutItem::app(apps[i].id));
    }
  }
  layout.items.push_back(LayoutItem::app("not.installed"));
  return layout;
}

void BM_OverlayStateSearchResults(benchmark::State& state) {
  const auto apps = makeApps(static_cast<std::size_t>(state.range(0)));
  OverlayState overlay(arrangementOf(apps), apps, 7, 5);
  overlay.setQuery(queryFor(state.range(1)));
  for (auto _ : state) {
    auto result = overlay.searchResults();
    benchmark::DoNotOptimize(result);
  }
}
BENCHMARK(BM_OverlayStateSearchResults)->Apply(queryArgs);

// What a catalog change costs the overlay: the walk and a new index.
void BM_OverlayStateUpdate(benchmark::State& state) {
  const auto apps = makeApps(static_cast<std::size_t>(state.range(0)));
  const Layout layout = arrangementOf(apps);
  auto renamed = apps;
  OverlayState overlay(layout, apps, 7, 5);
  bool flip = false;
  for (auto _ : state) {
    // Alternate between two catalogs so every update really rebuilds.
    renamed.front().name = flip ? "Alpha" : "Beta";
    flip = !flip;
    overlay.update(layout, renamed, 7, 5);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_OverlayStateUpdate)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
