#include "OrreryCore/appearance/HexColor.h"

#include <cmath>
#include <cstdint>

namespace orrery {

namespace {

std::optional<std::uint32_t> hexDigit(char c) {
  if (c >= '0' && c <= '9') return static_cast<std::uint32_t>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<std::uint32_t>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return static_cast<std::uint32_t>(c - 'A' + 10);
  return std::nullopt;
}

double component(std::uint32_t value, int shift) {
  return static_cast<double>((value >> shift) & 0xFF) / 255.0;
}

std::uint32_t byte(double value) {
  // NaN compares false both ways; it is treated like a value below the range.
  if (!(value > 0)) return 0;
  if (value > 1) return 255;
  return static_cast<std::uint32_t>(std::round(value * 255));
}

double linearized(double c) { return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); }

}  // namespace

std::optional<HexColor> HexColor::fromHex(std::string_view hex) {
  if (hex.starts_with('#')) hex.remove_prefix(1);
  if (hex.size() != 6) return std::nullopt;
  std::uint32_t value = 0;
  for (const char c : hex) {
    const auto digit = hexDigit(c);
    if (!digit) return std::nullopt;
    value = value * 16 + *digit;
  }
  return HexColor{component(value, 16), component(value, 8), component(value, 0)};
}

HexColor HexColor::resolved(std::string_view hex) {
  if (auto color = fromHex(hex)) return *color;
  return *fromHex(fallbackHex);
}

std::string HexColor::hexString() const {
  const std::uint32_t value = byte(red) << 16 | byte(green) << 8 | byte(blue);
  static constexpr char digits[] = "0123456789ABCDEF";
  std::string out = "#000000";
  for (std::size_t i = 0; i < 6; ++i) out[6 - i] = digits[(value >> (4 * i)) & 0xF];
  return out;
}

double HexColor::luminance() const {
  return 0.2126 * linearized(red) + 0.7152 * linearized(green) + 0.0722 * linearized(blue);
}

bool HexColor::isDark() const { return luminance() < 0.18; }

}  // namespace orrery
