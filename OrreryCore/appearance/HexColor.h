// HexColor: the solid background colour of the overlay, as the settings
// store it ("#1E1E1E") and as the renderer needs it (three components).
//
// A malformed setting never breaks the background: resolved() falls back to
// the default colour. isDark() tells whether text on the colour must be
// light, by the relative luminance of sRGB.
//
// Thread rules: a plain value.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orrery {

struct HexColor {
  static constexpr std::string_view fallbackHex = "#1E1E1E";

  double red = 0;  // nominally 0…1; hexString() clamps
  double green = 0;
  double blue = 0;

  // "#RRGGBB" or "RRGGBB", digits in either case; nothing for any other text.
  static std::optional<HexColor> fromHex(std::string_view hex);
  // The parsed colour, or that of fallbackHex.
  static HexColor resolved(std::string_view hex);

  // "#" and six upper-case digits; components clamped to 0…1 and rounded
  // half away from zero.
  std::string hexString() const;
  // Relative luminance of the sRGB colour, 0 (black) to 1 (white).
  double luminance() const;
  // Below 0.18: text on it must be light.
  bool isDark() const;

  friend bool operator==(const HexColor&, const HexColor&) = default;
};

}  // namespace orrery
