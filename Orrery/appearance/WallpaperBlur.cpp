#include "Orrery/appearance/WallpaperBlur.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace orrery::app {
namespace {

// The divisions of a box are multiplications by 2^24 / width, rounded.
constexpr int kShift = 24;

std::uint64_t reciprocal(int width) {
  return ((std::uint64_t{1} << kShift) + static_cast<std::uint64_t>(width) / 2) /
         static_cast<std::uint64_t>(width);
}

std::uint32_t average(const std::array<std::uint64_t, 4>& sums, std::uint64_t scale) {
  constexpr std::uint64_t half = std::uint64_t{1} << (kShift - 1);
  std::uint32_t pixel = 0;
  for (int channel = 0; channel < 4; ++channel) {
    const auto value =
        std::min<std::uint64_t>((sums[static_cast<std::size_t>(channel)] * scale + half) >> kShift, 255);
    pixel |= static_cast<std::uint32_t>(value) << (8 * channel);
  }
  return pixel;
}

void add(std::array<std::uint64_t, 4>& sums, std::uint32_t pixel, std::uint64_t times = 1) {
  for (int channel = 0; channel < 4; ++channel)
    sums[static_cast<std::size_t>(channel)] += ((pixel >> (8 * channel)) & 0xff) * times;
}

void subtract(std::array<std::uint64_t, 4>& sums, std::uint32_t pixel) {
  for (int channel = 0; channel < 4; ++channel)
    sums[static_cast<std::size_t>(channel)] -= (pixel >> (8 * channel)) & 0xff;
}

// One box of radius `radius` along each row, from `from` into `to`.
void horizontalBox(const QImage& from, QImage& to, int radius) {
  const int width = from.width();
  const std::uint64_t scale = reciprocal(2 * radius + 1);
  for (int y = 0; y < from.height(); ++y) {
    const auto* in = reinterpret_cast<const std::uint32_t*>(from.constScanLine(y));
    auto* out = reinterpret_cast<std::uint32_t*>(to.scanLine(y));
    std::array<std::uint64_t, 4> sums{};
    add(sums, in[0], static_cast<std::uint64_t>(radius) + 1);
    for (int x = 1; x <= radius; ++x) add(sums, in[std::min(x, width - 1)]);
    for (int x = 0; x < width; ++x) {
      out[x] = average(sums, scale);
      add(sums, in[std::min(x + radius + 1, width - 1)]);
      subtract(sums, in[std::max(x - radius, 0)]);
    }
  }
}

// One box of radius `radius` down each column, from `from` into `to`, a
// row at a time so that memory is read in order: one running sum per
// column and channel.
void verticalBox(const QImage& from, QImage& to, int radius) {
  const int width = from.width();
  const int height = from.height();
  const std::uint64_t scale = reciprocal(2 * radius + 1);
  std::vector<std::array<std::uint64_t, 4>> sums(static_cast<std::size_t>(width));
  const auto row = [&from](int y) { return reinterpret_cast<const std::uint32_t*>(from.constScanLine(y)); };
  for (int x = 0; x < width; ++x)
    add(sums[static_cast<std::size_t>(x)], row(0)[x], static_cast<std::uint64_t>(radius) + 1);
  for (int y = 1; y <= radius; ++y) {
    const std::uint32_t* in = row(std::min(y, height - 1));
    for (int x = 0; x < width; ++x) add(sums[static_cast<std::size_t>(x)], in[x]);
  }
  for (int y = 0; y < height; ++y) {
    auto* out = reinterpret_cast<std::uint32_t*>(to.scanLine(y));
    const std::uint32_t* entering = row(std::min(y + radius + 1, height - 1));
    const std::uint32_t* leaving = row(std::max(y - radius, 0));
    for (int x = 0; x < width; ++x) {
      auto& sum = sums[static_cast<std::size_t>(x)];
      out[x] = average(sum, scale);
      add(sum, entering[x]);
      subtract(sum, leaving[x]);
    }
  }
}

}  // namespace

QSize WallpaperBlur::workSize(QSize displayPixels) {
  if (displayPixels.isEmpty()) return {};
  return {std::max(1, (displayPixels.width() + workDivisor - 1) / workDivisor),
          std::max(1, (displayPixels.height() + workDivisor - 1) / workDivisor)};
}

std::array<int, 3> WallpaperBlur::boxRadii(double sigma) {
  if (!(sigma > 0)) return {0, 0, 0};
  // Box widths w (odd) of which the first m are `lower` and the rest
  // lower + 2, so that the sum of their variances (w² - 1) / 12 is σ².
  constexpr int n = 3;
  const double ideal = std::sqrt(12 * sigma * sigma / n + 1);
  int lower = static_cast<int>(std::floor(ideal));
  if (lower % 2 == 0) --lower;
  const double m = (12 * sigma * sigma - n * lower * lower - 4 * n * lower - 3 * n) / (-4.0 * lower - 4);
  const int smaller = static_cast<int>(std::lround(m));
  std::array<int, 3> radii{};
  for (int i = 0; i < n; ++i)
    radii[static_cast<std::size_t>(i)] = ((i < smaller ? lower : lower + 2) - 1) / 2;
  return radii;
}

void WallpaperBlur::gaussianBlur(QImage& image, double sigma) {
  if (image.isNull()) return;
  if (image.format() != QImage::Format_RGB32 && image.format() != QImage::Format_ARGB32_Premultiplied)
    image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
  QImage scratch(image.size(), image.format());
  for (const int radius : boxRadii(sigma)) {
    if (radius == 0) continue;
    horizontalBox(image, scratch, radius);
    verticalBox(scratch, image, radius);
  }
}

QImage WallpaperBlur::covering(const QImage& picture, QSize size) {
  if (picture.isNull() || size.isEmpty()) return {};
  const QImage scaled = picture.scaled(size, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
  return scaled.copy((scaled.width() - size.width()) / 2, (scaled.height() - size.height()) / 2, size.width(),
                     size.height());
}

QImage WallpaperBlur::render(const QImage& picture, QSize displayPixels) {
  if (picture.isNull() || displayPixels.isEmpty()) return {};
  QImage work = covering(picture, workSize(displayPixels)).convertToFormat(QImage::Format_RGB32);
  gaussianBlur(work, sigmaPerHeight * displayPixels.height() / workDivisor);
  return work;
}

}  // namespace orrery::app
