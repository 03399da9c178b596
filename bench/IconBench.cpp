// links: OrreryApp
//
// App icons for 1,000 desktop entries at 96 px, each naming an icon of the
// machine's own themes (Adwaita and hicolor, the names taken from their
// folders, repeated when there are fewer), through the real desktop-entry
// locator and the platform's icon folders:
//   BM_ThemeLoad   listing the themes' folders (the first request pays it)
//   BM_Resolve     looking the 1,000 names up in a loaded theme, no decoding
//   BM_Cold        a fresh store: the theme listed, every entry read, every
//                  image decoded and scaled (the files themselves are in the
//                  kernel's cache after the first run)
//   BM_Warm        the same requests answered from the store
// Times are wall time per run of 1,000; per_icon divides by 1,000.
#include <benchmark/benchmark.h>

#include <QCoreApplication>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Orrery/appearance/IconStore.h"
#include "Orrery/appearance/IconTheme.h"
#include "Orrery/platform/PlatformFactory.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace {

using namespace orrery;

constexpr int kApps = 1000;
constexpr int kPixelSize = 96;
const QString kTheme = QStringLiteral("Adwaita");

struct Machine {
  Machine() {
    static int argc = 1;
    static char name[] = "orrery_bench_icon";
    static char* argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);

    std::set<std::string> unique;
    std::error_code error;
    for (const char* theme : {"/usr/share/icons/Adwaita", "/usr/share/icons/hicolor"}) {
      for (auto it = std::filesystem::recursive_directory_iterator(theme, error);
           it != std::filesystem::recursive_directory_iterator(); it.increment(error)) {
        const std::filesystem::path& file = it->path();
        if (file.extension() == ".png" || file.extension() == ".svg") unique.insert(file.stem().string());
      }
    }
    names.assign(unique.begin(), unique.end());
    for (int i = 0; i < kApps && !names.empty(); ++i) {
      const std::string id = "app" + std::to_string(i) + ".desktop";
      const std::string path = (folder.path() / id).string();
      std::ofstream(path) << "[Desktop Entry]\nType=Application\nName=App " << i
                          << "\nExec=true\nIcon=" << names[static_cast<std::size_t>(i) % names.size()]
                          << "\n";
      apps.push_back(AppInfo{id, "App", path, Date(std::chrono::seconds(i))});
    }
  }

  std::shared_ptr<app::IconStore> store() const {
    return std::make_shared<app::IconStore>(locator, kTheme, folders);
  }

  testing::TemporaryDirectory folder{"orrery-icon-bench"};
  std::vector<std::string> names;
  std::vector<AppInfo> apps;
  std::shared_ptr<const app::IconLocator> locator = platform::makeIconLocator();
  app::IconThemeFolders folders = platform::iconThemeFolders();
};

const Machine& machine() {
  static const Machine instance;
  return instance;
}

void perIcon(benchmark::State& state) {
  state.counters["per_icon"] = benchmark::Counter(static_cast<double>(state.iterations()) * kApps,
                                                  benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  state.counters["names"] = static_cast<double>(machine().names.size());
}

void BM_ThemeLoad(benchmark::State& state) {
  const Machine& m = machine();
  int folders = 0;
  for (auto _ : state) folders = app::IconTheme::load(kTheme, m.folders).foldersListed();
  state.counters["folders"] = folders;
}

void BM_Resolve(benchmark::State& state) {
  const Machine& m = machine();
  const app::IconTheme theme = app::IconTheme::load(kTheme, m.folders);
  std::vector<QString> names;
  for (int i = 0; i < kApps; ++i)
    names.push_back(QString::fromStdString(m.names[static_cast<std::size_t>(i) % m.names.size()]));
  int found = 0;
  for (auto _ : state) {
    found = 0;
    for (const QString& name : names) found += theme.find(name, kPixelSize).isEmpty() ? 0 : 1;
  }
  state.counters["found"] = found;
  perIcon(state);
}

void BM_Cold(benchmark::State& state) {
  const Machine& m = machine();
  for (auto _ : state) {
    const auto store = m.store();
    for (const AppInfo& app : m.apps) benchmark::DoNotOptimize(store->image(app, kPixelSize));
  }
  perIcon(state);
}

void BM_Warm(benchmark::State& state) {
  const Machine& m = machine();
  const auto store = m.store();
  for (const AppInfo& app : m.apps) store->image(app, kPixelSize);
  const auto reads = store->diskReads();
  for (auto _ : state)
    for (const AppInfo& app : m.apps) benchmark::DoNotOptimize(store->image(app, kPixelSize));
  if (store->diskReads() != reads) state.SkipWithError("warm requests went to the disk");
  perIcon(state);
}

BENCHMARK(BM_ThemeLoad)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Resolve)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Cold)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_Warm)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
