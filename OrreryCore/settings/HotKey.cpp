#include "OrreryCore/settings/HotKey.h"

#include <limits>

#include <nlohmann/json.hpp>

namespace orrery {

namespace {

std::optional<std::uint32_t> uint32Value(const nlohmann::json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end()) return std::nullopt;
  if (found->is_number_unsigned()) {
    const auto value = found->get<std::uint64_t>();
    if (value <= std::numeric_limits<std::uint32_t>::max()) return static_cast<std::uint32_t>(value);
  } else if (found->is_number_integer()) {
    const auto value = found->get<std::int64_t>();
    if (value >= 0 && value <= std::numeric_limits<std::uint32_t>::max())
      return static_cast<std::uint32_t>(value);
  }
  return std::nullopt;
}

}  // namespace

nlohmann::json HotKey::toJson() const {
  return nlohmann::json{{"keyCode", keyCode}, {"carbonModifiers", carbonModifiers}};
}

std::optional<HotKey> HotKey::fromJson(const nlohmann::json& json) {
  if (!json.is_object()) return std::nullopt;
  const auto key = uint32Value(json, "keyCode");
  const auto modifiers = uint32Value(json, "carbonModifiers");
  if (!key || !modifiers) return std::nullopt;
  return HotKey{*key, *modifiers};
}

}  // namespace orrery
