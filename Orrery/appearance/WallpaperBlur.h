// WallpaperBlur: the desktop picture as the overlay's blurred background.
//
// The picture is scaled to cover the display (centred, the overhang cut
// off, as desktops show a "zoomed" wallpaper) and blurred with a Gaussian of
// standard deviation sigmaPerHeight × the display's pixel height (45 px on a
// 1080-line screen, 90 px at 2160), approximated by three stacked box blurs,
// each separable into a horizontal and a vertical pass (the box widths are
// chosen so that the three together have the Gaussian's variance). A blur
// that wide has no detail finer than a few pixels left, so it is computed
// and kept at 1/workDivisor of the display's size in each direction; the
// overlay's scene graph stretches it over the display with bilinear
// filtering as it draws. The picture on screen is the same, at a sixteenth
// of the work, the memory and the texture upload of a full-size render
// (8 MB rather than 33 MB for a 3840×2160 display).
//
// Thread rules: pure functions over images; call them from any thread.
#pragma once

#include <QImage>
#include <QSize>

#include <array>

namespace orrery::app {

class WallpaperBlur {
 public:
  static constexpr double sigmaPerHeight = 1.0 / 24.0;
  static constexpr int workDivisor = 4;

  // The size a picture must be read at for a display of `displayPixels`:
  // the working size, which readers may decode to directly (JPEG decodes
  // at an eighth, a quarter or half its size for far less work).
  static QSize workSize(QSize displayPixels);

  // The whole render for a display of `displayPixels`: `picture` covering
  // it, blurred, opaque (Format_RGB32), at workSize(displayPixels), to be
  // drawn stretched over the display. A null picture or an empty size gives
  // a null image.
  static QImage render(const QImage& picture, QSize displayPixels);

  // The radii of three box blurs whose sequence approximates a Gaussian of
  // `sigma` pixels; all 0 for sigma ≤ 0.
  static std::array<int, 3> boxRadii(double sigma);

  // Blurs `image` (converted to Format_RGB32 or kept as
  // Format_ARGB32_Premultiplied) in place with the three box blurs for
  // `sigma`; edges repeat the border pixels.
  static void gaussianBlur(QImage& image, double sigma);

  // `picture` scaled to cover `size` exactly, centred, the overhang cut.
  static QImage covering(const QImage& picture, QSize size);
};

}  // namespace orrery::app
