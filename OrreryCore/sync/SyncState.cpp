#include "OrreryCore/sync/SyncState.h"

#include <nlohmann/json.hpp>

#include "OrreryCore/settings/SettingsCoding.h"
#include "OrreryCore/sync/SyncCoding.h"

namespace orrery {

namespace {

constexpr std::string_view kBase64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// 1900-01-01 lies 36,890 days (101 years, 25 of them leap years) before
// 2001-01-01.
constexpr std::chrono::seconds kDistantPastBeforeReference{36'890LL * 86'400};

int base64Value(char c) {
  const auto found = kBase64Alphabet.find(c);
  return found == std::string_view::npos ? -1 : static_cast<int>(found);
}

// Reads a strict key: absent keeps the fresh value, a malformed value fails.
template <typename T, typename Reader>
std::optional<DecodingError> readStrict(const nlohmann::json& object, std::string_view key, T& field,
                                        Reader read) {
  const nlohmann::json* value = syncCoding::optional(object, key);
  if (!value) return std::nullopt;
  auto decoded = read(*value, key);
  if (!decoded) return decoded.error();
  field = std::move(*decoded);
  return std::nullopt;
}

// Reads a tolerant optional key: absent or malformed both leave it absent.
template <typename T, typename Reader>
void readTolerant(const nlohmann::json& object, std::string_view key, std::optional<T>& field, Reader read) {
  const nlohmann::json* value = syncCoding::optional(object, key);
  if (!value) return;
  field = read(*value);
}

Writers decodeWriters(const nlohmann::json& value) {
  if (!value.is_object()) return {};
  Writers writers;
  for (const auto& [key, date] : value.items()) {
    const auto id = Uuid::parse(key);
    // One bad entry makes the whole map untrustworthy.
    if (!id || !date.is_number()) return {};
    writers.emplace(*id, dateFromReferenceSeconds(date.get<double>()));
  }
  return writers;
}

}  // namespace

std::string encodeBase64(const std::vector<std::uint8_t>& bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  std::size_t i = 0;
  for (; i + 3 <= bytes.size(); i += 3) {
    const std::uint32_t group =
        (std::uint32_t{bytes[i]} << 16) | (std::uint32_t{bytes[i + 1]} << 8) | bytes[i + 2];
    for (int shift = 18; shift >= 0; shift -= 6) text += kBase64Alphabet[(group >> shift) & 63];
  }
  if (const std::size_t left = bytes.size() - i; left > 0) {
    std::uint32_t group = std::uint32_t{bytes[i]} << 16;
    if (left == 2) group |= std::uint32_t{bytes[i + 1]} << 8;
    text += kBase64Alphabet[(group >> 18) & 63];
    text += kBase64Alphabet[(group >> 12) & 63];
    text += left == 2 ? kBase64Alphabet[(group >> 6) & 63] : '=';
    text += '=';
  }
  return text;
}

std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  std::vector<std::uint8_t> bytes;
  bytes.reserve(text.size() / 4 * 3);
  for (std::size_t i = 0; i < text.size(); i += 4) {
    const bool last = i + 4 == text.size();
    std::size_t padding = 0;
    if (last && text[i + 3] == '=') padding = text[i + 2] == '=' ? 2 : 1;
    std::uint32_t group = 0;
    for (std::size_t j = 0; j < 4; ++j) {
      int value = 0;
      if (j < 4 - padding) {
        value = base64Value(text[i + j]);
        if (value < 0) return std::nullopt;
      }
      group = (group << 6) | static_cast<std::uint32_t>(value);
    }
    bytes.push_back(static_cast<std::uint8_t>(group >> 16));
    if (padding < 2) bytes.push_back(static_cast<std::uint8_t>(group >> 8));
    if (padding < 1) bytes.push_back(static_cast<std::uint8_t>(group));
  }
  return bytes;
}

Date SyncState::distantPast() { return referenceDate() - kDistantPastBeforeReference; }

nlohmann::json SyncState::toJson() const {
  nlohmann::json json{{"enabled", enabled},
                      {"deviceID", deviceID.text()},
                      {"userEdited", userEdited},
                      {"localModified", syncCoding::dateJson(localModified)}};
  if (base) json["base"] = base->toJson();
  if (lastSync) json["lastSync"] = syncCoding::dateJson(*lastSync);
  if (engineState) json["engineState"] = encodeBase64(*engineState);
  nlohmann::json writerDates = nlohmann::json::object();
  for (const auto& [id, date] : writers) writerDates[id.text()] = syncCoding::dateJson(date);
  json["writers"] = std::move(writerDates);
  if (lastReportedCount) json["lastReportedCount"] = *lastReportedCount;
  return json;
}

Expected<SyncState, DecodingError> SyncState::fromJson(const nlohmann::json& json) {
  const auto root = syncCoding::object(json, "");
  if (!root) return Unexpected(root.error());
  SyncState state;

  if (auto error = readStrict(json, "enabled", state.enabled, settingsCoding::boolean))
    return Unexpected(std::move(*error));
  if (auto error = readStrict(json, "deviceID", state.deviceID, syncCoding::uuid))
    return Unexpected(std::move(*error));
  if (auto error = readStrict(json, "userEdited", state.userEdited, settingsCoding::boolean))
    return Unexpected(std::move(*error));
  if (auto error = readStrict(json, "localModified", state.localModified, syncCoding::date))
    return Unexpected(std::move(*error));

  readTolerant(json, "base", state.base,
               [](const nlohmann::json& value) { return SharedSnapshot::readable(value); });
  readTolerant(json, "lastSync", state.lastSync, [](const nlohmann::json& value) -> std::optional<Date> {
    if (!value.is_number()) return std::nullopt;
    return dateFromReferenceSeconds(value.get<double>());
  });
  readTolerant(json, "engineState", state.engineState,
               [](const nlohmann::json& value) -> std::optional<std::vector<std::uint8_t>> {
                 if (!value.is_string()) return std::nullopt;
                 return decodeBase64(value.get_ref<const std::string&>());
               });
  readTolerant(json, "lastReportedCount", state.lastReportedCount,
               [](const nlohmann::json& value) -> std::optional<std::int64_t> {
                 const auto count = settingsCoding::integer(value, "lastReportedCount");
                 if (!count) return std::nullopt;
                 return *count;
               });
  if (const nlohmann::json* value = syncCoding::optional(json, "writers"))
    state.writers = decodeWriters(*value);
  return state;
}

std::string SyncState::encoded() const {
  return toJson().dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
}

Expected<SyncState, DecodingError> SyncState::decode(std::string_view bytes) {
  const auto parsed = nlohmann::json::parse(bytes.begin(), bytes.end(), nullptr, false);
  if (parsed.is_discarded())
    return Unexpected(
        DecodingError{DecodingError::Kind::dataCorrupted, "", "The given data was not valid JSON."});
  return fromJson(parsed);
}

}  // namespace orrery
