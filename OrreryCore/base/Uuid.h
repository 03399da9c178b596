// Uuid: the identity of a folder, a device and other records that travel
// between machines.
//
// Random (version 4) when made fresh. Its text is the canonical 36-character
// hyphenated form in upper case ("E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
// parsing accepts either case, so files written by other tools still load.
// Ordered byte-wise so it can key maps and break ties deterministically.
//
// Thread rules: a plain value. random() may be called from any thread.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace orrery {

class Uuid {
 public:
  using Bytes = std::array<std::uint8_t, 16>;

  // The nil UUID (all zero). Useful as a placeholder; never produced by random().
  constexpr Uuid() = default;
  constexpr explicit Uuid(const Bytes& bytes) : bytes_(bytes) {}

  // A fresh random version-4 UUID.
  static Uuid random();

  // Parses the canonical hyphenated form in any letter case; nothing for
  // anything else (braces, missing hyphens, wrong length, non-hex digits).
  static std::optional<Uuid> parse(std::string_view text);

  // Canonical upper-case text.
  std::string text() const;

  const Bytes& bytes() const { return bytes_; }
  bool isNil() const { return *this == Uuid(); }

  friend constexpr bool operator==(const Uuid&, const Uuid&) = default;
  friend constexpr auto operator<=>(const Uuid&, const Uuid&) = default;

 private:
  Bytes bytes_{};
};

}  // namespace orrery

template <>
struct std::hash<orrery::Uuid> {
  std::size_t operator()(const orrery::Uuid& id) const noexcept;
};
