#include "OrreryCore/base/Uuid.h"

#include <mutex>
#include <random>

namespace orrery {

namespace {

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool isHyphenPosition(std::size_t i) { return i == 8 || i == 13 || i == 18 || i == 23; }

}  // namespace

Uuid Uuid::random() {
  // One generator seeded from the system's entropy source; guarded because
  // folders may be created from a background merge as well as the main thread.
  static std::mutex mutex;
  static std::mt19937_64 engine = [] {
    std::random_device device;
    std::seed_seq seed{device(), device(), device(), device(), device(), device(), device(), device()};
    return std::mt19937_64(seed);
  }();
  std::uint64_t high = 0;
  std::uint64_t low = 0;
  {
    std::lock_guard lock(mutex);
    high = engine();
    low = engine();
  }
  Bytes bytes{};
  for (std::size_t i = 0; i < 8; ++i) {
    bytes[i] = static_cast<std::uint8_t>(high >> (56 - 8 * i));
    bytes[8 + i] = static_cast<std::uint8_t>(low >> (56 - 8 * i));
  }
  bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);  // version 4
  bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);  // RFC 4122 variant
  return Uuid(bytes);
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
  if (text.size() != 36) return std::nullopt;
  Bytes bytes{};
  std::size_t byte = 0;
  for (std::size_t i = 0; i < 36;) {
    if (isHyphenPosition(i)) {
      if (text[i] != '-') return std::nullopt;
      ++i;
      continue;
    }
    const int high = hexValue(text[i]);
    const int low = hexValue(text[i + 1]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes[byte++] = static_cast<std::uint8_t>(high * 16 + low);
    i += 2;
  }
  return Uuid(bytes);
}

std::string Uuid::text() const {
  static constexpr char digits[] = "0123456789ABCDEF";
  std::string out;
  out.reserve(36);
  for (std::size_t i = 0; i < bytes_.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) out.push_back('-');
    out.push_back(digits[bytes_[i] >> 4]);
    out.push_back(digits[bytes_[i] & 0x0F]);
  }
  return out;
}

}  // namespace orrery

std::size_t std::hash<orrery::Uuid>::operator()(const orrery::Uuid& id) const noexcept {
  // The bytes are random already; folding them is enough.
  std::size_t value = 0;
  for (auto byte : id.bytes()) value = value * 131 + byte;
  return value;
}
