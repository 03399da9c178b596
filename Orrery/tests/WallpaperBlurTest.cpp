// The blur of the desktop picture: Gaussian in shape, no drift in colour,
// and the picture covering the display.
#include <QImage>

#include <gtest/gtest.h>

#include <cmath>

#include "Orrery/appearance/WallpaperBlur.h"

namespace orrery::app {
namespace {

// The standard normal distribution's cumulative function.
double phi(double x) { return 0.5 * std::erfc(-x / std::sqrt(2.0)); }

TEST(WallpaperBlurTest, AnEdgeSpreadsLikeAGaussianInEachChannelAlone) {
  // Left half black, right half full red and half blue; the edge at x = 200.
  QImage image(400, 60, QImage::Format_RGB32);
  image.fill(Qt::black);
  for (int y = 0; y < image.height(); ++y)
    for (int x = 200; x < image.width(); ++x) image.setPixel(x, y, qRgb(255, 0, 128));
  for (const double sigma : {4.0, 11.25, 25.0}) {
    QImage blurred = image;
    WallpaperBlur::gaussianBlur(blurred, sigma);
    for (const int offset : {-2, -1, 0, 1, 2}) {
      // The pixel centre of column x lies at x + 0.5.
      const double x = 200 + offset * sigma;
      const double expected = phi((std::floor(x) + 0.5 - 200) / sigma);
      const QRgb pixel = blurred.pixel(static_cast<int>(std::floor(x)), 30);
      EXPECT_NEAR(qRed(pixel), 255 * expected, 255 * 0.03) << "sigma " << sigma << " offset " << offset;
      EXPECT_NEAR(qBlue(pixel), 128 * expected, 128 * 0.03 + 1) << "sigma " << sigma << " offset " << offset;
      EXPECT_EQ(qGreen(pixel), 0);
    }
  }
}

TEST(WallpaperBlurTest, AFlatColourStaysExactlyThatColour) {
  QImage image(97, 53, QImage::Format_RGB32);
  image.fill(QColor(13, 200, 255));
  WallpaperBlur::gaussianBlur(image, 17.3);
  for (const auto& [x, y] : {std::pair{0, 0}, {48, 26}, {96, 52}, {96, 0}})
    EXPECT_EQ(image.pixelColor(x, y), QColor(13, 200, 255)) << x << "," << y;
}

TEST(WallpaperBlurTest, ThePictureCoversTheDisplayCentredAndCropped) {
  // 2:1: a red quarter, a green half, a blue quarter. On a square display
  // the quarters fall outside.
  QImage picture(800, 400, QImage::Format_RGB32);
  picture.fill(Qt::green);
  for (int y = 0; y < 400; ++y)
    for (int x = 0; x < 200; ++x) {
      picture.setPixel(x, y, qRgb(255, 0, 0));
      picture.setPixel(799 - x, y, qRgb(0, 0, 255));
    }
  const QImage rendered = WallpaperBlur::render(picture, {600, 600});
  // Kept at the working size; the view stretches it over the display.
  ASSERT_EQ(rendered.size(), QSize(150, 150));
  EXPECT_FALSE(rendered.hasAlphaChannel());
  for (const auto& [x, y] : {std::pair{0, 0}, {149, 75}, {75, 75}, {0, 149}}) {
    const QRgb pixel = rendered.pixel(x, y);
    EXPECT_LE(qRed(pixel), 8) << x << "," << y;
    EXPECT_LE(qBlue(pixel), 8) << x << "," << y;
    EXPECT_GE(qGreen(pixel), 240) << x << "," << y;
  }
}

TEST(WallpaperBlurTest, NothingToRenderGivesNothing) {
  EXPECT_TRUE(WallpaperBlur::render(QImage(), {100, 100}).isNull());
  QImage picture(10, 10, QImage::Format_RGB32);
  picture.fill(Qt::white);
  EXPECT_TRUE(WallpaperBlur::render(picture, {0, 100}).isNull());
}

}  // namespace
}  // namespace orrery::app
