// links: OrreryApp
//
// The blurred background of a 3840×2160 display from a 3840×2160 picture:
//   BM_Render        WallpaperBlur::render on the decoded picture: the cover
//                    scale to the working size (960×540), the three box
//                    blurs there (σ = 22.5 px, 90 px on the display)
//   BM_ReadAndRender what the program does per key: the JPEG file read at
//                    the working size (the decoder scales while it decodes),
//                    then the render
// peak_MiB is the rise of the process's peak resident memory during one
// render (VmHWM, reset through /proc/self/clear_refs before it), on top of
// the decoded picture the benchmark already holds; large blocks are kept
// out of malloc's reuse (a fixed mmap threshold), so every image counts.
// Qt scales large images on its global thread pool: CPU time is that of
// the whole process.
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QImage>

#include <malloc.h>

#include <cstdint>
#include <fstream>
#include <functional>
#include <random>
#include <string>

#include "Orrery/appearance/WallpaperBlur.h"
#include "Orrery/platform/qt/PictureFiles.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace {

using namespace orrery;

constexpr QSize kDisplay(3840, 2160);

// Smooth colour fields with grain, as photographs have; not a flat image
// that any encoder or blur would make short work of.
QImage photographLike() {
  QImage image(kDisplay, QImage::Format_RGB32);
  std::mt19937 random(7);
  std::uniform_int_distribution<int> grain(-12, 12);
  for (int y = 0; y < image.height(); ++y) {
    auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
    for (int x = 0; x < image.width(); ++x) {
      const int red = (x * 255 / image.width() + grain(random)) & 0xff;
      const int green = (y * 255 / image.height() + grain(random)) & 0xff;
      const int blue = (((x / 240 + y / 240) % 2) * 160 + grain(random)) & 0xff;
      line[x] = qRgb(red, green, blue);
    }
  }
  return image;
}

long residentPeakKiB() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line))
    if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6));
  return 0;
}

void resetResidentPeak() { std::ofstream("/proc/self/clear_refs") << "5"; }

struct Pictures {
  Pictures() {
    static int argc = 1;
    static char name[] = "orrery_bench_wallpaperblur";
    static char* argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);
    // Freed images go back to the system at once, so the peak is measured.
    mallopt(M_MMAP_THRESHOLD, 1 << 20);
    picture = photographLike();
    jpeg = QString::fromStdString((folder.path() / "wallpaper.jpg").string());
    picture.save(jpeg, "JPEG", 90);
  }
  testing::TemporaryDirectory folder{"orrery-bench-blur"};
  QImage picture;
  QString jpeg;
};

Pictures& pictures() {
  static Pictures shared;
  return shared;
}

void measurePeak(benchmark::State& state, const std::function<QImage()>& render) {
  resetResidentPeak();
  const long before = residentPeakKiB();
  QImage result = render();
  const long peak = residentPeakKiB();
  benchmark::DoNotOptimize(result.constBits());
  state.counters["peak_MiB"] = static_cast<double>(peak - before) / 1024.0;
}

void BM_Render(benchmark::State& state) {
  const QImage& picture = pictures().picture;
  measurePeak(state, [&] { return app::WallpaperBlur::render(picture, kDisplay); });
  for (auto _ : state) {
    QImage blurred = app::WallpaperBlur::render(picture, kDisplay);
    benchmark::DoNotOptimize(blurred.constBits());
  }
}
BENCHMARK(BM_Render)->Unit(benchmark::kMillisecond)->UseRealTime()->MeasureProcessCPUTime();

void BM_ReadAndRender(benchmark::State& state) {
  const app::DesktopPicture file = platform::pictureFile(pictures().jpeg);
  const auto readAndRender = [&] {
    const auto read = file.load(app::WallpaperBlur::workSize(kDisplay));
    return read ? app::WallpaperBlur::render(*read, kDisplay) : QImage();
  };
  measurePeak(state, readAndRender);
  for (auto _ : state) {
    QImage blurred = readAndRender();
    if (blurred.isNull()) state.SkipWithError("the JPEG was not read");
    benchmark::DoNotOptimize(blurred.constBits());
  }
}
BENCHMARK(BM_ReadAndRender)->Unit(benchmark::kMillisecond)->UseRealTime()->MeasureProcessCPUTime();

}  // namespace
